#include "ManagerFixture.h"
#include "config/QuilloConfig.h"
#include "foundation/Bundle.h"
#include "foundation/FileContents.h"

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

using Values = PropertyListDictionary;

const QString agentID = Identifier::agent;

class ManagersTest : public ManagerTest {
 protected:
  // The shared list and the process's own defaults, of their own for each `what`, hold these and nothing else.
  std::unique_ptr<UserDefaults> store(const char* what, const Values& own, const Values& shared) {
    for (const QString& key : onDisk().keys()) a.prefs->removeObjectForKey(key);
    for (auto it = shared.begin(); it != shared.end(); ++it) a.prefs->setValueForKey(*it, it.key());
    auto defaults = std::make_unique<UserDefaults>(home.path(), QLatin1StringView(what));
    for (auto it = own.begin(); it != own.end(); ++it) defaults->setObjectForKey(*it, it.key());
    take();
    return defaults;
  }

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
    a.agent->restartAgentIfRunning();
    EXPECT_EQ(take(), row.runs ? (QStringList{u"disable "_s + agentID, u"enable "_s + agentID}) : QStringList{});
  }
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

TEST_F(ManagersTest, ADestroyedRemindersManagerHearsNothing) {
  NotificationCenter center;
  auto manager = std::make_unique<RemindersManager>([this] { return a.prefs.get(); }, center,
                                                    [this]() -> AgentManager& { return *a.agent; });
  manager.reset();
  PersistentPropertyList::withPropertyListURL(listURL())->setBoolForKey(true, Key::remindersEnabled);
  center.postNotification(Notice::remindersManagerValuesDidChange);
  EXPECT_FALSE(a.prefs->boolForKey(Key::remindersEnabled));
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
  const Values older{{Key::remindersEnabled, u"NO"_s}};
  const Values on{{Key::remindersEnabled, true}};
  const Values off{{Key::remindersEnabled, false}};
  const struct {
    const char* what;
    Values own, shared, sharedAfter;
  } rows[] = {
      {"fresh", {}, {}, on},
      {"older own value moves as it is", older, {}, older},
      {"a shared value stays, and so does the own", older, on, on},
      {"a shared NO stays", {}, off, off},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const auto defaults = store(row.what, row.own, row.shared);
    RemindersManager::initialize(a.prefs.get(), *defaults);
    EXPECT_EQ(defaults->persistentDomain(), row.shared.isEmpty() ? Values() : row.own);
    EXPECT_EQ(onDisk(), row.sharedAfter);
    EXPECT_EQ(take(), QStringList{});
  }
}

TEST_F(ManagersTest, TheAgentsSettingsMigrateInTheMainApplicationOnly) {
  const Values on{{Key::agentEnabled, true}};
  const Values off{{Key::agentEnabled, false}};
  const Values atLogin{{Key::startAgentAtLogin, true}};
  const Values onButNotAtLogin{{Key::agentEnabled, true}, {Key::startAgentAtLogin, false}};
  const Values allOff{{Key::agentEnabled, false}, {Key::remindersEnabled, false}};
  const QStringList notice{u"A will agent on"_s, u"A did agent on"_s};
  const QStringList noticeOff{u"A will agent off"_s, u"A did agent off"_s};
  const QStringList remindersOff{u"A will reminders off"_s, u"A did reminders off"_s};
  const QStringList enabled = notice + QStringList{u"enable "_s + agentID} + notice;
  constexpr auto main = Identifier::mainApplication;
  const struct {
    const char* what;
    QLatin1StringView bundle;
    Values own, shared, ownAfter, sharedAfter;
    QStringList happens;
  } rows[] = {
      {"the agent itself", Identifier::agent, on, atLogin, on, atLogin, {}},
      {"fresh", main, {}, {}, {}, off, noticeOff},
      {"nothing to do", main, {}, on, {}, on, {}},
      {"own value moves", main, on, {}, {}, on, notice},
      {"own value yields to the shared", main, on, off, on, off, {}},
      {"obsolete YES in the shared list", main, {}, atLogin, {}, on, enabled},
      {"obsolete NO over a shared YES", main, {}, onButNotAtLogin, {}, allOff, noticeOff + remindersOff + noticeOff},
      {"obsolete own YES", main, {{Key::startAgentAtLogin, 1}}, {}, {}, on, enabled},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const auto defaults = store(row.what, row.own, row.shared);
    AgentManager::initialize(row.bundle, a.prefs.get(), *defaults, a.center,
                             [this]() -> AgentManager& { return *a.agent; });
    EXPECT_EQ(defaults->persistentDomain(), row.ownAfter);
    EXPECT_EQ(onDisk(), row.sharedAfter);
    EXPECT_EQ(take(), row.happens);
  }
}

TEST_F(ManagersTest, TheSharedManagersInitialiseOnceBeforeTheyAreMade) {
  const Bundle before = Bundle::mainBundle();
  Bundle::setMainBundle({{}, {{InfoKey::identifier, QString(Identifier::mainApplication)}}});
  AgentManager::setSharedLoginItemServices(services);
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

  Bundle::setMainBundle(before);
}

}  // namespace
}  // namespace quillo
