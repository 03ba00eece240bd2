// Paragraphs too long to be laid out at once: the blocks of the document stay short, and nothing else shows of it.

#include "entry/document/ParagraphSeams.h"
#include "tests/ui/entry/EntryViewFixture.h"

#include <QTextBoundaryFinder>

#include <random>

namespace quillo {
namespace {

const QString prose = u"the river walked well, the light words isn't he example. "_s;

QString repeated(const QString& piece, qsizetype size) {
  QString text;
  while (text.size() < size) text += piece;
  return text.first(size);
}

class LongParagraphTest : public EntryViewTest {
 protected:
  // What the cost of a key follows: no block is long, and in none is there a long stretch without a break.
  void expectShortBlocks(qsizetype times = 1) {
    for (QTextBlock block = view->document()->begin(); block.isValid(); block = block.next()) {
      const QString text = block.text();
      ASSERT_LE(text.size(), ParagraphSeams::longestBlock * times);
      QTextBoundaryFinder breaks(QTextBoundaryFinder::Line, text);
      qsizetype last = 0;
      for (qsizetype at = breaks.toNextBoundary(); at >= 0; at = breaks.toNextBoundary()) {
        ASSERT_LE(at - last, ParagraphSeams::longestUnbroken * times);
        last = at;
      }
    }
  }
  // In positions of string(), whatever seams lie before it.
  int caret() {
    QTextCursor before = view->textCursor();
    before.setPosition(0, QTextCursor::KeepAnchor);
    return static_cast<int>(ParagraphSeams::selectedString(before).size());
  }
  // Where a place of string() lies in the document: before a seam, if there is one.
  int placeOf(qsizetype location) {
    for (QTextBlock block = view->document()->begin();; block = block.next()) {
      if (location <= block.text().size()) return block.position() + static_cast<int>(location);
      location -= block.text().size() + (ParagraphSeams::isBehind(block) ? 0 : 1);
    }
  }
  // The first seam behind `position`.
  QTextBlock blockBehindSeam(int position = 0) {
    QTextBlock block = view->document()->findBlock(position).next();
    while (block.isValid() && !ParagraphSeams::isBefore(block)) block = block.next();
    return block;
  }
  void placeCaret(int position) { select(position, position); }
};

TEST_F(LongParagraphTest, WhatIsPastedOrSetIsKeptToTheLetterInShortBlocks) {
  const QString family = u"\U0001F468\u200d\U0001F469\u200d\U0001F467"_s;
  const struct {
    const char* name;
    QString text;
  } cases[] = {
      {"one letter", QString(1 << 20, u'a')},
      {"a data URL", u"data:image/png;base64,"_s + repeated(u"iVBORw0KGgoAAAANSUhEUgAA+AAA/CAYAAAB"_s, 300000)},
      {"emoji", repeated(family, 8 * 3000)},
      {"surrogate pairs off the even places", u"x"_s + repeated(u"\U0001D41A"_s, 30000)},
      {"one letter of many marks", u"e"_s + QString(20000, QChar(0x301))},
      {"right to left", repeated(u"\u05e9\u05dc\u05d5\u05dd, \u05e2\u05d5\u05dc\u05dd 12. "_s, 40000)},
      {"between others", u"one\n\n"_s + QString(30000, u'b') + u"\n\ntwo"_s},
  };
  show();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->setString(c.text);
    EXPECT_TRUE(view->string() == c.text);
    EXPECT_FALSE(view->document()->isUndoAvailable());
    expectShortBlocks();
    view->setString(u"ab"_s);
    placeCaret(1);
    QSignalSpy changes(view.get(), &EntryViewTextView::textDidChange);
    paste(c.text);
    EXPECT_EQ(changes.size(), 1);
    EXPECT_TRUE(view->string() == u"a"_s + c.text + u"b"_s);
    expectShortBlocks();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(QGuiApplication::clipboard()->text() == view->string());
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(view->string(), u"ab"_s);
  }
}

TEST_F(LongParagraphTest, SeamsLieBehindSpacesOrBetweenCharactersAndKeepTheDirection) {
  show();
  view->setString(repeated(prose, 40000));
  int seams = 0;
  for (QTextBlock block = blockBehindSeam(); block.isValid(); block = block.next(), ++seams)
    EXPECT_TRUE(block.previous().text().endsWith(u' '));
  EXPECT_GT(seams, 5);

  for (const QString& character : {u"\U0001D41A"_s, u"e\u0301\u0323"_s, u"\U0001F468\u200d\U0001F469"_s}) {
    view->setString(u"x"_s + repeated(character, character.size() * 3000));
    QTextBlock block = blockBehindSeam();
    ASSERT_TRUE(block.isValid());
    for (; block.isValid(); block = block.next()) EXPECT_TRUE(block.text().startsWith(character));
  }

  // Latin letters do not turn the rest of a paragraph round, and a new one finds its own direction.
  view->setString(u"\u05d0"_s + QString(20000, u'a'));
  const QTextBlock last = view->document()->lastBlock();
  ASSERT_TRUE(ParagraphSeams::isBefore(last));
  EXPECT_EQ(last.textDirection(), Qt::RightToLeft);
  placeCaret(last.position() + 5);
  press(Qt::Key_Return);
  EXPECT_EQ(view->textCursor().block().textDirection(), Qt::LeftToRight);
}

TEST_F(LongParagraphTest, KeysCrossASeamAsIfThereWereNone) {
  show();
  const QString text = repeated(u"0123456789"_s, 5000);
  const struct {
    Qt::Key key;
    int from;   // beside the seam
    int moves;  // the caret
  } cases[] = {{Qt::Key_Left, 0, -1}, {Qt::Key_Left, 1, -1}, {Qt::Key_Right, 0, 1}, {Qt::Key_Right, -1, 1}};
  for (const auto& c : cases)
    for (const bool behind : {false, true}) {
      view->setString(text);
      const int seam = blockBehindSeam().position() - 1;  // also where it lies in the text
      // A place at the seam is two of the document.
      placeCaret(seam + c.from + (c.from > 0 || (c.from == 0 && behind) ? 1 : 0));
      ASSERT_EQ(caret(), seam + c.from);
      press(c.key);
      EXPECT_EQ(caret(), seam + c.from + c.moves);
    }

  view->setString(text);
  const int seam = blockBehindSeam().position() - 1;
  placeCaret(seam - 2);
  for (int i = 0; i < 4; ++i) press(Qt::Key_Right, Qt::ShiftModifier);
  press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), text.mid(seam - 2, 4));
  view->makeSelectionBold();
  EXPECT_EQ(view->string(), QString(text).insert(seam + 2, u"**"_s).insert(seam - 2, u"**"_s));

  // A combining mark joins the letter before the seam.
  view->setString(text);
  placeCaret(seam + 1);
  type(u"\u0301"_s);
  press(Qt::Key_Backspace);
  press(Qt::Key_Backspace);
  EXPECT_EQ(view->string(), QString(text).remove(seam - 1, 1));
}

