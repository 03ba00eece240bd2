#include "JournalWindowFixture.h"
#include "foundation/UserDirectories.h"
#include "journal/exchange/ExportDialog.h"
#include "journal/exchange/ImportDialog.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QToolButton>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

QString contentsOf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : u"(none)"_s;
}

void writeFile(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(bytes);
}

class ExchangeTest : public JournalWindowTest {
 protected:
  // By the key of the command; null where no dialog came.
  template <typename Dialog>
  Dialog* openDialog(Qt::Key key) {
    window->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QTest::keyClick(window.get(), key, Qt::ControlModifier | Qt::ShiftModifier);
    auto* dialog = window->findChild<Dialog*>();
    EXPECT_TRUE(dialog && QTest::qWaitForWindowExposed(dialog));
    return dialog;
  }
  template <typename Part>
  static Part& partOf(QWidget& dialog, const QString& name) {
    return *dialog.findChild<Part*>(name);
  }
  static QPushButton& primary(QWidget& dialog) { return partOf<QPushButton>(dialog, u"primary"_s); }
  static void choose(QWidget& dialog, const QString& box, const QString& what) {
    auto& choice = partOf<QComboBox>(dialog, box);
    choice.setFocus();
    QTest::keyClicks(&choice, what);
    EXPECT_TRUE(choice.currentText().startsWith(what)) << choice.currentText().toStdString();
  }
  static void type(QWidget& dialog, const QString& field, const QString& text) {
    auto& line = partOf<QLineEdit>(dialog, field);
    line.selectAll();
    QTest::keyClicks(&line, text);
  }
  void waitForNotice(const QString& beginning) {
    EXPECT_TRUE(runUntil([&] { return notices().text().startsWith(beginning); })) << notices().text().toStdString();
  }
  void waitUntilClosed(QWidget* dialog) {
    const QPointer<QWidget> shown(dialog);
    EXPECT_TRUE(runUntil([&] { return shown.isNull(); }));
  }
  QString inHome(const QString& name) { return UserDirectories::current().home + u'/' + name; }
};

TEST_F(ExchangeTest, ExportsWhatTheSearchShows) {
  write(u"One walk"_s, 1);
  write(u"Another walk"_s, 2);
  write(u"A letter"_s, 3);
  open();
  waitForRows(3);
  QTest::keyClicks(window->view().search->findChild<QLineEdit*>(), u"walk"_s);
  waitForRows(2);
  auto* dialog = openDialog<ExportDialog>(Qt::Key_E);
  EXPECT_EQ(partOf<QComboBox>(*dialog, u"part"_s).currentText(), u"What the search shows: 2 entries"_s);
  choose(*dialog, u"format"_s, u"Plain"_s);
  EXPECT_TRUE(partOf<QLineEdit>(*dialog, u"path"_s).text().endsWith(u".txt"));
  type(*dialog, u"path"_s, u"~/out.txt"_s);
  savePicture(*dialog, u"export"_s);
  QTest::keyClick(dialog, Qt::Key_Return);
  waitUntilClosed(dialog);
  waitForNotice(u"2 entries exported to ~/out.txt"_s);
  const QString text = contentsOf(inHome(u"out.txt"_s));
  EXPECT_LT(text.indexOf(u"Another walk"), text.indexOf(u"One walk"));
  EXPECT_FALSE(text.contains(u"A letter"));
}

TEST_F(ExchangeTest, ReplacesAFileOnlyWhereThatIsTicked) {
  write(u"One"_s);
  open();
  waitForRows(1);
  writeFile(inHome(u"there.html"_s), "kept");
  auto* dialog = openDialog<ExportDialog>(Qt::Key_E);
  choose(*dialog, u"format"_s, u"Web"_s);
  type(*dialog, u"path"_s, u"~/there.html"_s);
  EXPECT_FALSE(primary(*dialog).isEnabled());
  savePicture(*dialog, u"export-replace"_s);
  QTest::keyClick(dialog, Qt::Key_Return);
  EXPECT_EQ(contentsOf(inHome(u"there.html"_s)), u"kept"_s);
  auto& replace = partOf<QAbstractButton>(*dialog, u"replace"_s);
  replace.setFocus();
  QTest::keyClick(&replace, Qt::Key_Space);
  QTest::mouseClick(&primary(*dialog), Qt::LeftButton);
  waitUntilClosed(dialog);
  EXPECT_TRUE(contentsOf(inHome(u"there.html"_s)).contains(u"<article"));
}

TEST_F(ExchangeTest, SaysWhereNothingCanBeWrittenBeforeItIsTried) {
  open();
  auto* dialog = openDialog<ExportDialog>(Qt::Key_E);
  QDir(inHome({})).mkdir(u"folder"_s);
  for (const QString& path : {u"~/nowhere/a.md"_s, u"~/folder"_s, u" "_s}) {
    type(*dialog, u"path"_s, path);
    EXPECT_FALSE(primary(*dialog).isEnabled()) << path.toStdString();
  }
  type(*dialog, u"path"_s, u"~/free.md"_s);
  EXPECT_TRUE(primary(*dialog).isEnabled());
}

