#include "quilloctl/Command.h"

#include <QJsonObject>

#include <memory>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

void addPostCommand(CLI::App& program, Action& action) {
  const auto name = std::make_shared<std::string>();
  CLI::App* post = program.add_subcommand("post", "Broadcast a change notification to the user's processes");
  post->add_option("NOTIFICATION-NAME", *name, "Its full name, com.quilloapp.…DidChangeNotification")->required();
  post->callback([&action, name] {
    action = [name](Context& context) -> int {
      const QString text = QString::fromStdString(*name);
      if (text.trimmed().isEmpty()) return failed(u"a notification's name cannot be empty"_s);
      if (!context.post(text)) return failed(u"there is no session bus that takes that name"_s);
      if (context.json) printJson(QJsonObject{{u"posted"_s, text}});
      return Done;
    };
  });
}

}  // namespace quillo::ctl
