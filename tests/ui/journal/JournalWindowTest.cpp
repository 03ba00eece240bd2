#include "JournalWindowFixture.h"
#include "journal/views/FoldingColumns.h"
#include "journal/views/MonthView.h"
#include "journal/views/SidebarList.h"
#include "journal/views/StatePage.h"

#include <QApplication>
#include <QToolButton>

namespace quillo {
namespace {

TEST_F(JournalWindowTest, ShowsTheNewestEntryAndFindsOthers) {
  const QString old = write(u"Swam in the river #summer"_s, 40, {u"summer"_s});
  write(u"Rain all day"_s, 3);
  write(u"Home late"_s);
  open();
  waitForRows(3);
  waitForText(u"Home late"_s);
  EXPECT_EQ(list().rows().days().size(), 3);

  window->commands().find->trigger();
  QTest::keyClicks(window->view().search->focusWidget(), u"riv"_s);
  waitForRows(1);
  QTest::keyClick(window->view().search->focusWidget(), Qt::Key_Return);
  waitForText(u"Swam in the river #summer"_s);
  EXPECT_EQ(list().currentIdentifier(), old);
  // What makes no sense is said, and what was found stays.
  window->view().search->setWords(u"on:nonsense"_s);
  handlePendingEvents();
  EXPECT_EQ(list().rows().rowCount(), 1);

  window->view().search->setWords({});
  auto& sidebar = *window->view().sidebar;
  const auto clickedItem = [&](const QString& name) {
    QListWidgetItem* item = sidebar.findItems(name, Qt::MatchExactly).value(0);
    QTest::mouseClick(sidebar.viewport(), Qt::LeftButton, {}, sidebar.visualItemRect(item).center());
    return sidebar.selectedItems().value(0)->text();
  };
  ASSERT_TRUE(runUntil([&] { return sidebar.findItems(u"summer"_s, Qt::MatchExactly).size() == 1; }));
  EXPECT_EQ(clickedItem(u"summer"_s), u"summer"_s);
  waitForRows(1);

  window->commands().allEntries->trigger();
  waitForRows(3);
  EXPECT_EQ(sidebar.selectedItems().value(0)->text(), u"All entries"_s);
  window->commands().onThisDay->trigger();
  EXPECT_TRUE(runUntil([&] { return window->view().listStack->currentWidget() == window->view().listState; }));
}

TEST_F(JournalWindowTest, KeepsTheKeyboardWhereTheListIs) {
  const QString only = write(u"The only one"_s);
  open();
  waitForText(u"The only one"_s);
  EXPECT_EQ(window->focusWidget(), &list());
  // Also while the window does not have the keyboard itself, as when it begins.
  window->hide();
  ASSERT_TRUE(QFile::remove(package->entriesFolder() + u'/' + QLJournalEntryFile::fileName(only)));
  EXPECT_TRUE(runUntil([&] { return window->view().listStack->currentWidget() == window->view().listState; }));
  EXPECT_TRUE(window->view().listState->isAncestorOf(window->focusWidget()));
  write(u"Another"_s);
  waitForRows(1);
  EXPECT_EQ(window->focusWidget(), &list());
  window->show();
  // Not from where somebody is typing.
  window->commands().find->trigger();
  QTest::keyClicks(window->view().search->focusWidget(), u"nothing"_s);
  EXPECT_TRUE(runUntil([&] { return window->view().listStack->currentWidget() == window->view().listState; }));
  EXPECT_TRUE(window->view().search->isAncestorOf(window->focusWidget()));
}

TEST_F(JournalWindowTest, SavesByItselfAndUndoesAcrossSaves) {
  const QString identifier = write(u"A mistke here"_s);
  open();
  waitForText(u"A mistke here"_s);
  textView().setFocus();
  textView().moveCursor(QTextCursor::End);
  QTest::keyClicks(&textView(), u" and there"_s);
  EXPECT_TRUE(runUntil([&] { return textOnDisk(identifier) == u"A mistke here and there"_s; }));
  QTest::keyClicks(&textView(), u"!"_s);
  EXPECT_TRUE(editor().save());
  window->commands().undo->trigger();
  window->commands().undo->trigger();
  EXPECT_TRUE(runUntil([&] { return textOnDisk(identifier) == u"A mistke here"_s; })) << editor().text().toStdString();
}

TEST_F(JournalWindowTest, ANewEntryIsOneFileAndAnEmptyOneNone) {
  open();
  EXPECT_TRUE(runUntil([&] { return window->view().listStack->currentWidget() == window->view().listState; }));
  window->commands().newEntry->trigger();
  QTest::keyClicks(&textView(), u"First words #start"_s);
  window->saveText();
  waitForRows(1);
  ASSERT_EQ(entries().size(), 1);
  EXPECT_EQ(entries().first()->tags(), QStringList{u"start"_s});
  QTest::keyClicks(&textView(), u", more"_s);
  window->saveText();
  window->commands().newEntry->trigger();
  window->commands().newEntry->trigger();
  ASSERT_EQ(entries().size(), 1);
  EXPECT_EQ(entries().first()->string(), u"First words #start, more"_s);
}

TEST_F(JournalWindowTest, DeletesToTheTrashAndTakesItBack) {
  const QString older = write(u"older"_s, 1);
  const QString newer = write(u"newer"_s);
  open();
  waitForText(u"newer"_s);
  list().setFocus();
  QTest::keyClick(&list(), Qt::Key_Delete);
  waitForRows(1);
  waitForText(u"older"_s);
  EXPECT_EQ(textOnDisk(newer), u"(none)"_s);
  EXPECT_TRUE(notices().isVisible());
  notices().findChild<QToolButton*>()->click();
  waitForRows(2);
  EXPECT_EQ(textOnDisk(newer), u"newer"_s);
  EXPECT_EQ(list().rows().rowCount(), 2);

  // An entry that was emptied goes there too when it is left, with the text that it had.
  window->showEntry(older);
  textView().selectAll();
  QTest::keyClick(&textView(), Qt::Key_Backspace);
  window->saveText();
  EXPECT_EQ(textOnDisk(older), u"older"_s);
  window->showEntry(newer);
  waitForRows(1);
  window->commands().undo->trigger();
  waitForRows(2);
  EXPECT_EQ(textOnDisk(older), u"older"_s);
}

TEST_F(JournalWindowTest, ShowsWhatOtherProgramsChangeAndKeepsBothWhereTheyMeet) {
  const QString identifier = write(u"The river was cold."_s);
  open();
  waitForText(u"The river was cold."_s);
  const auto change = [&](const QString& text) {
    const auto theirs = QLJournalEntryFile::entryWithUUID(*package, identifier, nullptr);
    theirs->setString(text);
    EXPECT_TRUE(theirs->saveToJournal(package.get(), nullptr));
  };
  change(u"The old river was cold."_s);
  waitForText(u"The old river was cold."_s);
  write(u"Another"_s, 1);
  waitForRows(2);

  textView().moveCursor(QTextCursor::End);
  QTest::keyClicks(&textView(), u" Home."_s);
  change(u"The old river was very cold."_s);
  EXPECT_TRUE(editor().save());
  EXPECT_EQ(editor().text(), u"The old river was very cold. Home."_s);
  EXPECT_EQ(textOnDisk(identifier), editor().text());
  EXPECT_TRUE(textView().textCursor().atEnd());

  textView().selectAll();
  QTest::keyClicks(&textView(), u"Mine"_s);
  change(u"Theirs"_s);
  EXPECT_TRUE(editor().save());
  EXPECT_EQ(textOnDisk(identifier), u"Theirs\nMine"_s);
  auto* keepMine = notices().findChild<QToolButton*>();
  ASSERT_TRUE(keepMine);
  keepMine->click();
  EXPECT_TRUE(editor().save());
  EXPECT_EQ(textOnDisk(identifier), u"Mine"_s);
}

TEST_F(JournalWindowTest, TextOutlivesAJournalThatGoesAway) {
  const QString identifier = write(u"before"_s);
  open();
  waitForText(u"before"_s);
  textView().moveCursor(QTextCursor::End);
  QTest::keyClicks(&textView(), u" and after"_s);
  const QString path = journalURL.toLocalFile();
  ASSERT_TRUE(QDir().rename(path, path + u".away"_s));
  EXPECT_FALSE(editor().save());
  EXPECT_TRUE(notices().isVisible());
  EXPECT_EQ(editor().text(), u"before and after"_s);
  library.reopen();
  EXPECT_EQ(window->view().paper->currentWidget(), window->view().paperState);
  ASSERT_TRUE(QDir().rename(path + u".away"_s, path));
  library.reopen();
  EXPECT_EQ(editor().text(), u"before and after"_s);
  // By itself, and what was said of it goes.
  EXPECT_EQ(textOnDisk(identifier), u"before and after"_s);
  EXPECT_FALSE(notices().isVisible());
}

TEST_F(JournalWindowTest, DeletesNothingThatItCannotSaveAndNothingByTheKeyOfAWord) {
  const QString identifier = write(u"two words"_s);
  open();
  waitForText(u"two words"_s);
  textView().setFocus();
  textView().moveCursor(QTextCursor::End);
  QTest::keyClick(&textView(), Qt::Key_Backspace, Qt::ControlModifier);
  EXPECT_EQ(editor().text(), u"two "_s);
  EXPECT_EQ(textOnDisk(identifier), u"two words"_s);

  // Its folder is no folder for a while.
  const QString folder = package->entriesFolder();
  ASSERT_TRUE(QDir().rename(folder, folder + u".away"_s));
  QFile inTheWay(folder);
  ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
  window->commands().moveToTrash->trigger();
  EXPECT_EQ(editor().text(), u"two "_s);
  ASSERT_TRUE(inTheWay.remove());
  ASSERT_TRUE(QDir().rename(folder + u".away"_s, folder));
  EXPECT_TRUE(editor().save());
  EXPECT_EQ(textOnDisk(identifier), u"two "_s);
}

TEST_F(JournalWindowTest, AnotherJournalBringsItsOwnEntries) {
  write(u"here"_s);
  open();
  waitForText(u"here"_s);
  useJournal(u"Other.quillojournal"_s);
  package = QLJournalPackageFile::openPackage(journalURL, /*create=*/false, nullptr);
  const QString there = write(u"there"_s);
  library.reopen();
  waitForText(u"there"_s);
  EXPECT_FALSE(notices().isVisible());
  EXPECT_EQ(list().currentIdentifier(), there);
  EXPECT_EQ(entries().size(), 1);
}

TEST_F(JournalWindowTest, FoldsToWhatThereIsRoomFor) {
  write(u"one"_s);
  open();
  waitForText(u"one"_s);
  FoldingColumns& columns = *window->view().columns;
  using Column = FoldingColumns::Column;
  window->resize(1000, 600);
  EXPECT_TRUE(columns.shows(Column::Sidebar) && columns.shows(Column::List) && columns.shows(Column::Paper));
  window->resize(650, 600);
  EXPECT_FALSE(columns.shows(Column::Sidebar));
  window->view().sidebarButton->click();
  EXPECT_TRUE(columns.shows(Column::Sidebar) && columns.shows(Column::Paper));
  window->resize(400, 600);
  EXPECT_TRUE(columns.shows(Column::Sidebar));
  columns.bringToFront(Column::List);
  QTest::keyClick(&list(), Qt::Key_Return);
  EXPECT_TRUE(columns.shows(Column::Paper) && !columns.shows(Column::List));
  window->view().backButton->click();
  EXPECT_TRUE(columns.shows(Column::List));
  window->resize(1000, 600);
  EXPECT_TRUE(columns.shows(Column::Sidebar) && columns.shows(Column::List) && columns.shows(Column::Paper));
}

TEST_F(JournalWindowTest, FollowsTheDesktopIntoTheDark) {
  write(u"One #evening"_s, 0, {u"evening"_s});
  open();
  waitForText(u"One #evening"_s);
  const auto ground = [this] { return window->grab().toImage().pixelColor(2, window->height() - 2); };
  EXPECT_EQ(ground(), QColor(0xe9e6de));
  const QPalette before = QApplication::palette();
  QPalette dark = before;
  for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button}) dark.setColor(role, QColor(0x202326));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    dark.setColor(role, QColor(0xeff0f1));
  QApplication::setPalette(dark);
  handlePendingEvents();
  EXPECT_EQ(ground(), QColor(0x1f2226));
  window->commands().details->trigger();
  handlePendingEvents();
  if (const QString folder = qEnvironmentVariable("QUILLO_PICTURES"); !folder.isEmpty())
    window->grab().save(folder + u"/journal-dark.png"_s);
  QApplication::setPalette(before);
}

TEST_F(JournalWindowTest, TheMonthLeadsToADay) {
  const QDate today = QDate::currentDate();
  write(u"today"_s);
  write(u"a month ago"_s, 35);
  open();
  waitForText(u"today"_s);
  MonthView& month = *window->view().month;
  EXPECT_EQ(month.month(), QDate(today.year(), today.month(), 1));
  month.setFocus();
  for (int week = 0; week < 5; ++week) QTest::keyClick(&month, Qt::Key_Up);
  QTest::keyClick(&month, Qt::Key_Return);
  waitForText(u"a month ago"_s);
}

}  // namespace
}  // namespace quillo
