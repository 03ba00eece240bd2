#include "PTHotKey/ShortcutText.h"
#include "config/Keys.h"
#include "quilloctl/Command.h"

#include <QJsonObject>

#include <memory>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

int show(Context& context) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const auto combo = storedShortcut(list->dictionaryForKey(Key::menuEntryGlobalShortcut));
  if (!context.json) {
    const QString words = wordsForKeyCombo(*combo);
    print(words == combo->description() ? words : words + u"  "_s + combo->description());
  } else if (combo->isClearCombo()) {
    printJson(QJsonValue());
  } else {
    printJson(QJsonObject{{u"keyCode"_s, combo->keyCode()},
                          {u"modifierFlags"_s, static_cast<qint64>(combo->modifiers())},
                          {u"text"_s, combo->description()},
                          {u"words"_s, wordsForKeyCombo(*combo)}});
  }
  return Done;
}

int save(Context& context, const std::optional<PropertyListValue>& setting) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  list->setValueForKey(setting, Key::menuEntryGlobalShortcut);
  if (!isSaved(*list, u"the shortcut"_s)) return Failed;
  context.post(Notice::menuBarEntryShortcutDidChange);
  return show(context);
}

int set(Context& context, const QString& text) {
  QString reason;
  const auto combo = keyComboFromText(text, &reason);
  if (!combo) return failed(reason);
  return save(context, shortcutSetting(*combo));
}

}  // namespace

void addShortcutCommand(CLI::App& program, Action& action) {
  CLI::App* shortcut = program.add_subcommand("shortcut", "Show and change the key that opens the entry window");
  shortcut->require_subcommand(1);
  shortcut->add_subcommand("show", "Print the shortcut, (None) where there is none")->callback([&action] {
    action = show;
  });

  const auto text = std::make_shared<std::string>();
  CLI::App* setter = shortcut->add_subcommand("set", "Save a shortcut and tell the running agent");
  setter
      ->add_option("SHORTCUT", *text,
                   "Modifiers (cmd, opt, ctrl, shift; cmd is the Super key, opt is Alt) and a key as the keyboard "
                   "prints it: \"cmd+shift+J\"")
      ->required();
  setter->callback(
      [&action, text] { action = [text](Context& context) { return set(context, QString::fromStdString(*text)); }; });

  shortcut->add_subcommand("clear", "Remove the shortcut and tell the running agent")->callback([&action] {
    action = [](Context& context) { return save(context, std::nullopt); };
  });
}

}  // namespace quillo::ctl
