#include "ManagerFixture.h"
#include "config/QuilloConfig.h"
#include "foundation/Bundle.h"
#include "foundation/FileContents.h"

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

const QString agentID = Identifier::agent;

class ManagersTest : public ManagerTest {
 protected:
  FakeProcess a{u"A"_s, listURL(), bus, services, events};
};

TEST_F(ManagersTest, RefreshingFollowsTheTableAndAsksWhetherItRunsOnlyWhenItMatters) {
  const struct {
    bool wanted, exists, runs;
    QStringList calls;
    int timesAsked;
  } rows[] = {
      {true, false, false, {u"enable "_s + agentID}, 0},
      {true, false, true, {u"enable "_s + agentID}, 0},
      {true, true, false, {u"disable "_s + agentID, u"enable "_s + agentID}, 1},
      {true, true, true, {}, 1},
      {false, true, false, {u"disable "_s + agentID}, 0},
      {false, true, true, {u"disable "_s + agentID}, 0},
      {false, false, false, {}, 0},
      {false, false, true, {}, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.wanted << row.exists << row.runs);
    a.prefs->setBoolForKey(row.wanted, Key::agentEnabled);
    items.jobs = row.exists ? QList<LoginJob>{{agentID, true}} : QList<LoginJob>{};
    running.applications = row.runs ? QList<RunningApplication>{{agentID, 7}} : QList<RunningApplication>{};
    running.timesAsked = 0;
    a.agent->refreshAgentStatus();
    EXPECT_EQ(take(), row.calls);
    EXPECT_EQ(running.timesAsked, row.timesAsked);
  }
}

TEST_F(ManagersTest, RestartsTheAgentOnlyIfItRuns) {
  a.agent->restartAgentIfRunning();
  EXPECT_EQ(take(), QStringList{});
  running.applications = {{agentID, 7}};
  a.agent->restartAgentIfRunning();
  EXPECT_EQ(take(), (QStringList{u"disable "_s + agentID, u"enable "_s + agentID}));
}

TEST_F(ManagersTest, EachSettingIsStoredToldAndCarriedOutInOrderInBothProcesses) {
  FakeProcess b(u"B"_s, listURL(), bus, services, events);
  // Reminders need the agent: it is switched on, told and registered before the reminders' own notice goes out. The
  // setter's own value is there before its notice; the other process sees the old one until it has read the list.
  a.reminders->setRemindersAreEnabled(true);
  EXPECT_EQ(take(), (QStringList{u"A will agent on"_s, u"A did agent on"_s, u"B will agent off"_s, u"B did agent on"_s,
                                 u"enable "_s + agentID, u"A will reminders on"_s, u"A did reminders on"_s,
                                 u"B will reminders on"_s, u"B did reminders on"_s}));

  items.jobs = {{agentID, true}};
  b.agent->setShouldShowInMenuBar(false);
  EXPECT_EQ(take(), (QStringList{u"A will agent on"_s, u"A did agent off"_s, u"B will agent off"_s,
                                 u"B did agent off"_s, u"disable "_s + agentID, u"A will reminders on"_s,
                                 u"A did reminders off"_s, u"B will reminders off"_s, u"B did reminders off"_s}));

  // Reminders off leave the agent alone, and the agent on leaves reminders alone.
  b.reminders->setRemindersAreEnabled(false);
  EXPECT_EQ(take(), (QStringList{u"A will reminders off"_s, u"A did reminders off"_s, u"B will reminders off"_s,
                                 u"B did reminders off"_s}));
  running.applications = {{agentID, 7}};
  a.agent->setShouldShowInMenuBar(true);
  EXPECT_EQ(take(),
            (QStringList{u"A will agent on"_s, u"A did agent on"_s, u"B will agent off"_s, u"B did agent on"_s}));
  EXPECT_EQ(onDisk(), (PropertyListDictionary{{Key::agentEnabled, true}, {Key::remindersEnabled, false}}));
}

