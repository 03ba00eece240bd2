#pragma once

#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/session/Alerts.h"
#include "entry/session/OpenPanel.h"
#include "entry/spelling/SpellChecker.h"
#include "foundation/NotificationCenter.h"
#include "platform/OutsideClicks.h"
#include "platform/Workspace.h"
#include "tests/support/EntryFixture.h"

#include <QPlainTextEdit>
#include <QTest>

namespace quillo {

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

class EntryWindowTest : public EntryTest {
 protected:
  EntryWindowTest() { newController(); }

  AgentEntryWindowServices services() {
    return {.config = config,
            .alerts = alerts,
            .openPanel = openPanel,
            .draft = *draft,
            .text = {.defaults = defaults, .localCenter = notices, .spellChecker = spellChecker},
            .usageTracker = &QLMixpanelTracker::sharedInstance,
            .notices = notices,
            .journalFile = &QLJournalPackageFile::defaultPackage,
            .emptyJournalEntry = &QLJournalEntryFile::emptyJournalEntry,
            .tags = [this](auto answer) -> std::unique_ptr<Registration> {
              ++tagQuestions;
              tagsAnswer = std::move(answer);
              return std::make_unique<Registration>([this] { tagsAnswer = {}; });
            },
            .workspace = &workspace,
            .outsideClicks = &outsideClicks,
            .makeLocationManager = makeLocationManager(),
            .weather = &weather,
            .compositorIsRunning = [this] { return isComposited; }};
  }
  void newController() { controller = std::make_shared<AgentEntryWindowController>(services(), alarm); }
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

  ScriptedAlerts alerts;
  FakeOpenPanel openPanel;
  FakeWorkspace workspace;
  FakeOutsideClicks outsideClicks;
  // Set while a question for the tags waits for its answer, or could be answered.
  std::function<void(const QStringList&)> tagsAnswer;
  int tagQuestions{0};
  ReminderAlarm* alarm{nullptr};
  NotificationCenter notices;
  SpellChecker spellChecker{SpellChecker::standardSources(UserDirectories::current())};
  bool isComposited{true};
  std::shared_ptr<AgentEntryWindowController> controller;
};

}  // namespace quillo
