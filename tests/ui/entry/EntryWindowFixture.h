#pragma once

#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/spelling/SpellChecker.h"
#include "foundation/NotificationCenter.h"
#include "platform/OutsideClicks.h"
#include "tests/support/EntryFixture.h"
#include "tests/support/FakePanels.h"

#include <QPlainTextEdit>
#include <QTest>

namespace quillo {

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
            .desktop = {.isComposited = [this] { return isComposited; }, .placement = placement}};
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
  WindowPlacement placement{WindowPlacement::Program};
  std::shared_ptr<AgentEntryWindowController> controller;
};

}  // namespace quillo
