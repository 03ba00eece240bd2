#include "preferences/pages/GeneralPage.h"

#include "PTHotKey/ShortcutText.h"
#include "app/switches/AgentManager.h"
#include "app/switches/LoginItem.h"
#include "config/Keys.h"
#include "platform/HelperProcesses.h"
#include "preferences/controls/ChoiceBox.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/Switch.h"
#include "preferences/model/TextSize.h"
#include "preferences/pages/PreferencesServices.h"

#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

struct LookWord {
  QLatin1StringView title;
  QLatin1StringView setting;
};
constexpr LookWord looks[] = {{"As the desktop"_L1, ""_L1}, {"Light"_L1, "light"_L1}, {"Dark"_L1, "dark"_L1}};

constexpr int fontSizes[] = {11, 12, 13, 14, 15, 16, 17, 18, 20, 22, 24, 28, 32};

}  // namespace

GeneralPage::GeneralPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent)
    : PreferencePage(u"General"_s, store, parent),
      m_services(services),
      m_agent(new Switch(this)),
      m_atLogin(new Switch(this)) {
  addAgent();
  addShortcut();
  addFontSize();
  addLook();
  column().addStretch();
}

void GeneralPage::addAgent() {
  m_agent->setObjectName(Key::agentEnabled);
  m_atLogin->setObjectName(u"StartsAtLogin"_s);
  m_agentRow = form().addRow(u"Quill in the tray"_s, {m_agent});
  m_atLoginRow = form().addRow(u"Start at login"_s, {m_atLogin});
  connect(m_agent, &QCheckBox::toggled, this, &GeneralPage::setAgentEnabled);
  connect(m_atLogin, &QCheckBox::toggled, this, &GeneralPage::setStartsAtLogin);
  addShower([this] {
    const QSignalBlocker silence(m_agent);
    const QSignalBlocker silenceToo(m_atLogin);
    const bool isEnabled = m_services.agentManager().shouldShowInMenuBar();
    m_agent->setChecked(isEnabled);
    const LoginItem item(Identifier::agent, m_services.loginItems());
    m_agentRow->setNote(!isEnabled && item.isRunning()
                            ? u"It was started for this session, and is not there at the next login."_s
                            : u"A click on it opens a small window to write in. Reminders need it, too."_s);
    m_atLogin->setChecked(item.existsAsLoginItem());
    m_atLogin->setEnabled(isEnabled);
  });
}

void GeneralPage::setAgentEnabled(bool isEnabled) {
  m_agentRow->setError({});
  m_atLoginRow->setError({});
  QString reason;
  // The manager would change the login item for a setting that was not saved, too.
  if (!store().saveSilently({Key::agentEnabled, PropertyListValue(isEnabled)}, &reason)) {
    m_agentRow->setError(reason);
    return showValues();
  }
  m_services.agentManager().setShouldShowInMenuBar(isEnabled);
  LoginItem item(Identifier::agent, m_services.loginItems());
  if (isEnabled && !item.existsAsLoginItem())
    m_atLoginRow->setError(u"It could not be made to start at login: "_s + item.errorString());
  // The manager leaves alone what is no login item, and so an agent that was started in another way.
  else if (!isEnabled && !item.disableAsLoginItem())
    m_atLoginRow->setError(u"It still starts at login: "_s + item.errorString());
  showValues();
}

void GeneralPage::setStartsAtLogin(bool starts) {
  LoginItem item(Identifier::agent, m_services.loginItems());
  m_atLoginRow->setError({});
  if (!item.toggleAsLoginItem(starts)) {
    m_atLoginRow->setError(u"Not changed: "_s + item.errorString());
  } else if (!starts) {
    // Taking the login item out asks the running agent to end; a new one takes its place for this session.
    QString reason;
    if (!m_services.agent.start(&reason)) m_atLoginRow->setError(u"The agent could not be started again: "_s + reason);
  }
  showValues();
}

void GeneralPage::addShortcut() {
  auto* recorder = new ShortcutRecorder(m_services.shortcut, this);
  recorder->setObjectName(Key::menuEntryGlobalShortcut);
  FormRow* row = form().addRow(u"Key from anywhere"_s, {recorder});
  const QString usualNote = m_services.shortcutNote.isEmpty()
                                ? u"Opens and closes the quill's window from any program."_s
                                : m_services.shortcutNote;
  row->setNote(usualNote);
  connect(recorder, &ShortcutRecorder::said, this, [row, usualNote](const QString& text, bool isProblem) {
    row->setNote(isProblem || text.isEmpty() ? usualNote : text);
    row->setError(isProblem ? text : QString());
  });
  connect(recorder, &ShortcutRecorder::comboChosen, this, [this, row](const PTKeyCombo::Pointer& combo) {
    std::optional<PropertyListValue> value;
    if (combo->isValidHotKeyCombo()) value = shortcutSetting(*combo);
    QString reason;
    store().set(Key::menuEntryGlobalShortcut, value, &reason);
    row->setError(reason);
  });
  addShower([this, recorder] {
    if (recorder->isRecording()) return;
    const PersistentPropertyList* list = store().list();
    recorder->setCombo(storedShortcut(list ? list->dictionaryForKey(Key::menuEntryGlobalShortcut) : std::nullopt));
  });
}

void GeneralPage::addFontSize() {
  auto* sizes = new ChoiceBox(this);
  sizes->setObjectName(Key::fontSize);
  FormRow* row = form().addRow(u"Text size"_s, {sizes});
  row->setNote(u"Of what you read and write in the journal; Ctrl and plus or minus do the same there."_s);
  connect(sizes, &QComboBox::activated, this, [this, sizes, row](int index) {
    QString reason;
    store().set(Key::fontSize, PropertyListValue(sizes->itemData(index).toLongLong()), &reason);
    row->setError(reason);
  });
  addShower([this, sizes] {
    const int size = TextSize::ofSettings(store().list());
    sizes->clear();
    for (const int known : fontSizes) sizes->addItem(u"%1 points"_s.arg(known), known);
    // One that was set elsewhere.
    if (sizes->findData(size) < 0) sizes->addItem(u"%1 points"_s.arg(size), size);
    sizes->setCurrentIndex(sizes->findData(size));
  });
}

void GeneralPage::addLook() {
  auto* choice = new ChoiceBox(this);
  choice->setObjectName(Key::look);
  for (const LookWord& look : looks) choice->addItem(look.title, QString(look.setting));
  FormRow* row = form().addRow(u"Look"_s, {choice});
  row->setNote(u"Of the journal's windows; the quill's stays as it is."_s);
  connect(choice, &QComboBox::activated, this, [this, choice, row](int index) {
    const QString chosen = choice->itemData(index).toString();
    QString reason;
    store().set(Key::look, chosen.isEmpty() ? std::nullopt : std::optional(PropertyListValue(chosen)), &reason);
    row->setError(reason);
  });
  // What is no look is as the desktop.
  addShower([this, choice] { choice->setCurrentIndex(std::max(0, choice->findData(store().text(Key::look)))); });
}

}  // namespace quillo
