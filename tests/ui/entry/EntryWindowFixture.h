#pragma once

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/session/Alerts.h"
#include "entry/session/EntryDraft.h"
#include "entry/session/OpenPanel.h"
#include "foundation/Error.h"
#include "foundation/NotificationCenter.h"
#include "platform/OutsideClicks.h"
#include "platform/Workspace.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "qlcore/services/LocationService.h"
#include "qlcore/services/WeatherService.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QPlainTextEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

// Records what it is asked, and dismisses it at once or when told; a question that no test expects fails it.
class ScriptedAlerts : public Alerts {
 public:
  void beginSheet(const Alert& alert, QWidget* window, std::function<void(int)> answered) override {
    const int answer = runAlert(alert, window);
    dismiss = [answer, answered = std::move(answered)] { answered(answer); };
    if (!isHeld) dismiss();
  }
  int runAlert(const Alert& alert, QWidget*) override {
    seen.push_back(alert);
    if (expected-- <= 0) ADD_FAILURE() << "unexpected alert: " << alert.message.toStdString();
    return static_cast<int>(alert.buttons.size()) - 1;
  }
  std::vector<Alert> seen;
  int expected{0};
  bool isHeld{false};
  std::function<void()> dismiss;
};

// Keeps what to do once the user has chosen.
struct FakeOpenPanel : OpenPanel {
  void beginSheet(const QString& panelTitle, const QString& startsAt, QWidget*,
                  std::function<void(const QString&)> then) override {
    title = panelTitle;
    directory = startsAt;
    choose = std::move(then);
  }
  QString title, directory;
  std::function<void(const QString& path)> choose;
};

struct FakeWorkspace : Workspace {
  bool openURL(const QUrl& url) override {
    opened << url.toString();
    return accepts;
  }
  std::optional<QUrl> urlForApplication(const QString&) const override { return std::nullopt; }
  bool launchApplication(const QString&) override { return false; }
  QStringList opened;
  bool accepts{true};
};

struct FakeOutsideClicks : OutsideClicks {
  std::unique_ptr<Registration> addGlobalMonitor(std::function<void()> handler) override {
    if (!isThere) return nullptr;
    click = std::move(handler);
    return std::make_unique<Registration>([this] { click = {}; });
  }
  std::function<void()> click;
  bool isThere{true};
};

// Says nothing of a place until a test does.
struct FakeLocationService : LocationService {
  [[nodiscard]] bool locationServicesEnabled() const override { return enabled; }
  [[nodiscard]] bool isAuthorized() const override { return authorized; }
  [[nodiscard]] bool isSearching() const override { return handler != nullptr; }
  void startWithTimeout(double seconds, Handler newHandler) override {
    timeout = seconds;
    handler = std::move(newHandler);
    ++searches;
  }
  void stop() override { handler = {}; }
  [[nodiscard]] double horzAccuracy() const override { return accuracy; }
  void find(const std::shared_ptr<const QLLocation>& found, double metres, bool isFinal) {
    accuracy = metres;
    const auto current = isFinal ? std::exchange(handler, {}) : handler;
    current(found, isFinal);
  }

  static inline bool enabled{true}, authorized{true};
  Handler handler;
  double timeout{0}, accuracy{0};
  int searches{0};
};

struct FakeWeatherService : WeatherService {
  void weatherAtLatitude(double latitude, double longitude, Date, Success success, Failure failure) override {
    asked.push_back({latitude, longitude});
    succeed = std::move(success);
    fail = std::move(failure);
  }
  std::vector<std::pair<double, double>> asked;
  Success succeed;
  Failure fail;
};

class EntryWindowTest : public testing::Test {
 protected:
  EntryWindowTest() {
    journalURL = QUrl::fromLocalFile(home.path(u"J.quillojournal"_s));
    QLJournalPackageFile::setDefaultPackageURLProvider([this] { return config.configuredJournalFileURL(); });
    Error error;
    EXPECT_TRUE(QLJournalPackageFile::openPackage(journalURL, true, &error)) << error.description().toStdString();
    config.setConfiguredJournalFileURL(journalURL);
    newController();
  }
  ~EntryWindowTest() override { QLJournalPackageFile::setDefaultPackageURLProvider({}); }

  AgentEntryWindowServices services(EntryDraft& keptDraft) {
    return {.config = config,
            .alerts = alerts,
            .openPanel = openPanel,
            .draft = keptDraft,
            .tracker = QLMixpanelTracker::sharedInstance(),
            .notices = notices,
            .journalFile = &QLJournalPackageFile::defaultPackage,
            .emptyJournalEntry = &QLJournalEntryFile::emptyJournalEntry,
            .workspace = &workspace,
            .outsideClicks = &outsideClicks,
            .makeLocationManager =
                [this] {
                  auto made = std::make_unique<FakeLocationService>();
                  location = made.get();
                  return made;
                },
            .weather = &weather};
  }
  void newController() { newController(draft); }
  void newController(EntryDraft& keptDraft) {
    controller = std::make_shared<AgentEntryWindowController>(services(keptDraft), alarm);
  }
  template <typename Widget>
  Widget* named(const char* name) {
    auto* widget = controller->window().findChild<Widget*>(QLatin1StringView(name));
    EXPECT_TRUE(widget) << name;
    return widget;
  }
  QPlainTextEdit* textView() { return named<QPlainTextEdit>("textView"); }
  void show() {
    controller->showWindowInMode(EntryWindowModeStandard);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&controller->window()));
  }
  void type(const char* text) { QTest::keyClicks(textView(), QLatin1StringView(text)); }
  void click(const char* name) { QTest::mouseClick(named<QWidget>(name), Qt::LeftButton); }
  void breakJournal() { ASSERT_TRUE(QFile::remove(journalURL.toLocalFile() + u"/Journal.plist"_s)); }
  QList<std::shared_ptr<QLJournalEntryFile>> entries() {
    Error error;
    return QLJournalIndex(QLJournalPackageFile::openPackage(journalURL, false, &error)).entries();
  }

  TestHome home;
  UserDefaults defaults{home.path(u"config"_s), Identifier::agent};
  QuilloConfig config{UserDirectories::current(), defaults, [](const char*) { return QString(); }};
  QUrl journalURL;
  ScriptedAlerts alerts;
  FakeOpenPanel openPanel;
  EntryDraft draft{home.path(u"cache/UnsavedEntry.plist"_s)};
  FakeWorkspace workspace;
  FakeOutsideClicks outsideClicks;
  FakeWeatherService weather;
  FakeLocationService* location{nullptr};  // the latest controller's, once it was asked for
  ReminderAlarm* alarm{nullptr};
  NotificationCenter notices;
  std::shared_ptr<AgentEntryWindowController> controller;
};

}  // namespace quillo
