#include "config/Keys.h"
#include "config/QuilloURL.h"
#include "config/SettingText.h"
#include "config/Settings.h"
#include "foundation/DistributedNotificationCenter.h"
#include "platform/Workspace.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/Command.h"
#include "quilloctl/EntryEditing.h"
#include "quilloctl/TextEditor.h"

#include <QUrl>

#include <cstdio>
#include <memory>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

struct Request {
  QUrl url;
  // Started by ourselves in a window of its own, which closes with us.
  bool isInTerminal{false};
  QStringList homeArguments;
};

int open(Context& context) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  if (!context.session().workspace.openURL(package->url())) return failed(u"no installed program opens folders"_s);
  return Done;
}

int preferences(Context&) {
  const auto section = [](const QString& title) { print(title + u'\n'); };
  section(
      u"Settings that both applications share. Change one with\n"
      "  quilloctl settings set KEY VALUE\n"
      "and take it back to its default with\n"
      "  quilloctl settings remove KEY\n"
      "These are the defaults:"_s);
  for (const Setting& setting : settingsTable()) {
    if (setting.store != SettingStore::SharedList) continue;
    print(u"  "_s + absentText(setting));
  }
  print(QString());
  section(u"With commands of their own:"_s);
  for (const QString& line : {u"quilloctl journal set PATH"_s, u"quilloctl reminder set --every \"3 hours\""_s,
                              u"quilloctl reminder on | off"_s, u"quilloctl shortcut set \"cmd+shift+J\""_s,
                              u"quilloctl agent enable | disable"_s})
    print(u"  "_s + line);
  return Done;
}

int updateBookmarks(Context& context) {
  if (!openJournal(context)) return Failed;
  context.config.updateSharedBookmarkDataForConfiguredJournalFile();
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  if (!list->dirtyProperties().isEmpty() || !list->objectForKey(Key::journalFileSharedBookmarkData))
    return failed(u"the journal's bookmark was not saved"_s);
  // The agent makes its own bookmark from the shared one when it hears this.
  context.post(Notice::journalPackagePathDidChange);
  return Done;
}

int runInOtherTerminal(const Request& request) {
  return runInTerminalWindow(request.homeArguments +
                             QStringList{u"open-url"_s, u"--in-terminal"_s, request.url.toString(QUrl::FullyEncoded)});
}

int openURL(Context& context, const Request& request) {
  using Kind = QuilloRequest::Kind;
  const auto asked = requestOfURL(request.url);
  if (!asked) return failed(u"\"%1\" is no command that Quillo knows"_s.arg(request.url.toString()));
  if (asked->kind == Kind::Open) return open(context);
  if (asked->kind == Kind::UpdateBookmarks) return updateBookmarks(context);
  const bool isForTerminal = asked->kind == Kind::Preferences || asked->kind == Kind::SetUp;
  if (isForTerminal && outputIsDiscarded() && !request.isInTerminal) return runInOtherTerminal(request);
  if (asked->kind == Kind::Preferences) return preferences(context);
  if (asked->kind == Kind::SetUp) return setUpByQuestions(context);

  const EditorChoice editor = editorOfUser(QProcessEnvironment::systemEnvironment());
  if (editor.needsTerminal && !standsInTerminal()) {
    if (request.isInTerminal) return failed(u"the editor needs a terminal, and this window is none"_s);
    return runInOtherTerminal(request);
  }
  if (asked->kind == Kind::Post) return writeEntry(context, editor);
  return editEntry(context, asked->entryIdentifier, editor);
}

// A window of our own closes with us: what was said in it is to be read first.
void waitForReturn() {
  print(u"\nReturn closes this window."_s);
  // Ends with the line, the input or the window.
  for (int c = std::getchar(); c != EOF && c != '\n';) c = std::getchar();
}

}  // namespace

void addOpenURLCommand(CLI::App& program, Action& action) {
  struct Words {
    std::string url;
    bool isInTerminal{false};
  };
  const auto words = std::make_shared<Words>();
  CLI::App* opener = program.add_subcommand("open-url", "Do what a quillo: URL asks of the main application");
  opener
      ->add_option("URL", words->url,
                   "quillo://open, preferences, setup, post, edit?entryId=UUID or updatebookmarks; texts are edited in "
                   "$VISUAL, else in $EDITOR in a terminal")
      ->required();
  opener->add_flag("--in-terminal", words->isInTerminal)->group("");
  opener->callback([&action, words] {
    action = [words](Context& context) {
      const Request request{QUrl(QString::fromStdString(words->url)), words->isInTerminal, context.homeArguments};
      const int code = openURL(context, request);
      const auto asked = requestOfURL(request.url);
      const bool isToBeRead = code != Done || asked == QuilloRequest{QuilloRequest::Kind::Preferences, {}} ||
                              asked == QuilloRequest{QuilloRequest::Kind::SetUp, {}};
      if (request.isInTerminal && isToBeRead) waitForReturn();
      return code;
    };
  });
}

}  // namespace quillo::ctl
