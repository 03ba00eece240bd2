#pragma once

#include "PTHotKey/PTHotKeyCenter.h"
#include "app/QuilloAgentAppDelegate.h"
#include "app/switches/AgentManager.h"
#include "app/switches/RemindersManager.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/session/EntryDraft.h"
#include "entry/spelling/SpellChecker.h"
#include "foundation/DistributedNotificationCenter.h"
#include "platform/Clock.h"
#include "platform/OneShotTimer.h"
#include "platform/Sounds.h"
#include "platform/UserNotifications.h"
#include "qlcore/QLMixpanelTracker.h"
#include "tests/support/FakeHotKeys.h"
#include "tests/support/FakeLoginItems.h"
#include "tests/support/TestHome.h"

#include <QAction>
#include <QMenu>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

struct FakeDesktop : FakeRunningApplications, Workspace, Clock, OneShotTimerFactory, OutsideClicks, WeatherService {
  qint64 currentProcessIdentifier() const override { return 2; }
  bool openURL(const QUrl& url) override {
    opened << url.toString();
    return true;
  }
  std::optional<QUrl> urlForApplication(const QString&) const override { return std::nullopt; }
  bool launchApplication(const QString&) override { return false; }
  double secondsSince1970() const override { return 1395311400; }  // 2014-03-20T10:30:00Z
  std::unique_ptr<OneShotTimer> schedule(double, std::function<void()> action) override {
    fire = std::move(action);
    return std::make_unique<OneShotTimer>();
  }

  void weatherAtLatitude(double, double, Date, Success, Failure) override {}
  std::unique_ptr<Registration> addGlobalMonitor(std::function<void()>) override { return nullptr; }

  QStringList opened;
  std::function<void()> fire;
  int statusItems{0};
  int toolTips{0};
  bool ended{false};
};

// The notification centre and the loudspeaker; what happens goes, in order, into one list.
struct FakeReminderOutlets : UserNotifications, Sounds {
  void setDelegate(UserNotificationCenterDelegate* given) override { centerDelegate = given; }
  quint64 deliverNotification(const UserNotification& notification) override {
    UserNotification delivered = notification;
    delivered.identifier = ++lastIdentifier;
    events << (notification.soundName.isEmpty() ? u"notify"_s : u"notify with "_s + notification.soundName);
    if (!centerDelegate || !centerDelegate->shouldPresentNotification(delivered)) return lastIdentifier;
    standing << delivered;
    return lastIdentifier;
  }
  void removeDeliveredNotification(quint64 identifier) override {
    events << u"remove %1"_s.arg(identifier);
    standing.removeIf([identifier](const UserNotification& n) { return n.identifier == identifier; });
  }
  void removeAllDeliveredNotifications() override { standing.clear(); }
  bool playSoundNamed(const QString& name) override {
    events << u"play "_s + name;
    return true;
  }

  UserNotificationCenterDelegate* centerDelegate{nullptr};
  QList<UserNotification> standing;
  quint64 lastIdentifier{0};
  QStringList events;
};

struct SilentStatusItem : StatusItem {
  explicit SilentStatusItem(int& toolTips) : timesToolTipWasSet(toolTips) {}
  void setImage(const QString&, bool) override {}
  void setHighlighted(bool) override {}
  void setToolTip(std::function<QString()> text) override {
    ++timesToolTipWasSet;
    source() = std::move(text);
  }
  // Of the last item that was made.
  static QString toolTip() { return source()(); }
  static std::function<QString()>& source() {
    static std::function<QString()> text;
    return text;
  }
  void setMenu(QMenu*) override {}
  void setLength(double) override {}
  std::optional<QRectF> geometry() const override { return QRectF(700, 2, 22, 22); }
  QRectF anchor() const override { return {700, 2, 22, 22}; }
  void onPrimaryClick(std::function<void()>) override {}
  void onGeometryChanged(std::function<void()>) override {}

  int& timesToolTipWasSet;
};

class AppDelegateTest : public testing::Test {
 public:
  ~AppDelegateTest() override {
    delegate.reset();
    SilentStatusItem::source() = {};
  }

