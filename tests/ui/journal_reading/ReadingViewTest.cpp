#include "journal/reading/ReadingView.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QPalette light{QColor(0xef, 0xef, 0xef)};
const QPalette dark{QColor(0x30, 0x33, 0x38)};

class ReadingViewTest : public testing::Test {
 protected:
  ReadingViewTest() {
    view.setPalette(light);
    view.resize(900, 600);
    view.show();
    view.activateWindow();
    view.setFocus();
    QCoreApplication::processEvents();
  }
  void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(&view, static_cast<Qt::Key>(key), modifiers);
  }

  ReadingView view;
};

TEST_F(ReadingViewTest, FollowsLinksAndTagsByKeyboard) {
  view.setEntry({u"Friday"_s, u"Berlin"_s, u"See [there](https://x.y/z), #caf\u00E9 and [no](file:///etc/passwd)."_s});
  QSignalSpy links(&view, &ReadingView::linkActivated);
  QSignalSpy tags(&view, &ReadingView::tagActivated);
  press(Qt::Key_Tab);
  EXPECT_EQ(view.textCursor().selectedText(), u"there"_s);
  press(Qt::Key_Return);
  press(Qt::Key_Tab);
  const QImage focused = view.grab().toImage();
  press(Qt::Key_Return);
  ASSERT_EQ(links.count(), 1);
  EXPECT_EQ(links[0][0].toUrl(), QUrl(u"https://x.y/z"_s));
  ASSERT_EQ(tags.count(), 1);
  EXPECT_EQ(tags[0][0].toString(), u"caf\u00E9"_s);
  view.setTextCursor(QTextCursor(view.document()));
  EXPECT_NE(view.grab().toImage(), focused);
}

TEST_F(ReadingViewTest, CopiesPlainText) {
  view.setEntry({u"Friday"_s, u"Berlin"_s, u"one\ntwo **bold**\n\n- [x] done\n5. five\n\n![pond](x.png)"_s});
  press(Qt::Key_A, Qt::ControlModifier);
  press(Qt::Key_C, Qt::ControlModifier);
  const QMimeData* copied = QApplication::clipboard()->mimeData();
  EXPECT_EQ(copied->text().toStdString(), "Friday\nBerlin\none\ntwo bold\n[x] done\n5. five\npond");
  EXPECT_FALSE(copied->hasHtml());
}

TEST_F(ReadingViewTest, KeepsTheColumnReadableAtEveryWidthAndSize) {
  view.setEntry({u"Friday"_s, u"Berlin"_s, u"the water kept a little of the light "_s.repeated(400)});
  for (const int width : {120, 588, 900, 2400}) {
    for (const int size : {9, 16, 32}) {
      view.setFontSize(size);
      view.resize(width, 600);
      const int longest = view.document()->lastBlock().layout()->lineAt(0).textLength();
      EXPECT_LE(longest, 68) << width << ' ' << size;
      EXPECT_LE(view.document()->textWidth(), width);
      EXPECT_GE(longest, width == 2400 ? 60 : 1) << size;
      EXPECT_EQ(view.horizontalScrollBar()->maximum(), 0);
    }
  }
}

TEST_F(ReadingViewTest, MarksSearchedWordsButNotTheHeading) {
  view.setEntry({u"River day"_s, u"River, Germany"_s, u"The **ri**ver and `rivers` of #river\n\nArriving"_s});
  view.setSearchedWords({u"river"_s});
  EXPECT_EQ(view.matchCount(), 3);
  view.setEntry({{}, {}, u"no match"_s});
  EXPECT_EQ(view.matchCount(), 0);
  view.setEntry({{}, {}, u"line\n\n"_s.repeated(300) + u"river"_s});
  EXPECT_EQ(view.verticalScrollBar()->value(), 0);
  view.showMatch(0);
  EXPECT_GT(view.verticalScrollBar()->value(), 0);
  const JournalColors colors = JournalColors::forPalette(light);
  const QImage image = view.grab().toImage();
  bool isMarked = false;
  for (int y = 0; y < image.height() && !isMarked; ++y)
    for (int x = 0; x < image.width() && !isMarked; ++x) isMarked = image.pixelColor(x, y) == colors.match;
  EXPECT_TRUE(isMarked);
}

TEST_F(ReadingViewTest, TakesTheColorsOfThePalette) {
  view.setEntry({u"Friday"_s, {}, u"text"_s});
  for (const QPalette& palette : {dark, light}) {
    view.setPalette(palette);
    const JournalColors colors = JournalColors::forPalette(palette);
    const QImage image = view.grab().toImage();
    // The margin is not the viewport's; both are paper.
    EXPECT_EQ(image.pixelColor(2, 300), colors.paper);
    EXPECT_EQ(image.pixelColor(450, 500), colors.paper);
    EXPECT_EQ(view.document()->lastBlock().begin().fragment().charFormat().foreground().color(), colors.text);
  }
}

TEST_F(ReadingViewTest, TellsAScreenReaderWhichEntryItIs) {
  view.setEntry({u"Friday"_s, u"Berlin"_s, u"Some words"_s});
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&view);
  ASSERT_TRUE(accessible);
  EXPECT_EQ(accessible->text(QAccessible::Name), u"Entry, Friday"_s);
  ASSERT_TRUE(accessible->textInterface());
  const int length = accessible->textInterface()->characterCount();
  EXPECT_TRUE(accessible->textInterface()->text(0, length).contains(u"Some words"_s));
}

}  // namespace

}  // namespace quillo
