// The text view's switches, its Format commands, and the word ranges of completion.

#include "foundation/NotificationCenter.h"
#include "tests/ui/entry/EntryViewFixture.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>

#include <random>

namespace quillo {
namespace {

TEST_F(EntryViewTest, TheSwitchesAreReadOnWakingAndWrittenBack) {
  show();
  EXPECT_TRUE(view->isContinuousSpellCheckingEnabled());
  EXPECT_FALSE(view->isGrammarCheckingEnabled());
  EXPECT_TRUE(view->isAutomaticSpellingCorrectionEnabled());
  EXPECT_EQ(defaults().persistentDomain().size(), 3);

  item(*menuAt(0), u"Check Spelling While Typing"_s)->trigger();
  EXPECT_FALSE(view->isContinuousSpellCheckingEnabled());
  newChecker();
  readDefaults();
  EXPECT_EQ(defaults().objectForKey(Key::editorSpellCheckEnabled), PropertyListValue(false));
  show();
  EXPECT_FALSE(view->isContinuousSpellCheckingEnabled());
  EXPECT_TRUE(view->isAutomaticSpellingCorrectionEnabled());
  type(u"wrod "_s);
  EXPECT_EQ(misspelled(), QStringList());
}

TEST_F(EntryViewTest, ANoticeOfChangedSettingsIsFollowedWithoutWritingBack) {
  show();
  defaults().removeObjectForKey(Key::editorSpellCheckEnabled);
  defaults().registerDefaults({{Key::editorSpellCheckEnabled, false}, {Key::editorGrammarCheckEnabled, true}});
  defaults().removeObjectForKey(Key::editorGrammarCheckEnabled);
  localCenter.postNotification(Notice::spellingAndGrammarSettingsDidChange);
  EXPECT_FALSE(view->isContinuousSpellCheckingEnabled());
  EXPECT_TRUE(view->isGrammarCheckingEnabled());
  EXPECT_FALSE(defaults().persistentDomain().contains(Key::editorSpellCheckEnabled));

  view->stopObservingPrefChanges();
  defaults().setBoolForKey(true, Key::editorSpellCheckEnabled);
  localCenter.postNotification(Notice::spellingAndGrammarSettingsDidChange);
  EXPECT_FALSE(view->isContinuousSpellCheckingEnabled());
}

TEST_F(EntryViewTest, NothingCanBeDropped) {
  show();
  view->setAcceptDrops(true);
  view->viewport()->setAcceptDrops(true);
  EXPECT_TRUE(view->acceptableDragTypes().contains(u"text/plain"_s));
  EXPECT_FALSE(view->acceptDrops() || view->viewport()->acceptDrops());
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
      {"markers there", u"**x**"_s, 0, 5, Qt::Key_B, u"****x****"_s},
      {"a surrogate pair", u"a\U0001F4DDb"_s, 1, 3, Qt::Key_B, u"a**\U0001F4DD**b"_s},
      {"no-break space", u"a\u00a0b"_s, 0, 3, Qt::Key_I, u"*a\u00a0b*"_s},
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
      {"inside", u"a #tag"_s, 5, 5, nowhere},
      {"before the sign", u"a #tag"_s, 2, 2, nowhere},
      {"another word", u"a tag"_s, 5, 5, nowhere},
      {"sign not first", u"a(#tag"_s, 6, 6, nowhere},
      {"after a space", u"#tag "_s, 5, 5, nowhere},
      {"selection", u"#tag"_s, 0, 4, nowhere},
      {"no text", u""_s, 0, 0, nowhere},
      {"after a line separator", u"a\u2028#t"_s, 4, 4, {2, 2}},
      {"after a no-break space", u"a\u00a0#t"_s, 4, 4, {2, 2}},
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

TEST_F(EntryViewTest, OnlyFinalCompletionsReachTheText) {
  show();
  type(u"see #ev now"_s);
  view->insertCompletion(u"#evening"_s, {4, 3}, TextMovement::Down, false);
  EXPECT_EQ(view->string(), u"see #ev now"_s);
  view->insertCompletion(u"#evening"_s, {4, 3}, TextMovement::Return, true);
  EXPECT_EQ(view->string(), u"see #evening now"_s);
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(view->string(), u"see #ev now"_s);
}

// Random text: every range lies within it, holds no space, reaches up to spaces or ends, and holds or touches the place
// that was asked for.
TEST_F(EntryViewTest, WordRangesOfAnyTextStayWithinIt) {
  const QList<QString> pieces{
      u"#"_s,      u" "_s,      u"\n"_s,     u"\u2028"_s, u"\t"_s,     u"a"_s,      u"\u00a0"_s, u"\U0001F468"_s,
      u"\u200d"_s, u"\u05e9"_s, u"\u0301"_s, u"*"_s,      u"\u3000"_s, u"\u0928"_s, u"_"_s,      QString(QChar(0xd83d)),
      u"\u202e"_s, u"#x"_s};
  std::mt19937 random(20140310);
  defaults().setBoolForKey(true, Key::markdownEnabled);
  show(/*load=*/false);
  for (int round = 0; round < 150; ++round) {
    QString text;
    for (unsigned i = random() % 40; i > 0; --i) text += pieces[random() % static_cast<unsigned>(pieces.size())];
    view->setString(text);
    const QString all = view->string();
    for (qsizetype at = -2; at <= all.size() + 2; ++at) {
      const TextRange range = view->currentWordRangeForCursorLocation(at);
      const qsizetype place = std::clamp(at, qsizetype{0}, all.size());
      ASSERT_TRUE(range.location >= 0 && range.length >= 0 && range.end() <= all.size());
      ASSERT_TRUE(range.location <= place && place <= range.end());
      for (qsizetype i = range.location; i < range.end(); ++i) ASSERT_FALSE(all[i].isSpace());
      ASSERT_TRUE(range.location == 0 || all[range.location - 1].isSpace());
      ASSERT_TRUE(range.end() == all.size() || all[range.end()].isSpace());
    }
    const int start = static_cast<int>(random() % static_cast<unsigned>(all.size() + 1));
    const int end = static_cast<int>(random() % static_cast<unsigned>(all.size() + 1));
    select(start, end);
    // The toolkit keeps the caret out of the middle of characters.
    const int from = view->textCursor().selectionStart();
    const int to = view->textCursor().selectionEnd();
    const QString marker = round % 2 ? u"**"_s : u"*"_s;
    view->surroundSelectionWithString(marker);
    ASSERT_EQ(view->string(), all.left(from) + marker + all.mid(from, to - from) + marker + all.mid(to));
    press(Qt::Key_Z, Qt::ControlModifier);
    ASSERT_EQ(view->string(), all);
  }
}

}  // namespace
}  // namespace quillo