TEST_F(LongParagraphTest, AThirdClickSelectsTheParagraph) {
  show();
  const QString text = QString(5000, u'a');
  view->setString(u"b\n"_s + text + u"\nc"_s);
  const QPoint inside = view->cursorRect(QTextCursor(view->document()->findBlockByNumber(1))).center() + QPoint(9, 0);
  QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, inside);
  QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, inside);
  EXPECT_EQ(view->textCursor().selectionStart(), 2);
  EXPECT_EQ(view->textCursor().selectionEnd(), view->document()->lastBlock().position());
  press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_TRUE(QGuiApplication::clipboard()->text() == text + u'\n');
}

TEST_F(LongParagraphTest, SpellingAndHashtagsSeeThroughSeams) {
  show();
  // Prose is checked whatever its length, and a seam makes no false word.
  QString text = repeated(prose, 40000);
  text = text.first(text.lastIndexOf(u' '));
  paste(text + u" wrod"_s);
  EXPECT_EQ(misspelled(), QStringList{u"wrod"_s});
  // An address is one as a whole, where it is only a part of its paragraph's blocks as well.
  const QString address = u"http://a.b/"_s + repeated(u"wrod-teh/"_s, 20000);
  view->setString({});
  paste(address);
  EXPECT_EQ(misspelled(), QStringList());
  type(u"teh "_s);
  EXPECT_EQ(view->string(), address + u"teh "_s);
  EXPECT_EQ(misspelled(), QStringList());

  view->setString(u"a #"_s + QString(5000, u'b') + u" c"_s);
  const QTextBlock block = blockBehindSeam();
  const TextRange tag = view->currentWordRangeForCursorLocation(block.position() + 3);
  EXPECT_EQ(tag.location, 2);
  EXPECT_EQ(tag, view->currentWordRangeForCursorLocation(4));
  EXPECT_EQ(view->document()->characterAt(static_cast<int>(tag.end())), u' ');
  placeCaret(static_cast<int>(tag.end()));
  EXPECT_EQ(view->rangeForUserCompletion(), tag);
  view->insertCompletion(u"#bee"_s, tag, TextMovement::Return, true);
  EXPECT_EQ(view->string(), u"a #bee c"_s);
}