 protected:
  AppDelegateTest() {
    forgetSettings();
    list().setObjectForKey(16, Key::remindersFrequency);
    list().setObjectForKey(1, Key::remindersInterval);
    list().setObjectForKey(Date::since1970(1394485200), Key::remindersBaseDate);  // 2014-03-10T21:00:00Z
    list().setObjectForKey(u"UTC"_s, Key::remindersBaseDateTimezone);
    makeDelegate(&outlets);
  }
  void makeDelegate(FakeReminderOutlets* reminderOutlets) { makeDelegate(reminderOutlets, desktop, desktop); }
  void makeDelegate(FakeReminderOutlets* reminderOutlets, const Clock& clock, OneShotTimerFactory& timers) {
    AgentServices services{.config = config(),
                           .bundle = {u":/quillo"_s, {}},
                           .localCenter = NotificationCenter::localCenter(),
                           .workspaceCenter = workspaceCenter,
                           .distributedCenter = distributedCenter,
                           .hotKeyCenter = hotKeyCenter,
                           .crashReportManager = crashReportManager,
                           .draft = draft,
                           .text = {.defaults = ownDefaults,
                                    .localCenter = NotificationCenter::localCenter(),
                                    .spellChecker = spellChecker},
                           .remindersManager = [this]() -> RemindersManager& { return reminders(); },
                           .usageTracker = &QLMixpanelTracker::sharedInstance};
    AgentPlatform platform{
        .runningApplications = desktop,
        .workspace = desktop,
        .makeStatusItem =
            [this] {
              ++desktop.statusItems;
              return std::make_unique<SilentStatusItem>(desktop.toolTips);
            },
        .windowDesktop = {.isComposited = [] { return true; }, .windowsTakeKeyboard = windowsTakeKeyboard},
        .outsideClicks = desktop,
        .makeLocationManager = {},
        .weather = desktop,
        .clock = clock,
        .timers = timers,
        .terminate = [this] { desktop.ended = true; },
        .userNotifications = reminderOutlets,
        .sounds = reminderOutlets};
    delegate = std::make_unique<QuilloAgentAppDelegate>(std::move(services), std::move(platform));
  }
  // What a new process reads anew. There may be no delegate.
  void forgetSettings() {
    remindersManager.reset();
    agentManager =
        std::make_unique<AgentManager>([this] { return config().groupProperties(); }, distributedCenter,
                                       LoginItemServices(), [this]() -> RemindersManager& { return reminders(); });
    ownConfig =
        std::make_unique<QuilloConfig>(UserDirectories::current(), ownDefaults, [](const char*) { return QString(); });
  }
  RemindersManager& reminders() {
    if (!remindersManager) {
      RemindersManager::initialize(config().groupProperties(), ownDefaults);
      remindersManager =
          std::make_unique<RemindersManager>([this] { return config().groupProperties(); }, distributedCenter,
                                             [this]() -> AgentManager& { return *agentManager; });
    }
    return *remindersManager;
  }
  [[nodiscard]] QuilloConfig& config() const { return *ownConfig; }
  [[nodiscard]] PersistentPropertyList& list() const { return *config().groupProperties(); }
  QStringList openedMenu() {
    Q_EMIT delegate->contextualMenu().aboutToShow();
    QStringList titles;
    for (const QAction* item : delegate->contextualMenu().actions())
      titles << (item->isSeparator() ? u"-"_s : (item->isEnabled() ? item->text() : u'(' + item->text() + u')'));
    return titles;
  }
  // As when the other application has written the setting.
  void switchReminders(bool on) {
    list().setBoolForKey(on, Key::remindersEnabled);
    distributedCenter.postNotification(Notice::remindersManagerValuesDidChange);
  }

  TestHome home;
  FakeDesktop desktop;
  FakeHotKeys hotKeys;
  FakeReminderOutlets outlets;
  bool windowsTakeKeyboard{false};
  UserDefaults ownDefaults{home.path(), u"own"_s};
  SpellChecker spellChecker{SpellChecker::standardSources(UserDirectories::current())};
  NotificationCenter workspaceCenter;
  DistributedNotificationCenter distributedCenter;
  PTHotKeyCenter hotKeyCenter{&hotKeys};
  CrashReportManager crashReportManager{home.path(u"CrashReports"_s)};
  EntryDraft draft{home.path(u"UnsavedEntry.plist"_s)};
  std::unique_ptr<QuilloConfig> ownConfig;
  std::unique_ptr<AgentManager> agentManager;
  std::unique_ptr<RemindersManager> remindersManager;
  std::unique_ptr<QuilloAgentAppDelegate> delegate;
};

}  // namespace quillo