TEST_F(ExchangeTest, MakesAPdfByItsKey) {
  write(u"One"_s);
  open();
  waitForRows(1);
  auto* dialog = openDialog<ExportDialog>(Qt::Key_P);
  type(*dialog, u"path"_s, u"~/out.pdf"_s);
  QTest::mouseClick(&primary(*dialog), Qt::LeftButton);
  waitUntilClosed(dialog);
  EXPECT_TRUE(contentsOf(inHome(u"out.pdf"_s)).startsWith(u"%PDF-"));
}

TEST_F(ExchangeTest, LeavesNothingBehindWhereItIsCancelled) {
  for (int i = 0; i < 300; ++i) write(u"Words of entry %1\n\n"_s.arg(i) + u"and more of them "_s.repeated(40), i);
  open();
  waitForRows(300);
  auto* dialog = openDialog<ExportDialog>(Qt::Key_P);
  type(*dialog, u"path"_s, u"~/out.pdf"_s);
  QTest::mouseClick(&primary(*dialog), Qt::LeftButton);
  savePicture(*dialog, u"export-progress"_s);
  QTest::keyClick(dialog, Qt::Key_Escape);
  EXPECT_TRUE(runUntil([&] { return primary(*dialog).isEnabled(); }));
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_EQ(partOf<QLabel>(*dialog, u"problem"_s).text(), u"Cancelled; nothing was exported."_s);
  EXPECT_EQ(contentsOf(inHome(u"out.pdf"_s)), u"(none)"_s);
}

TEST_F(ExchangeTest, ShowsWhatWouldComeAndImportsIt) {
  write(u"Before"_s);
  open();
  waitForRows(1);
  QDir(inHome({})).mkdir(u"notes"_s);
  writeFile(inHome(u"notes/2019-03-01 0900 a.md"_s), "First #walk");
  writeFile(inHome(u"notes/2024-06-30.md"_s), "Last");
  writeFile(inHome(u"notes/2020-01-01.md"_s), "not \xff text");
  auto* dialog = openDialog<ImportDialog>(Qt::Key_I);
  QTest::mouseClick(&partOf<QPushButton>(*dialog, u"chooseSource"_s), Qt::LeftButton);
  panel.choose(inHome(u"notes"_s));
  auto& problems = partOf<QListWidget>(*dialog, u"problems"_s);
  EXPECT_TRUE(runUntil([&] { return problems.isVisible(); }));
  savePicture(*dialog, u"import"_s);
  EXPECT_EQ(partOf<QLabel>(*dialog, u"summaryText"_s).text(),
            u"2 entries from 1 March 2019 to 30 June 2024, all of them new."_s);
  EXPECT_TRUE(problems.item(0)->text().startsWith(u"2020-01-01.md")) << problems.item(0)->text().toStdString();
  EXPECT_FALSE(primary(*dialog).isEnabled());
  QTest::keyClick(&partOf<QWidget>(*dialog, u"goesOn"_s), Qt::Key_Space);
  EXPECT_EQ(primary(*dialog).text(), u"Import 2 entries"_s);
  QTest::mouseClick(&primary(*dialog), Qt::LeftButton);
  waitUntilClosed(dialog);
  waitForNotice(u"2 entries imported"_s);
  waitForRows(3);
  // Also after the program was ended and begun anew.
  window.reset();
  open();
  window->commands().undoImport->trigger();
  waitForNotice(u"2 entries imported on "_s);
  QTest::mouseClick(notices().findChildren<QToolButton*>().constLast(), Qt::LeftButton);
  waitForNotice(u"2 entries taken back"_s);
  waitForRows(1);
}

TEST_F(ExchangeTest, ReplacesOnlyWhatDiffersAndOnlyWhereThatIsTicked) {
  const QString uuid = write(u"Mine"_s);
  const QByteArray front = "---\nid: \"" + uuid.toUtf8() + "\"\ndate: 2020-05-05T10:00:00Z\n---\n\nTheirs\n";
  writeFile(inHome(u"one.md"_s), front);
  open();
  waitForRows(1);
  for (const bool replaces : {false, true}) {
    auto* dialog = openDialog<ImportDialog>(Qt::Key_I);
    type(*dialog, u"source"_s, u"~/one.md"_s);
    auto& tick = partOf<QAbstractButton>(*dialog, u"replaces"_s);
    EXPECT_TRUE(runUntil([&] { return tick.isVisible(); }));
    if (replaces) QTest::keyClick(&tick, Qt::Key_Space);
    EXPECT_EQ(primary(*dialog).isEnabled(), replaces);
    if (replaces)
      QTest::mouseClick(&primary(*dialog), Qt::LeftButton);
    else
      QTest::keyClick(dialog, Qt::Key_Escape);
    waitUntilClosed(dialog);
    EXPECT_EQ(textOnDisk(uuid), replaces ? u"Theirs"_s : u"Mine"_s);
  }
}

}  // namespace