TEST_F(ManagersTest, ADestroyedRemindersManagerHearsNothingThoughItStaysRegistered) {
  NotificationCenter center;
  auto manager = std::make_unique<RemindersManager>([this] { return a.prefs.get(); }, center,
                                                    [this]() -> AgentManager& { return *a.agent; });
  bool heardTheOtherName = false;
  center.addObserver(manager.get(), Notice::agentReminderSettingsDidChange,
                     [&heardTheOtherName](const Notification&) { heardTheOtherName = true; });
  manager.reset();
  PersistentPropertyList::withPropertyListURL(listURL())->setBoolForKey(true, Key::remindersEnabled);
  center.postNotification(Notice::remindersManagerValuesDidChange);
  EXPECT_FALSE(a.prefs->boolForKey(Key::remindersEnabled));
  // The name that it does take itself off.
  center.postNotification(Notice::agentReminderSettingsDidChange);
  EXPECT_FALSE(heardTheOtherName);
}

TEST_F(ManagersTest, WithoutASharedListReadsNoAndLosesWrites) {
  FakeProcess lost(u"L"_s, QUrl::fromLocalFile(home.path()), bus, services, events);
  ASSERT_FALSE(lost.prefs);
  UserDefaults defaults(home.path(), u"d"_s);
  defaults.setBoolForKey(false, Key::remindersEnabled);
  defaults.setBoolForKey(true, Key::agentEnabled);
  RemindersManager::initialize(nullptr, defaults);
  AgentManager::initialize(Identifier::mainApplication, nullptr, defaults, lost.center,
                           [&lost]() -> AgentManager& { return *lost.agent; });
  EXPECT_EQ(defaults.persistentDomain().size(), 2);
  lost.reminders->setRemindersAreEnabled(true);
  EXPECT_FALSE(lost.reminders->remindersAreEnabled());
  EXPECT_FALSE(lost.agent->shouldShowInMenuBar());

  // Once the list can be read, the next notice shows what it holds.
  a.prefs->setBoolForKey(true, Key::remindersEnabled);
  lost.prefs = PersistentPropertyList::withPropertyListURL(listURL());
  take();
  lost.center.postNotification(Notice::remindersManagerValuesDidChange);
  EXPECT_TRUE(take().contains(u"L did reminders on"_s));
}

