#include "preferences/model/FirstStart.h"

#include "PTHotKey/ShortcutText.h"
#include "app/switches/AgentManager.h"
#include "config/Keys.h"
#include "config/PersistentPropertyList.h"
#include "config/QuilloConfig.h"
#include "foundation/UserDirectories.h"
#include "platform/HelperProcesses.h"
#include "qlcore/JournalChoice.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalPackageFile.h"
#include "reminders/ReminderInterval.h"

#include <QFileInfo>

namespace quillo {

using namespace Qt::StringLiterals;

// Null where the keyboard has no such key.
static PTKeyCombo::Pointer proposedShortcut() {
  QString reason;
  return keyComboFromText(u"cmd+shift+J"_s, &reason);
}

FirstStart FirstStart::suggested(QuilloConfig& config, const std::function<bool(const PTKeyCombo&)>& isFree) {
  FirstStart start;
  const SuggestedJournal found = suggestedJournal();
  // Nothing is written before somebody has chosen.
  const PersistentPropertyList* list = config.hasGroupProperties() ? config.groupProperties() : nullptr;
  const auto configured = list ? config.configuredJournalFileURL() : std::nullopt;
  start.newJournal = freeJournalLocation();
  if (configured || found.exists) {
    start.journal = Journal::Existing;
    start.existingJournal = configured.value_or(found.location);
  }
  start.reminders = ReminderChoice::suggested(Date::now());
  if (list && hasReminderRule(*list)) start.reminders = ReminderChoice::ofSettings(*list, /*isOn=*/true);
  start.reminders.isOn = true;
  if (list) start.shortcut = storedShortcut(list->dictionaryForKey(Key::menuEntryGlobalShortcut));
  if (start.shortcut->isValidHotKeyCombo()) return start;
  const auto proposed = proposedShortcut();
  if (proposed && (!isFree || isFree(*proposed))) start.shortcut = proposed;
  return start;
}

QUrl FirstStart::chosenJournal() const {
  if (journal == Journal::None) return {};
  return journal == Journal::New ? newJournal : existingJournal;
}

QString FirstStart::journalProblem() const {
  if (journal == Journal::None) return {};
  if (journal == Journal::Existing) {
    if (existingJournal.isEmpty()) return u"Choose the journal first."_s;
    Error error;
    if (QLJournalPackageFile::openPackage(existingJournal, /*create=*/false, &error)) return {};
    return error.localizedDescription;
  }
  const QFileInfo file(newJournal.toLocalFile());
  if (file.exists() || file.isSymLink()) return u"There is something already at %1."_s.arg(pathForPeople(newJournal));
  // The folders above it are made as far as they are missing.
  QFileInfo above(file.path());
  while (!above.exists() && !above.isRoot()) above.setFile(above.path());
  if (above.isDir() && above.isWritable()) return {};
  return u"You may not write to %1."_s.arg(pathForPeople(QUrl::fromLocalFile(above.filePath())));
}

void FirstStart::writeSettings(const FirstStartServices& services) const {
  PersistentPropertyList& list = *services.config.groupProperties();
  if (reminders.isOn) {
    if (const auto interval = reminders.rule.interval()) interval->writeToUserDefaults(list);
    list.setBoolForKey(reminders.opensWindow, Key::remindersOpenMenuBar);
    list.setBoolForKey(reminders.notifies, Key::remindersSendToNotificationCenter);
    list.setBoolForKey(reminders.playsSound, Key::remindersPlaySound);
  }
  list.setBoolForKey(reminders.isOn, Key::remindersEnabled);
  if (shortcut->isValidHotKeyCombo())
    list.setValueForKey(shortcutSetting(*shortcut), Key::menuEntryGlobalShortcut);
  else
    list.setValueForKey(std::nullopt, Key::menuEntryGlobalShortcut);
  // Whoever begins today finds the window where it can be seen, and Escape as everywhere else.
  list.setBoolForKey(true, Key::keepEntryWindowOnScreen);
  list.setBoolForKey(true, Key::escapeClosesEntryWindow);
}

bool FirstStart::apply(const FirstStartServices& services, Error* error) const {
  PersistentPropertyList* list = services.config.groupProperties(error);
  if (!list) return false;
  if (journal != Journal::None && !useJournal(services.config, chosenJournal(), journal == Journal::New, error))
    return false;
  writeSettings(services);
  if (!list->dirtyProperties().isEmpty()) {
    const QString reason = list->lastError() ? list->lastError()->localizedDescription : u"the reason is unknown"_s;
    return fail(error, JournalError::make(JournalError::NotWritable, u"The settings were not saved - "_s + reason));
  }
  if (journal != Journal::None) services.post(Notice::journalPackagePathDidChange);
  for (const auto notice : {Notice::reminderSettingsDidChange, Notice::remindersManagerValuesDidChange,
                            Notice::menuBarEntryShortcutDidChange})
    services.post(notice);
  return true;
}

bool FirstStart::startAgent(const FirstStartServices& services, QString* reason) const {
  if (agent == Agent::Untouched) return true;
  AgentManager& manager = services.agentManager();
  if (agent == Agent::StartsAtLogin) {
    manager.setShouldShowInMenuBar(true);
    if (const LoginItem item(Identifier::agent, services.loginItemServices); !item.existsAsLoginItem()) {
      *reason = item.errorString();
      return false;
    }
    return services.agent.waitForAnswer(reason);
  }
  if (manager.shouldShowInMenuBar()) {
    manager.setShouldShowInMenuBar(false);
    // That switched them off, as nobody would be there to give them.
    if (PersistentPropertyList* list = services.config.groupProperties())
      list->setBoolForKey(reminders.isOn, Key::remindersEnabled);
  }
  return services.agent.end(reason) && services.agent.start(reason) && services.agent.waitForAnswer(reason);
}

}  // namespace quillo
