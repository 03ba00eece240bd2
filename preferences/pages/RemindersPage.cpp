#include "preferences/pages/RemindersPage.h"

#include "app/switches/RemindersManager.h"
#include "config/Keys.h"
#include "controls/Fonts.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/ReminderRuleEditor.h"
#include "preferences/pages/PreferencesServices.h"
#include "reminders/ReminderInterval.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// What a rule writes, as changes of settings.
struct Changes {
  void setObjectForKey(const PropertyListValue& value, const QString& key) { changes.push_back({key, value}); }
  std::vector<SettingChange> changes;
};

}  // namespace

RemindersPage::RemindersPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent)
    : PreferencePage(u"Reminders"_s, store, parent),
      m_services(services),
      m_editor(new ReminderRuleEditor(this)),
      m_trial(nullptr) {
  QPushButton* tryIt = makeButton(u"Try It Now"_s, u"tryReminder"_s);
  m_trial = new FormRow({}, this);
  m_trial->addFieldAtEnd(tryIt);
  form().hide();
  column().addWidget(m_editor);
  column().addWidget(m_trial);
  column().addStretch();
  connect(m_editor, &ReminderRuleEditor::choiceChanged, this, &RemindersPage::save);
  connect(tryIt, &QPushButton::clicked, this, &RemindersPage::tryNow);
  addShower([this, tryIt] {
    // Half of a choice is no choice.
    if (m_isSaving) return;
    const PersistentPropertyList* list = this->store().list();
    const bool isOn = m_services.remindersManager().remindersAreEnabled();
    if (list) m_editor->setChoice(ReminderChoice::ofSettings(*list, isOn && hasReminderRule(*list)));
    m_editor->updateNextDates();
    tryIt->setEnabled(isOn);
  });
}

void RemindersPage::save(const ReminderChoice& choice) {
  m_isSaving = true;
  Changes changes;
  if (const auto interval = choice.rule.interval(); interval && choice.isOn) interval->writeToUserDefaults(changes);
  changes.setObjectForKey(PropertyListValue(choice.opensWindow), Key::remindersOpenMenuBar);
  changes.setObjectForKey(PropertyListValue(choice.notifies), Key::remindersSendToNotificationCenter);
  changes.setObjectForKey(PropertyListValue(choice.playsSound), Key::remindersPlaySound);
  QString reason;
  bool isSaved = store().set(changes.changes, &reason);
  RemindersManager& manager = m_services.remindersManager();
  if (isSaved && manager.remindersAreEnabled() != choice.isOn) {
    // The manager would make a login item and start the agent for a setting that was not saved, and not say so.
    isSaved = store().saveSilently({Key::remindersEnabled, PropertyListValue(choice.isOn)}, &reason);
    if (isSaved) manager.setRemindersAreEnabled(choice.isOn);
  }
  m_isSaving = false;
  showValues();
  m_editor->setError(reason);
}

void RemindersPage::tryNow() {
  if (!m_editor->choice().opensWindow && !m_editor->choice().notifies)
    return m_trial->setError(u"Choose the window or a notification first."_s);
  QString reason;
  const bool isGiven = m_services.tryReminder(&reason);
  m_trial->setError(isGiven ? QString() : u"There is nobody to remind you: "_s + reason);
}

}  // namespace quillo