// Edits at random places, of texts that hover about the bounds, against a plain string and its history.
TEST_F(LongParagraphTest, RandomEditsAreThoseOfAPlainString) {
  std::mt19937 random(20240525);
  const auto below = [&](qsizetype n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const QStringList pieces{u"a"_s, u" "_s, u"\U0001F4DD"_s, u"e\u0301"_s, u"\u05e9"_s, u"-"_s, u"\u00a0"_s, u"wrod "_s};
  // Few lines, or no paragraph would be long; at times one letter alone.
  const auto mixture = [&](int size) {
    QString text;
    const int kinds = 1 + below(pieces.size());
    while (text.size() < size) text += below(3000) == 0 ? u"\n"_s : pieces[below(kinds)];
    return text;
  };
  defaults().setBoolForKey(false, Key::editorCorrectSpellingEnabled);
  show();
  QString model;
  QStringList history;  // what undo leads back to
  int longest = 0;
  for (int round = 0; round < 300; ++round) {
    const QString before = model;
    int from = below(model.size() + 1);
    const bool near = below(2) == 0;
    if (const QTextBlock block = blockBehindSeam(placeOf(from)); near && block.isValid()) {
      // Most faults would be at seams.
      placeCaret(block.position() - below(2));
    } else {
      placeCaret(placeOf(from));
    }
    from = caret();
    const int choice = below(10);
    // Ends a run of typing, which is undone as one.
    view->document()->setModified(false);
    if (choice < 2) {
      const QString text = mixture(below(3) == 0 ? 3000 + below(9000) : 1 + below(700));
      paste(text);
      model.insert(from, text);
    } else if (choice == 2) {
      const QString text = mixture(1);
      compose(u"x"_s);
      compose({}, text);
      model.insert(from, text);
    } else if (choice < 5) {
      const QString letter = below(4) == 0 ? u"\n"_s : u"k"_s;
      type(letter);
      model.insert(from, letter);
    } else if (choice < 7) {
      // Qt knows what a character is.
      press(below(2) == 0 ? Qt::Key_Backspace : Qt::Key_Delete);
      const int lost = static_cast<int>(model.size() - view->string().size());
      ASSERT_GE(lost, from > 0 && from < before.size() ? 1 : 0);
      model.remove(caret(), lost);
    } else if (choice < 9) {
      const int to = std::min<int>(from + below(below(6) == 0 ? 12000 : 900), static_cast<int>(model.size()));
      select(view->textCursor().position(), placeOf(to));
      const int start = caret() == from ? from : std::min(from, caret());
      const qsizetype length = ParagraphSeams::selectedString(view->textCursor()).size();
      if (below(3) == 0) {
        compose({}, u"c\n"_s);
        history << QString(model).remove(start, length);  // a step of its own where there are seams
        model.replace(start, length, u"c\n"_s);
      } else if (length > 0) {
        press(Qt::Key_Delete);
        model.remove(start, length);
      }
    } else if (!history.isEmpty()) {
      const int steps = 1 + below(4);
      int done = 0;
      for (; done < steps && view->document()->isUndoAvailable(); ++done) press(Qt::Key_Z, Qt::ControlModifier);
      const QString undone = view->string();
      for (; done > 0; --done) press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
      ASSERT_TRUE(view->string() == model) << "redo, round " << round;
      ASSERT_TRUE(history.contains(undone)) << "undo, round " << round;
      continue;
    }
    ASSERT_TRUE(view->string() == model) << "choice " << choice << ", round " << round;
    // A redo may stop short of the step that parts two blocks it has joined.
    expectShortBlocks(2);
    if (HasFailure()) FAIL() << "round " << round;
    history << model;
    if (history.size() > 30) history.removeFirst();
    longest = std::max(longest, static_cast<int>(model.size()));
    for (QTextBlock block = blockBehindSeam(); block.isValid(); block = blockBehindSeam(block.position())) {
      ASSERT_FALSE(block.text().isEmpty());
      ASSERT_FALSE(block.previous().text().isEmpty());
    }
    if (model.size() > 25000) {
      view->setString({});
      model.clear();
      history = QStringList{QString()};
    }
  }
  EXPECT_GT(longest, 15000);
  // All the way back.
  while (view->document()->isUndoAvailable()) press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(view->string(), QString());
}

}  // namespace
}  // namespace quillo
