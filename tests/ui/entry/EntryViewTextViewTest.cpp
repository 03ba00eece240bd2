// The text view's switches, its Format commands, and the word ranges of completion.

#include "foundation/NotificationCenter.h"
#include "tests/ui/entry/EntryViewFixture.h"

#include <QApplication>

namespace quillo {
namespace {

TEST_F(EntryViewTest, TheSwitchesAreReadOnWakingAndWrittenBack) {
  show();
  EXPECT_TRUE(view->checking().switches().checksSpelling);
  EXPECT_FALSE(view->checking().switches().checksGrammar);
  EXPECT_TRUE(view->checking().switches().correctsSpelling);
  EXPECT_EQ(defaults().persistentDomain().size(), 3);

  item(*menuAt(0), u"Check Spelling While Typing"_s)->trigger();
  EXPECT_FALSE(view->checking().switches().checksSpelling);
  newChecker();
  readDefaults();
  EXPECT_EQ(defaults().objectForKey(Key::editorSpellCheckEnabled), PropertyListValue(false));
  show();
  EXPECT_FALSE(view->checking().switches().checksSpelling);
  EXPECT_TRUE(view->checking().switches().correctsSpelling);
  type(u"wrod "_s);
  EXPECT_EQ(misspelled(), QStringList());
}

TEST_F(EntryViewTest, ANoticeOfChangedSettingsIsFollowedWithoutWritingBack) {
  show();
  defaults().removeObjectForKey(Key::editorSpellCheckEnabled);
  defaults().registerDefaults({{Key::editorSpellCheckEnabled, false}, {Key::editorGrammarCheckEnabled, true}});
  defaults().removeObjectForKey(Key::editorGrammarCheckEnabled);
  localCenter.postNotification(Notice::spellingAndGrammarSettingsDidChange);
  EXPECT_FALSE(view->checking().switches().checksSpelling);
  EXPECT_TRUE(view->checking().switches().checksGrammar);
  EXPECT_FALSE(defaults().persistentDomain().contains(Key::editorSpellCheckEnabled));

  view->stopObservingPrefChanges();
  defaults().setBoolForKey(true, Key::editorSpellCheckEnabled);
  localCenter.postNotification(Notice::spellingAndGrammarSettingsDidChange);
  EXPECT_FALSE(view->checking().switches().checksSpelling);
}

TEST_F(EntryViewTest, MarkersAreWrappedAroundTheSelectionInOneUndoStep) {
  const struct {
    const char* name;
    QString text;
    int start;
    int end;
    Qt::Key key;
    QString expected;
  } cases[] = {
      {"a word", u"one two"_s, 4, 7, Qt::Key_I, u"one *two*"_s},
      {"over lines", u"a\nb"_s, 0, 3, Qt::Key_B, u"**a\nb**"_s},
      {"a surrogate pair", u"a\U0001F4DDb"_s, 1, 3, Qt::Key_B, u"a**\U0001F4DD**b"_s},
      {"right to left", u"\u05e9\u05dc\u05d5\u05dd"_s, 0, 4, Qt::Key_I, u"*\u05e9\u05dc\u05d5\u05dd*"_s},
  };
  defaults().setBoolForKey(true, Key::markdownEnabled);
  show();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->setString(c.text);
    select(c.start, c.end);
    QSignalSpy changes(view.get(), &EntryViewTextView::textDidChange);
    press(c.key, Qt::ControlModifier);
    EXPECT_EQ(view->string(), c.expected);
    EXPECT_EQ(changes.size(), 1);
    EXPECT_FALSE(view->textCursor().hasSelection());
    // What is typed next is another step.
    type(u"z"_s);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(view->string(), c.expected);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(view->string(), c.text);
  }
}

TEST_F(EntryViewTest, AnEmptySelectionTakesFourAsterisksAndAReadOnlyViewNone) {
  show();
  type(u"ab"_s);
  view->makeSelectionBold();
  EXPECT_EQ(view->string(), u"ab****"_s);
  view->setReadOnly(true);
  view->makeSelectionItalic();
  EXPECT_EQ(view->string(), u"ab****"_s);
}

TEST_F(EntryViewTest, FormatIsLastAndEnabledByMarkdownAndASelection) {
  show();
  view->setString(u"some text"_s);
  for (const bool markdown : {false, true})
    for (const bool selected : {false, true}) {
      defaults().setBoolForKey(markdown, Key::markdownEnabled);
      select(0, selected ? 4 : 0);
      const auto menu = menuAt(6);
      QAction* format = menu->actions().last();
      ASSERT_TRUE(format->menu());
      EXPECT_EQ(format->text(), u"Format"_s);
      const QList<QAction*> commands = format->menu()->actions();
      ASSERT_EQ(commands.size(), 2);
      EXPECT_EQ(commands[0]->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_B));
      EXPECT_EQ(commands[1]->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_I));
      for (const QAction* command : commands) EXPECT_EQ(command->isEnabled(), markdown && selected);
      if (!markdown || !selected) {
        press(Qt::Key_B, Qt::ControlModifier);
        EXPECT_EQ(view->string(), u"some text"_s);
      } else {
        commands[1]->trigger();
        EXPECT_EQ(view->string(), u"*some* text"_s);
      }
    }
}

TEST_F(EntryViewTest, TheLayoutItemIsTakenOutOfAMenu) {
  QMenu menu;
  menu.addAction(u"Copy"_s);
  menu.addMenu(u"Layout Orientation"_s);
  EntryViewTextView::removeLayoutFromMenu(menu);
  ASSERT_EQ(menu.actions().size(), 1);
  EXPECT_EQ(menu.actions()[0]->text(), u"Copy"_s);
}

TEST_F(EntryViewTest, TheContextMenuOpensAtARightClick) {
  show();
  paste(u"wrod x"_s);
  finishChecking();
  QTextCursor cursor(view->document());
  cursor.setPosition(2);
  QContextMenuEvent event(QContextMenuEvent::Mouse, view->cursorRect(cursor).center(), QPoint(5, 5));
  QCoreApplication::sendEvent(view->viewport(), &event);
  auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_TRUE(menu);
  EXPECT_TRUE(item(*menu, u"Learn Spelling"_s));
  menu->close();
}

TEST_F(EntryViewTest, CompletionReplacesTheHashtagThatEndsAtTheCaret) {
  constexpr TextRange nowhere = TextRange::nowhere();
  const struct {
    const char* name;
    QString text;
    int anchor;
    int caret;
    TextRange expected;
  } cases[] = {
      {"at the end", u"a #tag"_s, 6, 6, {2, 4}},
      {"before a space", u"#tag b"_s, 4, 4, {0, 4}},
      {"the sign alone", u"x\n#"_s, 3, 3, {2, 1}},
      {"before the sign", u"a #tag"_s, 2, 2, nowhere},
      {"sign not first", u"a(#tag"_s, 6, 6, nowhere},
      {"selection", u"#tag"_s, 0, 4, nowhere},
      {"after a line separator", u"a\u2028#t"_s, 4, 4, {2, 2}},
      {"with a surrogate pair", u"#\U0001F4DDx"_s, 4, 4, {0, 4}},
      {"right to left", u"\u05d0 #\u05e9\u05dc"_s, 5, 5, {2, 3}},
  };
  show();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->setString(c.text);
    select(c.anchor, c.caret);
    EXPECT_EQ(view->rangeForUserCompletion(), c.expected);
  }
}

}  // namespace
}  // namespace quillo
