#pragma once

#include "PTHotKey/PTKeyCodeTranslator.h"
#include "app/switches/AgentManager.h"
#include "app/switches/RemindersManager.h"
#include "entry/spelling/SpellChecker.h"
#include "exchange/backup/BackupSchedule.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "platform/HelperProcesses.h"
#include "preferences/PreferencesWindow.h"
#include "preferences/pages/PreferencePage.h"
#include "tests/support/EntryFixture.h"
#include "tests/support/FakeCommandSchedule.h"
#include "tests/support/FakeHotKeys.h"
#include "tests/support/FakeKeyboardLayouts.h"
#include "tests/support/FakeLoginItems.h"
#include "tests/support/FakePanels.h"

#include <QKeyEvent>
#include <QTest>

namespace quillo {

// Login items that a person could have: what is enabled is one.
class RememberingLoginItems : public FakeLoginItems {
 public:
  using FakeLoginItems::FakeLoginItems;
  bool setLoginItemEnabled(const QString& identifier, bool enabled) override {
    if (!FakeLoginItems::setLoginItemEnabled(identifier, enabled)) return false;
    jobs.clear();
    if (enabled) jobs << LoginJob{identifier, true};
    return true;
  }
};

// Passes on what is posted, and remembers it.
class RecordingCenter : public NotificationCenter {
 public:
  void postNotification(const QString& name, const void* object = nullptr) override {
    posted << name;
    NotificationCenter::postNotification(name, object);
  }
  QStringList posted;
};

struct FakeAgentProcesses : HelperProcesses {
  bool start(QString*) override {
    ++started;
    return true;
  }
  bool waitForAnswer(QString*) override { return true; }
  bool end(QString*) override { return true; }
  int started{0};
};

// The window of preferences of one program, and the agent as far as its settings go.
class PreferencesTest : public EntryTest {
 protected:
  PreferencesTest() { PTKeyCodeTranslator::setKeyboardLayouts(&layouts); }
  ~PreferencesTest() override {
    window.reset();
    PTKeyCodeTranslator::setKeyboardLayouts(nullptr);
  }

  PreferencesServices services() {
    return {.settings = {.config = config,
                         .distributedCenter = distributed,
                         .localCenter = local,
                         .ownSettings = {&own, &agentDefaults}},
            .agentManager = [this]() -> AgentManager& { return agentManager; },
            .remindersManager = [this]() -> RemindersManager& { return remindersManager; },
            .loginItems = [this] { return loginItems; },
            .agent = agent,
            .shortcut = {.keyCode = [](const QKeyEvent& event) -> std::optional<qint64> {
                           if (event.key() == Qt::Key_J) return 38;
                           return std::nullopt;
                         },
                         .hotKeys = &hotKeys},
            .workspace = workspace,
            .openPanel = openPanel,
            .spellChecker = spellChecker,
            .tryReminder =
                [this](QString* reason) {
                  ++remindersTried;
                  *reason = u"the quill is not in the tray"_s;
                  return agentRuns;
                },
            .logFolder = home.path(u"Logs"_s),
            .backupSchedule = &backupSchedule};
  }

  PreferencesWindow& open(PreferencesWindow::Page page = PreferencesWindow::General) {
    if (!window) window = std::make_unique<PreferencesWindow>(services());
    window->showPage(page);
    window->showWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    distributed.posted.clear();
    return *window;
  }
  template <typename Field = QWidget>
  Field* field(const QString& name) {
    auto* found = window->currentPage()->findChild<Field*>(name);
    EXPECT_NE(found, nullptr) << name.toStdString();
    return found;
  }
  PersistentPropertyList& list() { return *config.groupProperties(); }
  // As another program would, which the window hears of.
  void setElsewhere(const QString& key, const PropertyListValue& value, const QString& notice) {
    const auto other = PersistentPropertyList::withPropertyListURL(list().propertyListURL());
    other->setValueForKey(value, key);
    distributed.postNotification(notice);
  }

  RecordingCenter distributed;
  NotificationCenter local;
  UserDefaults own{home.path(u"config"_s), Identifier::mainApplication};
  UserDefaults agentDefaults{home.path(u"config"_s), Identifier::agent};
  QStringList loginEvents;
  RememberingLoginItems items{loginEvents};
  FakeRunningApplications running;
  LoginItemServices loginItems{&items, &running};
  RemindersManager remindersManager{[this] { return config.groupProperties(); }, distributed,
                                    [this]() -> AgentManager& { return agentManager; }};
  AgentManager agentManager{[this] { return config.groupProperties(); }, distributed, loginItems,
                            [this]() -> RemindersManager& { return remindersManager; }};
  FakeAgentProcesses agent;
  FakeHotKeys hotKeys;
  FakeKeyboardLayouts layouts;
  FakeWorkspace workspace;
  FakeOpenPanel openPanel;
  SpellChecker spellChecker{{{u"en_US"_s}, {}, home.path(u"LearnedWords.txt"_s)}};
  FakeCommandSchedule commandSchedule;
  BackupSchedule backupSchedule{commandSchedule, u"/usr/bin/quilloctl"_s, {}};
  int remindersTried{0};
  bool agentRuns{true};
  std::unique_ptr<PreferencesWindow> window;
};

}  // namespace quillo
