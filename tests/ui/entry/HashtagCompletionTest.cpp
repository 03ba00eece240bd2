// The list of tags under a hashtag being typed, by keys and by the pointer.

#include "entry/text/HashtagCompletionList.h"
#include "tests/ui/entry/EntryViewFixture.h"

#include <QAccessible>
#include <QApplication>
#include <QVBoxLayout>

#include <utility>

namespace quillo {
namespace {

class HashtagCompletionTest : public EntryViewTest {
 protected:
  HashtagCompletionTest() {
    show(/*load=*/false);
    view->resize(320, 200);
    view->setCompletionSource([this] {
      ++asked;
      return tags;
    });
  }
  HashtagCompletionList* list() {
    auto* found = view->window()->findChild<HashtagCompletionList*>();
    return found && found->isVisible() ? found : nullptr;
  }
  QStringList rows() { return list() ? list()->tags() : QStringList(); }

  QStringList tags{u"evening"_s, u"work"_s,  u"Everest"_s, u"garden"_s,
                   u"family"_s,  u"paper"_s, u"every"_s,   u"\u00c9t\u00e9"_s};
  int asked{0};
};

TEST_F(HashtagCompletionTest, TagsWithTheTypedBeginningAreOfferedMostUsedFirst) {
  const struct {
    QString typed;
    QStringList rows;
    int selected;
  } cases[] = {
      {u"#"_s, tags.mid(0, 6), -1},
      {u"#e"_s, {u"evening"_s, u"Everest"_s, u"every"_s}, 0},
      {u"#every"_s, {}, -1},
      {u"#EVERY"_s, {u"every"_s}, -1},
      {u"x #\u00e9"_s, {u"\u00c9t\u00e9"_s}, 0},
      {u"evening"_s, {}, -1},
      {u"x#e"_s, {}, -1},
      {u"#e "_s, {}, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.typed.toStdString());
    view->setString({});
    type(c.typed);
    EXPECT_EQ(rows(), c.rows);
    EXPECT_EQ(list() ? list()->selectedRow() : -1, c.selected);
  }
}

TEST_F(HashtagCompletionTest, TheSourceIsAskedOnceAHashtag) {
  type(u"a #eve"_s);
  EXPECT_EQ(asked, 1);
  type(u" b #wor"_s);
  EXPECT_EQ(asked, 2);
}

TEST_F(HashtagCompletionTest, TagsThatComeLaterAreOfferedWhileTheirHashtagIsTyped) {
  const QStringList all = std::exchange(tags, {});
  const struct {
    const char* name;
    std::function<void()> meanwhile;
    bool opens;
  } cases[] = {
      {"nothing", [] {}, true},
      {"another letter", [this] { type(u"e"_s); }, true},
      {"the end of the word", [this] { type(u"x "_s); }, false},
      {"caret", [this] { press(Qt::Key_Left); }, false},
      {"focus", [this] { view->clearFocus(); }, false},
      {"composing", [this] { compose(u"n"_s); }, false},
      {"new text", [this] { view->setString(u"#ev"_s); }, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    tags.clear();
    view->setString({});
    view->setFocus();
    type(u"#ev"_s);
    c.meanwhile();
    tags = all;
    view->completionSourceDidChange();
    EXPECT_EQ(list() != nullptr, c.opens);
    compose({});
  }
}

TEST_F(HashtagCompletionTest, KeysChooseAndTake) {
  const struct {
    const char* name;
    QString typed;
    QList<Qt::Key> keys;
    QString expected;
  } cases[] = {
      {"return takes the first", u"#ev"_s, {Qt::Key_Return}, u"#evening"_s},
      {"tab too", u"#ev"_s, {Qt::Key_Tab}, u"#evening"_s},
      {"down", u"#ev"_s, {Qt::Key_Down, Qt::Key_Return}, u"#Everest"_s},
      {"up goes round", u"#ev"_s, {Qt::Key_Up, Qt::Key_Return}, u"#every"_s},
      {"the sign alone: a new line", u"#"_s, {Qt::Key_Return}, u"#\n"_s},
      {"the sign alone, tab", u"#"_s, {Qt::Key_Tab}, u"#evening"_s},
      {"moving writes nothing", u"#ev"_s, {Qt::Key_Down, Qt::Key_Escape}, u"#ev"_s},
      {"escape, then a new line", u"#ev"_s, {Qt::Key_Escape, Qt::Key_Return}, u"#ev\n"_s},
      {"a letter less", u"#evenx"_s, {Qt::Key_Backspace, Qt::Key_Return}, u"#evening"_s},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->setString({});
    type(c.typed);
    for (const Qt::Key key : c.keys) press(key);
    EXPECT_EQ(view->string(), c.expected);
    EXPECT_FALSE(list());
    EXPECT_TRUE(view->hasFocus());
  }
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(view->string(), u"#even"_s);
}

TEST_F(HashtagCompletionTest, EscapeLastsForTheHashtag) {
  type(u"#ev"_s);
  press(Qt::Key_Escape);
  type(u"e"_s);
  EXPECT_FALSE(list());
  type(u" #ev"_s);
  EXPECT_TRUE(list());
}

TEST_F(HashtagCompletionTest, TheListClosesWhenTheHashtagIsLeft) {
  const struct {
    const char* name;
    std::function<void()> leave;
  } cases[] = {
      {"caret", [this] { press(Qt::Key_Left); }}, {"selection", [this] { press(Qt::Key_A, Qt::ControlModifier); }},
      {"focus", [this] { view->clearFocus(); }},  {"new text", [this] { view->setString(u"other"_s); }},
      {"composing", [this] { compose(u"n"_s); }}, {"hiding", [this] { view->hide(); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->show();
    view->setString({});
    view->setFocus();
    type(u"#ev"_s);
    ASSERT_TRUE(list());
    c.leave();
    EXPECT_FALSE(list());
    compose({});
  }
}

TEST_F(HashtagCompletionTest, AClickTakesTheRowAndTheFocusStays) {
  type(u"see #e"_s);
  ASSERT_TRUE(list());
  const QPoint second(list()->width() / 2, 4 + 22 + 11);
  QTest::mouseMove(list(), second);
  EXPECT_EQ(list()->selectedRow(), 1);
  QTest::mouseClick(list(), Qt::LeftButton, {}, second);
  EXPECT_EQ(view->string(), u"see #Everest"_s);
  EXPECT_FALSE(list());
  EXPECT_TRUE(view->hasFocus());
  EXPECT_FALSE(QApplication::activePopupWidget());
}

TEST_F(HashtagCompletionTest, AScreenReaderFindsTheRowsAndTheChoice) {
  type(u"#e"_s);
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(list());
  ASSERT_TRUE(accessible);
  EXPECT_EQ(accessible->role(), QAccessible::List);
  EXPECT_EQ(accessible->text(QAccessible::Name), u"Hashtags"_s);
  EXPECT_TRUE(QAccessible::queryAccessibleInterface(view->window())->indexOfChild(accessible) >= 0);
  ASSERT_EQ(accessible->childCount(), 3);
  press(Qt::Key_Down);
  QAccessibleInterface* last = accessible->child(2);
  for (int row = 0; row < 3; ++row) {
    QAccessibleInterface* item = accessible->child(row);
    ASSERT_TRUE(item && item->isValid());
    EXPECT_EQ(item->role(), QAccessible::ListItem);
    EXPECT_EQ(item->text(QAccessible::Name), u'#' + rows()[row]);
    EXPECT_EQ(item->state().selected, row == 1);
    EXPECT_EQ(item->parent(), accessible);
    EXPECT_EQ(accessible->indexOfChild(item), row);
    EXPECT_EQ(accessible->childAt(item->rect().center().x(), item->rect().center().y()), item);
  }
  EXPECT_FALSE(accessible->child(3) || accessible->child(-1));
  // A row that a screen reader still holds when the list has become shorter.
  type(u"v"_s);
  type(u"en"_s);
  ASSERT_EQ(accessible->childCount(), 1);
  EXPECT_FALSE(last->isValid());
  EXPECT_EQ(last->text(QAccessible::Name), QString());
}

TEST_F(HashtagCompletionTest, TheListStaysInsideTheWindow) {
  QWidget window(nullptr, Qt::Tool | Qt::FramelessWindowHint);
  auto* layout = new QVBoxLayout(&window);
  view->setParent(&window);
  view->setFixedHeight(100);
  layout->addWidget(view.get());
  layout->addSpacing(30);
  window.resize(260, 150);
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  view->setFocus();
  for (const QString& before : {QString(), u"a\n\n\n\n"_s, u"a word or two, and so on "_s}) {
    view->setString({});
    type(before + u"#"_s);
    ASSERT_TRUE(list());
    EXPECT_TRUE(window.rect().contains(list()->geometry()));
    EXPECT_GE(list()->tags().size(), 2);
    const QRect caret(view->viewport()->mapTo(&window, view->cursorRect().topLeft()), view->cursorRect().size());
    EXPECT_FALSE(list()->geometry().intersects(caret));
  }
  view->setParent(nullptr);
}

TEST_F(HashtagCompletionTest, NoSourceMeansNoList) {
  view->setCompletionSource({});
  type(u"#e"_s);
  EXPECT_FALSE(list());
}

}  // namespace
}  // namespace quillo