TEST_F(ManagersTest, RemindersMigrateOnceWithoutANotice) {
  const PropertyListValue older(u"NO"_s);
  const struct {
    const char* what;
    PropertyListDictionary own, shared, ownAfter, sharedAfter;
  } rows[] = {
      {"fresh", {}, {}, {}, {{Key::remindersEnabled, true}}},
      {"older own value moves as it is", {{Key::remindersEnabled, older}}, {}, {}, {{Key::remindersEnabled, older}}},
      {"a shared value stays, and so does the own",
       {{Key::remindersEnabled, older}},
       {{Key::remindersEnabled, true}},
       {{Key::remindersEnabled, older}},
       {{Key::remindersEnabled, true}}},
      {"a shared NO stays", {}, {{Key::remindersEnabled, false}}, {}, {{Key::remindersEnabled, false}}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    a.prefs->removeObjectForKey(Key::remindersEnabled);
    for (auto it = row.shared.begin(); it != row.shared.end(); ++it) a.prefs->setValueForKey(*it, it.key());
    UserDefaults defaults(home.path(), QLatin1StringView(row.what));
    for (auto it = row.own.begin(); it != row.own.end(); ++it) defaults.setObjectForKey(*it, it.key());
    RemindersManager::initialize(a.prefs.get(), defaults);
    EXPECT_EQ(defaults.persistentDomain(), row.ownAfter);
    EXPECT_EQ(onDisk(), row.sharedAfter);
    EXPECT_EQ(take(), QStringList{});
  }
}

TEST_F(ManagersTest, TheAgentsSettingsMigrateInTheMainApplicationOnly) {
  const PropertyListDictionary on{{Key::agentEnabled, true}};
  const PropertyListDictionary off{{Key::agentEnabled, false}};
  const QStringList notice{u"A will agent on"_s, u"A did agent on"_s};
  const QStringList noticeOff{u"A will agent off"_s, u"A did agent off"_s};
  const QStringList remindersOff{u"A will reminders off"_s, u"A did reminders off"_s};
  const QStringList enable{u"enable "_s + agentID};
  const struct {
    const char* what;
    QLatin1StringView bundle;
    PropertyListDictionary own, shared, ownAfter, sharedAfter;
    QStringList happens;
  } rows[] = {
      {"the agent itself",
       Identifier::agent,
       on,
       {{Key::startAgentAtLogin, true}},
       on,
       {{Key::startAgentAtLogin, true}},
       {}},
      {"fresh", Identifier::mainApplication, {}, {}, {}, off, noticeOff},
      {"nothing to do", Identifier::mainApplication, {}, on, {}, on, {}},
      {"own value moves", Identifier::mainApplication, on, {}, {}, on, notice},
      {"own value yields to the shared", Identifier::mainApplication, on, off, on, off, {}},
      {"obsolete YES in the shared list",
       Identifier::mainApplication,
       {},
       {{Key::startAgentAtLogin, true}},
       {},
       on,
       notice + enable + notice},
      {"obsolete NO over a shared YES",
       Identifier::mainApplication,
       {},
       {{Key::agentEnabled, true}, {Key::startAgentAtLogin, false}},
       {},
       {{Key::agentEnabled, false}, {Key::remindersEnabled, false}},
       noticeOff + remindersOff + noticeOff},
      {"obsolete own YES",
       Identifier::mainApplication,
       {{Key::startAgentAtLogin, 1}},
       {},
       {},
       on,
       notice + enable + notice},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const PropertyListDictionary before = onDisk();
    for (auto it = before.begin(); it != before.end(); ++it) a.prefs->removeObjectForKey(it.key());
    for (auto it = row.shared.begin(); it != row.shared.end(); ++it) a.prefs->setValueForKey(*it, it.key());
    UserDefaults defaults(home.path(), QLatin1StringView(row.what));
    for (auto it = row.own.begin(); it != row.own.end(); ++it) defaults.setObjectForKey(*it, it.key());
    AgentManager::initialize(row.bundle, a.prefs.get(), defaults, a.center,
                             [this]() -> AgentManager& { return *a.agent; });
    EXPECT_EQ(defaults.persistentDomain(), row.ownAfter);
    EXPECT_EQ(onDisk(), row.sharedAfter);
    EXPECT_EQ(take(), row.happens);
  }
}

TEST_F(ManagersTest, TheSharedManagersInitialiseOnceBeforeTheyAreMade) {
  const Bundle before = Bundle::mainBundle();
  Bundle::setMainBundle({{}, {{InfoKey::identifier, QString(Identifier::mainApplication)}}});
  UserDefaults::resetStandardUserDefaults();
  QuilloConfig::resetSharedConfig();
  LoginItem::setSharedServices(services);
  PersistentPropertyList& list = *QuilloConfig::sharedConfig().groupProperties();
  list.setBoolForKey(true, Key::startAgentAtLogin);

  // The migration asks for the manager while it is being initialised.
  AgentManager& agent = AgentManager::sharedManager();
  EXPECT_TRUE(agent.shouldShowInMenuBar());
  EXPECT_EQ(list.objectForKey(Key::startAgentAtLogin), std::nullopt);
  EXPECT_EQ(take(), QStringList{u"enable "_s + agentID});
  EXPECT_TRUE(RemindersManager::sharedManager().remindersAreEnabled());

  list.removeObjectForKey(Key::agentEnabled);
  list.removeObjectForKey(Key::remindersEnabled);
  EXPECT_EQ(&AgentManager::sharedManager(), &agent);
  EXPECT_FALSE(agent.shouldShowInMenuBar());
  EXPECT_FALSE(RemindersManager::sharedManager().remindersAreEnabled());
  RemindersManager::sharedManager().setRemindersAreEnabled(true);
  EXPECT_TRUE(agent.shouldShowInMenuBar());

  AgentManager::resetSharedManager();
  RemindersManager::resetSharedManager();
  LoginItem::setSharedServices({});
  QuilloConfig::resetSharedConfig();
  UserDefaults::resetStandardUserDefaults();
  Bundle::setMainBundle(before);
}

}  // namespace
}  // namespace quillo
