#include "FormPicture.h"
#include "controls/look/JournalColors.h"
#include "preferences/controls/ChoiceCard.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/FormStyle.h"
#include "preferences/controls/ReminderRuleEditor.h"
#include "preferences/controls/Switch.h"
#include "preferences/controls/TickBox.h"

#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimeEdit>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

TEST(FormControls, SwitchesAndCardsAreReadAsWhatTheyAre) {
  QWidget window;
  auto* column = new QVBoxLayout(&window);
  auto* form = new Form(&window);
  auto* turned = new Switch(&window);
  FormRow* row = form->addRow(u"&Agent"_s, {turned});
  auto* first = new ChoiceCard(u"A new journal"_s, u"Documents / Journal.quillojournal"_s, &window);
  auto* second = new ChoiceCard(u"A journal that I have already"_s, u"From a backup"_s, &window);
  column->addWidget(form);
  column->addWidget(first);
  column->addWidget(second);
  first->setChecked(true);
  window.show();
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));

  const auto* asRead = QAccessible::queryAccessibleInterface(turned);
  EXPECT_EQ(asRead->role(), QAccessible::CheckBox);
  EXPECT_EQ(asRead->text(QAccessible::Name), u"Agent"_s);
  turned->setFocus();
  QTest::keyClick(turned, Qt::Key_Space);
  EXPECT_TRUE(turned->isChecked());
  // Also where nothing of a usual check box would be.
  QTest::mouseClick(turned, Qt::LeftButton, {}, QPoint(turned->width() - 3, 3));
  EXPECT_FALSE(turned->isChecked());
  row->setError(u"The disk is full."_s);
  EXPECT_EQ(asRead->text(QAccessible::Description), u"The disk is full."_s);

  asRead = QAccessible::queryAccessibleInterface(first);
  EXPECT_EQ(asRead->role(), QAccessible::RadioButton);
  EXPECT_EQ(asRead->text(QAccessible::Description), u"Documents / Journal.quillojournal"_s);
  first->setFocus();
  QTest::keyClick(first, Qt::Key_Down);
  EXPECT_TRUE(second->isChecked() && second->hasFocus() && !first->isChecked());
}

class ReminderRuleEditorTest : public testing::Test {
 protected:
  ReminderRuleEditorTest() {
    window.resize(500, 400);
    (new QVBoxLayout(&window))->addWidget(editor);
    applyFormStyle(window);
    window.show();
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    QObject::connect(editor, &ReminderRuleEditor::choiceChanged, &window,
                     [this](const ReminderChoice& choice) { changes << choice; });
  }
  template <typename Field>
  Field* field(const char16_t* name) {
    return editor->findChild<Field*>(QString::fromUtf16(name));
  }
  // Over what the field shows.
  void type(QWidget* into, const QString& text) {
    // As Tab goes to it, which selects the first part of what it shows.
    into->setFocus(Qt::TabFocusReason);
    QTest::keyClicks(into, text);
    QTest::keyClick(into, Qt::Key_Tab);
  }

  QWidget window;
  ReminderRuleEditor* editor = new ReminderRuleEditor(&window);
  QList<ReminderChoice> changes;
};

