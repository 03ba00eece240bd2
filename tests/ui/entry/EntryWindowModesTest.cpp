// How the window is presented, for the user and for a reminder, and what makes it go away.

#include "controls/Coordinates.h"
#include "controls/HoverButton.h"
#include "entry/SnoozeOptions.h"
#include "reminders/ReminderAlarm.h"
#include "tests/support/FakeTimers.h"
#include "tests/ui/entry/EntryWindowFixture.h"

#include <QCursor>
#include <QMessageBox>
#include <QScreen>

namespace quillo {
namespace {

class EntryWindowModesTest : public EntryWindowTest {
 protected:
  EntryWindowModesTest() {
    time.setTime(1395311400);  // 2014-03-20T10:30:00Z
    alarm = &realAlarm;
    newController();
  }
  void setReminderUnit(qint64 unit) {
    PersistentPropertyList& list = *config.groupProperties();
    list.setIntegerForKey(unit, Key::remindersFrequency);
    list.setIntegerForKey(1, Key::remindersInterval);
    list.setValueForKey(Date::since1970(1394481600), Key::remindersBaseDate);
    list.setValueForKey(u"UTC"_s, Key::remindersBaseDateTimezone);
  }
  void remind() {
    controller->showWindowInMode(EntryWindowModeReminder);
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&controller->window()));
  }
  // From the bottom left, as frames are kept.
  QRectF frameOf(const char* name) {
    const auto* widget = named<QWidget>(name);
    return flipped(widget->geometry(), widget->parentWidget()->height());
  }
  bool rowIsVisible() { return named<QWidget>("snoozeButtonContainer")->isVisible(); }

  FakeTimers time;
  QObject target;
  ReminderAlarm realAlarm{[this] { return config.groupProperties(); }, &target, [](ReminderAlarm&) {}, {time, time}};
};

TEST_F(EntryWindowModesTest, TheModesShowWhatTheyAreFor) {
  show();
  EXPECT_FALSE(rowIsVisible());
  EXPECT_FALSE(named<QWidget>("reminderIcon")->isVisible());
  EXPECT_EQ(frameOf("scrollBorderView"), QRectF(13, 66, 302, 146));
  controller->close();
  remind();
  EXPECT_TRUE(rowIsVisible());
  EXPECT_TRUE(named<QWidget>("reminderIcon")->isVisible());
  EXPECT_EQ(frameOf("scrollBorderView"), QRectF(13, 66, 302, 104));
  EXPECT_TRUE(controller->window().testAttribute(Qt::WA_ShowWithoutActivating));
  // The keyboard is elsewhere; when the window gets it, by whatever click, the text has it.
  EXPECT_EQ(controller->window().focusWidget(), textView());
  controller->close();
}

TEST_F(EntryWindowModesTest, SnoozesFollowTheReminderUnitAndTheClickOneSnoozes) {
  struct Case {
    qint64 unit;
    double titleX;
    const char* first;  // empty: hidden
    int firstTag;
    const char* second;
    int secondTag;
  };
  const Case cases[] = {{64, 84, "", 0, "10 Mins", 600},          {32, 13, "10 Mins", 600, "1 Hour", 3600},
                        {16, 13, "1 Hour", 3600, "1 Day", 86400}, {256, 13, "1 Hour", 3600, "1 Day", 86400},
                        {8, 13, "1 Hour", 3600, "1 Day", 86400},  {0, 13, "1 Hour", 3600, "1 Day", 86400},
                        {-1, 13, "1 Hour", 3600, "1 Day", 86400}};
  for (const Case& c : cases) {
    setReminderUnit(c.unit);
    realAlarm.start();
    remind();
    auto* first = named<HoverButton>("snoozeOption1Button");
    auto* second = named<HoverButton>("snoozeOption2Button");
    EXPECT_EQ(frameOf("snoozeTitle").topLeft(), QPointF(c.titleX, 13)) << c.unit;
    EXPECT_EQ(first->isVisible(), c.firstTag != 0) << c.unit;
    if (first->isVisible()) {
      EXPECT_EQ(first->title(), QLatin1StringView(c.first));
      EXPECT_EQ(first->tag(), c.firstTag);
    }
    EXPECT_EQ(second->title(), QLatin1StringView(c.second));
    EXPECT_EQ(second->tag(), c.secondTag);
    const bool clickFirst = first->isVisible();
    click(clickFirst ? "snoozeOption1Button" : "snoozeOption2Button");
    EXPECT_FALSE(controller->window().isVisible());
    EXPECT_EQ(time.due().front() - time.secondsSince1970(), clickFirst ? c.firstTag : c.secondTag) << c.unit;
    EXPECT_TRUE(realAlarm.isSnoozing());
    realAlarm.stop();
  }
}

TEST_F(EntryWindowModesTest, TypingFadesTheSnoozeRowOnceAndTheEditorGrows) {
  setReminderUnit(16);
  remind();
  type("a");
  // It takes its time, and further typing does not start it anew.
  EXPECT_TRUE(rowIsVisible());
  type("b");
  EXPECT_TRUE(QTest::qWaitFor([this] { return !rowIsVisible(); }, 2000));
  EXPECT_EQ(frameOf("scrollBorderView"), QRectF(13, 66, 302, 146));
  type("c");
  EXPECT_FALSE(rowIsVisible());
  controller->close();
  EXPECT_EQ(entries().value(0)->string(), u"abc"_s);

  // Closed in the middle of it, the next reminder has its row again.
  remind();
  type("d");
  controller->close();
  remind();
  EXPECT_TRUE(rowIsVisible());
  EXPECT_EQ(frameOf("scrollBorderView"), QRectF(13, 66, 302, 104));
  QTest::qWait(300);
  EXPECT_TRUE(rowIsVisible());
}

TEST_F(EntryWindowModesTest, AClickElsewhereClosesAStandardWindowOnly) {
  const double height = QGuiApplication::primaryScreen()->geometry().height();
  controller->window().setFrameOrigin(QPointF(100, 100));
  const QPoint inside(200, static_cast<int>(height) - 200);
  const QPoint outside(20, 20);
  show();
  ASSERT_TRUE(outsideClicks.click);
  QCursor::setPos(inside);
  outsideClicks.click();
  EXPECT_TRUE(controller->window().isVisible());
  QCursor::setPos(outside);
  outsideClicks.click();
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_FALSE(outsideClicks.click);

  // A reminder stays, also once its row has faded.
  remind();
  outsideClicks.click();
  type("x");
  EXPECT_TRUE(QTest::qWaitFor([this] { return !rowIsVisible(); }, 2000));
  outsideClicks.click();
  EXPECT_TRUE(controller->window().isVisible());
  controller->close();

  // So does a window with a question that is still open.
  show();
  QMessageBox question(&controller->window());
  question.open();
  outsideClicks.click();
  EXPECT_TRUE(controller->window().isVisible());
  question.close();
}

TEST_F(EntryWindowModesTest, WithoutAMonitorLosingTheKeyboardStandsIn) {
  outsideClicks.isThere = false;
  QCursor::setPos(QPoint(20, 20));
  controller->window().setFrameOrigin(QPointF(100, 100));
  show();
  QWidget other;
  other.show();
  other.activateWindow();
  // The keyboard went to a window of this program: that is no click elsewhere.
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  QCoreApplication::processEvents();
  EXPECT_TRUE(controller->window().isVisible());
  controller->window().activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&controller->window()));
  QApplication::setActiveWindow(nullptr);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !controller->window().isVisible(); }, 2000));
}

}  // namespace
}  // namespace quillo
