#include "PTHotKey/PTKeyCodeTranslator.h"
#include "PTHotKey/ShortcutText.h"
#include "preferences/controls/ShortcutRecorder.h"
#include "tests/support/FakeHotKeys.h"
#include "tests/support/FakeKeyboardLayouts.h"

#include <QAction>
#include <QKeyEvent>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

constexpr qint64 keyJ = 38;
constexpr qint64 keyF5 = 96;

class ShortcutRecorderTest : public testing::Test {
 protected:
  ShortcutRecorderTest() {
    PTKeyCodeTranslator::setKeyboardLayouts(&layouts);
    auto* column = new QVBoxLayout(&window);
    column->addWidget(&recorder);
    column->addWidget(&next);
    QObject::connect(&recorder, &ShortcutRecorder::comboChosen, &window,
                     [this](const PTKeyCombo::Pointer& combo) { chosen << wordsForKeyCombo(*combo); });
    QObject::connect(&recorder, &ShortcutRecorder::said, &window, [this](const QString& text, bool isProblem) {
      said = text;
      saidProblem = isProblem;
    });
    window.show();
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
  }
  ~ShortcutRecorderTest() override { PTKeyCodeTranslator::setKeyboardLayouts(nullptr); }

  void record(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::mouseClick(&recorder, Qt::LeftButton);
    EXPECT_TRUE(recorder.isRecording());
    QTest::keyClick(&recorder, key, modifiers);
  }

  FakeKeyboardLayouts layouts;
  FakeHotKeys platform;
  QWidget window;
  ShortcutRecorder recorder{{.keyCode = [](const QKeyEvent& event) -> std::optional<qint64> {
                               if (event.key() == Qt::Key_J) return keyJ;
                               if (event.key() == Qt::Key_F5) return keyF5;
                               return std::nullopt;
                             },
                             .hotKeys = &platform},
                            &window};
  QPushButton next{u"Next"_s, &window};
  QStringList chosen;
  QString said;
  bool saidProblem{false};
};

TEST_F(ShortcutRecorderTest, TakesWhatDoesNotTypeAndSaysWhyNot) {
  const struct {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    QString chosen;
    QString said;
  } rows[] = {
      {Qt::Key_J, Qt::ControlModifier | Qt::ShiftModifier, u"Ctrl+Shift+J"_s, {}},
      {Qt::Key_J, Qt::MetaModifier, u"Super+J"_s, {}},
      {Qt::Key_F5, Qt::ShiftModifier, u"Shift+F5"_s, {}},
      {Qt::Key_J, Qt::ShiftModifier, {}, u"Shift and J would be lost for typing: add Super, Alt or Ctrl."_s},
      {Qt::Key_J, Qt::NoModifier, {}, u"J alone would be lost for typing: add Super, Alt, Ctrl or Shift."_s},
      {Qt::Key_MediaPlay, Qt::ControlModifier, {}, u"This key cannot be part of a shortcut."_s},
  };
  for (const auto& row : rows) {
    chosen.clear();
    said.clear();
    if (recorder.isRecording()) QTest::keyClick(&recorder, Qt::Key_Escape);
    record(row.key, row.modifiers);
    EXPECT_EQ(chosen.join(u' '), row.chosen) << &row - rows;
    EXPECT_EQ(said, row.said) << &row - rows;
    // A refusal waits for better keys.
    EXPECT_EQ(recorder.isRecording(), row.chosen.isEmpty()) << &row - rows;
    EXPECT_TRUE(platform.claims.empty()) << "nothing stays claimed";
  }
}

TEST_F(ShortcutRecorderTest, WhatAnotherProgramHasClaimedIsNotTaken) {
  recorder.setCombo(PTKeyCombo::keyComboWithKeyCode(keyF5, HotKeyModifier::command));
  platform.refusal = HotKeyStatus::alreadyClaimed;
  record(Qt::Key_F5, Qt::AltModifier);
  EXPECT_EQ(chosen, QStringList());
  EXPECT_EQ(said, u"Alt+F5 is not available: another program has claimed it."_s);
  EXPECT_TRUE(saidProblem);
  EXPECT_EQ(recorder.text(), u"Super+F5"_s);
  recorder.hide();
  recorder.show();
  EXPECT_EQ(said, QString()) << "beside the key that is in force";
  // The agent itself holds the one in force, which is no obstacle.
  record(Qt::Key_F5, Qt::MetaModifier);
  EXPECT_EQ(said, QString());
}

TEST_F(ShortcutRecorderTest, ADesktopThatAsksTheUserAnswersLater) {
  platform.initialState = HotKeyState::Pending;
  for (const bool isGranted : {false, true}) {
    record(Qt::Key_F5, Qt::ControlModifier);
    EXPECT_EQ(said, u"The desktop is asked for Ctrl+F5…"_s);
    platform.stateObserver(platform.lastRef, isGranted ? HotKeyState::Active : HotKeyState::Refused,
                           isGranted ? QString() : u"you declined it"_s);
    EXPECT_EQ(said, isGranted ? QString() : u"Ctrl+F5 is not available: you declined it."_s);
    EXPECT_TRUE(platform.claims.empty());
  }
  EXPECT_EQ(chosen, QStringList{u"Ctrl+F5"_s});
}

TEST_F(ShortcutRecorderTest, KeysThatLeaveIt) {
  const auto before = PTKeyCombo::keyComboWithKeyCode(keyF5, HotKeyModifier::command);
  const struct {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    QStringList chosen;
    bool movesOn;
  } rows[] = {
      {Qt::Key_Escape, Qt::NoModifier, {}, false},
      {Qt::Key_Tab, Qt::NoModifier, {}, true},
      {Qt::Key_Backspace, Qt::NoModifier, {u"(None)"_s}, false},
  };
  for (const auto& row : rows) {
    chosen.clear();
    recorder.setCombo(before);
    recorder.setFocus();
    QTest::keyClick(&recorder, Qt::Key_Space);
    ASSERT_TRUE(recorder.isRecording());
    QTest::keyClick(&recorder, row.key, row.modifiers);
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_EQ(chosen, row.chosen) << &row - rows;
    EXPECT_EQ(next.hasFocus(), row.movesOn) << &row - rows;
  }
}

// A menu's key would do what the menu does, in place of being recorded.
TEST_F(ShortcutRecorderTest, KeysOfTheMenusAreRecordedToo) {
  QAction action(&window);
  action.setShortcut(QKeySequence(u"Ctrl+J"_s));
  bool wasTriggered = false;
  QObject::connect(&action, &QAction::triggered, &window, [&] { wasTriggered = true; });
  window.addAction(&action);
  record(Qt::Key_J, Qt::ControlModifier);
  EXPECT_FALSE(wasTriggered);
  EXPECT_EQ(chosen.size(), 1);
}

}  // namespace
}  // namespace quillo