TEST_F(ReminderRuleEditorTest, ARuleIsTypedAndReadBackInWords) {
  auto* on = field<Switch>(u"remindersOn");
  EXPECT_FALSE(field<QWidget>(u"reminderCount")->isEnabled());
  QTest::mouseClick(on, Qt::LeftButton);
  EXPECT_EQ(field<QLabel>(u"reminderWords")->text(), u"Every day at 21:00."_s);
  type(field<QWidget>(u"reminderCount"), u"3"_s);
  field<QComboBox>(u"reminderUnit")->setFocus();
  QTest::keyClicks(field<QComboBox>(u"reminderUnit"), u"h"_s);
  EXPECT_EQ(field<QLabel>(u"reminderWords")->text(), u"Every 3 hours, from 09:00 to 17:00."_s);
  EXPECT_EQ(field<QLabel>(u"reminderDates")->text().count(u':'), 6) << "five dates";
  ASSERT_FALSE(changes.isEmpty());
  EXPECT_EQ(changes.last().rule.window, (DailyWindow{9 * 60, 17 * 60}));
  EXPECT_EQ(changes.last().rule.count, 3);

  // A window that ends before it begins is said, and not told to anybody who would save it.
  changes.clear();
  type(field<QWidget>(u"reminderUntil"), u"0800"_s);
  EXPECT_EQ(editor->choice().problem(), u"The second time has to be later than the first."_s);
  for (const ReminderChoice& choice : changes) EXPECT_EQ(choice.problem(), QString());

  QTest::mouseClick(field<TickBox>(u"reminderAllDay"), Qt::LeftButton);
  EXPECT_EQ(field<QLabel>(u"reminderWords")->text(), u"Every 3 hours."_s);
  EXPECT_FALSE(changes.last().rule.window);
}

TEST_F(ReminderRuleEditorTest, WhatAnotherProgramSetIsShownAndNotSentBack) {
  ReminderChoice choice = ReminderChoice::suggested(Date::now());
  choice.isOn = true;
  choice.rule.count = 2;
  choice.rule.unit = CalendarUnit::Week;
  choice.rule.calendar = *Calendar::withTimeZoneName(u"Pacific/Auckland"_s);
  choice.rule.starting = *Date::fromISO8601(u"2026-11-25T08:15:00Z"_s);
  choice.notifies = false;
  editor->setChoice(choice);
  EXPECT_EQ(changes.size(), 0);
  EXPECT_EQ(editor->choice(), choice);
  EXPECT_EQ(field<QLabel>(u"reminderWords")->text(), u"Every 2 weeks at 21:15."_s);
  EXPECT_FALSE(field<TickBox>(u"reminderNotification")->isChecked());
  QTest::mouseClick(field<TickBox>(u"reminderSound"), Qt::LeftButton);
  ASSERT_EQ(changes.size(), 1);
  choice.playsSound = true;
  EXPECT_EQ(changes[0], choice) << "in the zone in which it was chosen";
}

TEST_F(ReminderRuleEditorTest, AWindowOverMidnightOutlivesAChangeOfTheRest) {
  ReminderChoice choice = ReminderChoice::suggested(Date::now());
  choice.isOn = true;
  choice.rule.unit = CalendarUnit::Hour;
  choice.rule.window = DailyWindow{22 * 60, 26 * 60};
  editor->setChoice(choice);
  EXPECT_EQ(field<QTimeEdit>(u"reminderUntil")->time(), QTime(2, 0));
  type(field<QWidget>(u"reminderCount"), u"3"_s);
  ASSERT_EQ(changes.size(), 1);
  EXPECT_EQ(changes[0].rule.window, choice.rule.window);
  // Its times are those of a window inside the day from then on.
  type(field<QWidget>(u"reminderFrom"), u"01"_s);
  ASSERT_EQ(changes.size(), 2);
  EXPECT_EQ(changes[1].rule.window, (DailyWindow{60, 120}));
}

TEST_F(ReminderRuleEditorTest, Pictures) {
  for (const bool isDark : {false, true}) {
    QApplication::setPalette(desktopPalette(isDark));
    window.setStyleSheet(u"QWidget#window { background: %1 }"_s.arg(JournalColors::current().ground.name()));
    applyFormStyle(window);
    if (!field<Switch>(u"remindersOn")->isChecked()) QTest::mouseClick(field<Switch>(u"remindersOn"), Qt::LeftButton);
    field<QComboBox>(u"reminderUnit")->setCurrentIndex(1);
    savePicture(window, isDark ? u"editor-dark"_s : u"editor-light"_s);
  }
  QApplication::setPalette(QPalette());
}

}  // namespace
}  // namespace quillo
