#include "JournalWindowFixture.h"
#include "foundation/FileContents.h"
#include "foundation/PropertyListSerialization.h"
#include "foundation/UserDirectories.h"
#include "journal/reading/ReadingView.h"
#include "journal/versions/VersionsBar.h"
#include "journal/versions/VersionsDialog.h"
#include "journal/views/SidebarList.h"
#include "qlcore/EntryFields.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QToolButton>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

const QString syncthing = u".sync-conflict-20260309-140559-ABCDEF2.plist"_s;
const QString dropbox = u" (laptop's conflicted copy 2026-03-09).plist"_s;

class VersionsTest : public JournalWindowTest {
 protected:
  QString path(const QString& name) { return package->entriesFolder() + u'/' + name; }
  PropertyListDictionary fieldsAt(const QString& file) {
    const auto bytes = contentsOfFile(file);
    const auto list = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
    return list ? list->dictionary() : PropertyListDictionary();
  }
  // The other machine's version of an entry, as a synchroniser leaves it.
  void writeCopy(const QString& identifier, const QString& ending, const QString& text) {
    PropertyListDictionary fields = fieldsAt(path(identifier + u".plist"_s));
    fields.insert(EntryFields::text, text);
    ASSERT_TRUE(writeFileInPlace(path(identifier + ending),
                                 *PropertyListSerialization::dataWithPropertyList(fields, PropertyListFormat::XML)));
  }
  QStringList trashedTexts() {
    const QString folder = UserDirectories::current().data + u"/Trash/files"_s;
    QStringList texts;
    for (const QString& name : QDir(folder).entryList(QDir::Files))
      texts << fieldsAt(folder + u'/' + name).value(EntryFields::text).string();
    texts.sort();
    return texts;
  }
  QStringList files() { return QDir(package->entriesFolder()).entryList(QDir::Files, QDir::Name); }

  VersionsBar& bar() { return *window->view().versions; }
  VersionsDialog* compare() {
    EXPECT_TRUE(runUntil([&] { return bar().isVisible(); }));
    QTest::mouseClick(bar().findChild<QPushButton*>(), Qt::LeftButton);
    VersionsDialog* dialog = nullptr;
    EXPECT_TRUE(runUntil([&] { return (dialog = window->findChild<VersionsDialog*>()) && dialog->isVisible(); }));
    return dialog;
  }
  static QPushButton& button(QWidget& in, const QString& name) { return *in.findChild<QPushButton*>(name); }
  static QPlainTextEdit& text(QWidget& in, const QString& name) { return *in.findChild<QPlainTextEdit*>(name); }
  static QStringList marked(QPlainTextEdit& in) {
    QStringList words;
    for (const auto& mark : in.extraSelections()) words << mark.cursor.selectedText();
    return words;
  }
  void waitUntilClosed(QWidget* dialog) {
    const QPointer<QWidget> shown(dialog);
    EXPECT_TRUE(runUntil([&] { return shown.isNull(); }));
  }
  QString sidebarText(const QString& beginning) {
    const auto found = window->view().sidebar->findItems(beginning, Qt::MatchStartsWith);
    return found.isEmpty() ? QString() : found.first()->text();
  }
};

}  // namespace

TEST_F(VersionsTest, AnEntryWithAnotherVersionIsMarkedAndFound) {
  write(u"alone"_s, 0);
  const QString identifier = write(u"We walked to the old mill in the rain."_s, 1);
  open();
  waitForRows(2);
  waitForText(u"alone"_s);
  EXPECT_FALSE(bar().isVisible());
  EXPECT_EQ(sidebarText(u"Several versions"_s), QString());

  writeCopy(identifier, syncthing, u"We walked to the new mill in the rain."_s);
  ASSERT_TRUE(runUntil([&] { return !sidebarText(u"Several versions"_s).isEmpty(); }));
  EXPECT_FALSE(bar().isVisible());
  const auto row = [&] {
    QAccessibleInterface* rows = QAccessible::queryAccessibleInterface(&list());
    return rows->child(1)->text(QAccessible::Description);
  };
  EXPECT_TRUE(runUntil([&] { return row().startsWith(u"2 versions"_s); })) << row().toStdString();

  savePicture(*window, u"versions-mark"_s);

  auto& sidebar = *window->view().sidebar;
  sidebar.setCurrentItem(sidebar.findItems(u"Several versions"_s, Qt::MatchStartsWith).first());
  QTest::keyClick(&sidebar, Qt::Key_Return);
  waitForText(u"We walked to the old mill in the rain."_s);
  EXPECT_TRUE(bar().isVisible());
  EXPECT_EQ(bar().findChild<QLabel*>()->text(), u"Two versions of this entry"_s);
  savePicture(*window, u"versions-window"_s);
}

TEST_F(VersionsTest, WhatIsDecidedIsDoneAndShown) {
  struct Case {
    const char* about;
    QString button;
    QString shown;  // in the window then
    qsizetype files;
    QStringList trashed;
    QString notice;
  };
  const QString ours = u"Rain all day. We walked to the old mill."_s;
  const QString theirs = u"Rain all day. We drove to the old mill."_s;
  const QList<Case> cases{{"this", u"keepThis"_s, ours, 1, {theirs}, u"Kept; the other version is in the Trash"_s},
                          {"that", u"keepThat"_s, theirs, 1, {ours}, u"Kept; the other version is in the Trash"_s},
                          {"both", u"keepAll"_s, ours, 2, {}, u"Both are entries now"_s},
                          {"merged",
                           u"primary"_s,
                           u"my own words"_s,
                           1,
                           {theirs, ours},
                           u"The entry has the merged text; the versions are in the Trash"_s}};
  open();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.about);
    QDir(UserDirectories::current().data + u"/Trash"_s).removeRecursively();
    const qsizetype before = files().size();
    const QString identifier = write(ours);
    writeCopy(identifier, syncthing, theirs);
    ASSERT_TRUE(window->showEntry(identifier));
    waitForText(ours);
    VersionsDialog* dialog = compare();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(text(*dialog, u"thisText"_s).toPlainText(), ours);
    EXPECT_EQ(text(*dialog, u"thatText"_s).toPlainText(), theirs);
    EXPECT_EQ(marked(text(*dialog, u"thisText"_s)), QStringList{u"walked"_s});
    EXPECT_EQ(marked(text(*dialog, u"thatText"_s)), QStringList{u"drove"_s});
    QPlainTextEdit& merged = text(*dialog, u"mergedText"_s);
    EXPECT_TRUE(merged.toPlainText().contains(ours) && merged.toPlainText().contains(theirs));
    if (c.button == u"primary") {
      merged.selectAll();
      QTest::keyClicks(&merged, c.shown);
    }
    button(*dialog, c.button).setFocus();
    QTest::keyClick(&button(*dialog, c.button), Qt::Key_Space);
    waitUntilClosed(dialog);
    waitForText(c.shown);
    EXPECT_EQ(textOnDisk(identifier), c.shown);
    EXPECT_EQ(files().size() - before, c.files);
    EXPECT_EQ(trashedTexts(), c.trashed);
    EXPECT_EQ(notices().text(), c.notice);
    EXPECT_TRUE(runUntil([&] { return !bar().isVisible(); }));
    waitForRows(static_cast<int>(files().size()));
  }
}

TEST_F(VersionsTest, OfThreeVersionsTheOtherIsChosen) {
  const QString identifier = write(u"first\n\nThe same in all.\n\nlast of ours"_s);
  writeCopy(identifier, dropbox, u"first\n\nThe same in all.\n\nlast of theirs"_s);
  writeCopy(identifier, syncthing, u"fourth\n\nThe same in all.\n\nlast of ours"_s);
  open();
  VersionsDialog* dialog = compare();
  ASSERT_TRUE(dialog);
  EXPECT_EQ(bar().findChild<QLabel*>()->text(), u"Three versions of this entry"_s);
  EXPECT_EQ(marked(text(*dialog, u"thatText"_s)), QStringList{u"theirs"_s});
  EXPECT_EQ(button(*dialog, u"keepAll"_s).text(), u"Keep &All as 3 Entries"_s);
  auto& chooser = *dialog->findChild<QComboBox*>();
  ASSERT_TRUE(chooser.isVisible());
  chooser.setFocus();
  QTest::keyClick(&chooser, Qt::Key_Down);
  EXPECT_EQ(marked(text(*dialog, u"thatText"_s)), QStringList{u"fourth"_s});
  savePicture(*dialog, u"versions-three"_s);
  QTest::mouseClick(&button(*dialog, u"keepThat"_s), Qt::LeftButton);
  waitUntilClosed(dialog);
  waitForText(u"fourth\n\nThe same in all.\n\nlast of ours"_s);
  EXPECT_EQ(trashedTexts(), (QStringList{u"first\n\nThe same in all.\n\nlast of ours"_s,
                                         u"first\n\nThe same in all.\n\nlast of theirs"_s}));
}

TEST_F(VersionsTest, ADamagedVersionCannotBeKept) {
  const QString identifier = write(u"whole"_s);
  ASSERT_TRUE(writeFileInPlace(path(identifier + syncthing), "half of an ent"));
  open();
  VersionsDialog* dialog = compare();
  ASSERT_TRUE(dialog);
  EXPECT_TRUE(text(*dialog, u"thatText"_s).toPlainText().startsWith(u"This version cannot be read."_s));
  EXPECT_FALSE(button(*dialog, u"keepThat"_s).isEnabled());
  EXPECT_FALSE(button(*dialog, u"keepAll"_s).isEnabled());
  EXPECT_TRUE(button(*dialog, u"keepThis"_s).isEnabled());
  QTest::keyClick(dialog, Qt::Key_Escape);
  waitUntilClosed(dialog);
  EXPECT_EQ(files().size(), 2);
}

TEST_F(VersionsTest, WhereTheOwnFileIsDamagedTheCopyIsReachedFromTheSidebar) {
  write(u"alone"_s);
  const QString identifier = write(u"whole"_s, 1);
  writeCopy(identifier, syncthing, u"whole"_s);
  ASSERT_TRUE(writeFileInPlace(path(identifier + u".plist"_s), "half of an ent"));
  open();
  ASSERT_TRUE(runUntil([&] { return !sidebarText(u"Several versions"_s).isEmpty(); }));
  auto& sidebar = *window->view().sidebar;
  QListWidgetItem* item = sidebar.findItems(u"Several versions"_s, Qt::MatchStartsWith).first();
  QTest::mouseClick(sidebar.viewport(), Qt::LeftButton, {}, sidebar.visualItemRect(item).center());
  VersionsDialog* dialog = nullptr;
  ASSERT_TRUE(runUntil([&] { return (dialog = window->findChild<VersionsDialog*>()) && dialog->isVisible(); }));
  EXPECT_FALSE(button(*dialog, u"keepThis"_s).isEnabled());
  QTest::mouseClick(&button(*dialog, u"keepThat"_s), Qt::LeftButton);
  waitUntilClosed(dialog);
  EXPECT_EQ(textOnDisk(identifier), u"whole"_s);
  waitForRows(2);
}

// What was looked at is not what is there any more: nothing is done, and the words that were typed stay.
TEST_F(VersionsTest, VersionsThatChangeMeanwhileAreLookedAtAgain) {
  const QString identifier = write(u"ours"_s);
  writeCopy(identifier, syncthing, u"theirs"_s);
  open();
  VersionsDialog* dialog = compare();
  ASSERT_TRUE(dialog);
  QPlainTextEdit& merged = text(*dialog, u"mergedText"_s);
  merged.selectAll();
  QTest::keyClicks(&merged, u"mine"_s);
  writeCopy(identifier, syncthing, u"theirs, later"_s);
  QTest::mouseClick(&button(*dialog, u"primary"_s), Qt::LeftButton);
  EXPECT_TRUE(runUntil([&] { return text(*dialog, u"thatText"_s).toPlainText() == u"theirs, later"; }));
  EXPECT_TRUE(dialog->findChild<QLabel*>(u"problem"_s)->isVisible());
  EXPECT_EQ(merged.toPlainText(), u"mine"_s);
  EXPECT_EQ(trashedTexts(), QStringList());
  EXPECT_EQ(textOnDisk(identifier), u"ours"_s);
  QTest::mouseClick(&button(*dialog, u"primary"_s), Qt::LeftButton);
  waitUntilClosed(dialog);
  waitForText(u"mine"_s);
  EXPECT_EQ(trashedTexts(), (QStringList{u"ours"_s, u"theirs, later"_s}));
}

TEST_F(VersionsTest, AnEntryGoesToTheTrashAndComesBackWithItsVersions) {
  const QString identifier = write(u"ours"_s);
  write(u"another"_s, 3);
  writeCopy(identifier, syncthing, u"theirs"_s);
  const QStringList all = files();
  open();
  waitForText(u"ours"_s);
  EXPECT_TRUE(runUntil([&] { return bar().isVisible(); }));
  QTest::keyClick(&list(), Qt::Key_Delete);
  waitForRows(1);
  EXPECT_EQ(files().size(), 1);
  EXPECT_EQ(trashedTexts(), (QStringList{u"ours"_s, u"theirs"_s}));
  EXPECT_TRUE(runUntil([&] { return !bar().isVisible(); }));
  QTest::mouseClick(notices().findChild<QToolButton*>(), Qt::LeftButton);
  waitForRows(2);
  EXPECT_EQ(files(), all);
  EXPECT_EQ(trashedTexts(), QStringList());
  EXPECT_TRUE(runUntil([&] { return bar().isVisible(); }));
}

TEST_F(VersionsTest, AnEditWinsOverADeletionElsewhereAndSaysSo) {
  const QString identifier = write(u"kept"_s);
  open();
  waitForText(u"kept"_s);
  QTest::keyClicks(&textView(), u"!"_s);
  ASSERT_TRUE(QFile::remove(path(identifier + u".plist"_s)));
  EXPECT_TRUE(editor().save());
  EXPECT_TRUE(textOnDisk(identifier).contains(u'!'));
  EXPECT_EQ(notices().text(), u"This entry was deleted elsewhere; what you wrote has brought it back."_s);
  QTest::mouseClick(notices().findChild<QToolButton*>(), Qt::LeftButton);
  waitForRows(0);
  EXPECT_EQ(files().size(), 0);
  EXPECT_EQ(trashedTexts().size(), 1);
}

// While it is written here, a synchroniser puts the other machine's version in its place and ours beside it.
TEST_F(VersionsTest, AnEntryBeingEditedKeepsWhatComesFromElsewhere) {
  const QString identifier = write(u"Morning.\n\nEvening."_s);
  open();
  waitForText(u"Morning.\n\nEvening."_s);
  textView().moveCursor(QTextCursor::End);
  QTest::keyClicks(&textView(), u" Stars."_s);
  writeCopy(identifier, u".plist"_s, u"Morning with fog.\n\nEvening."_s);
  writeCopy(identifier, syncthing, u"Morning.\n\nEvening."_s);
  EXPECT_TRUE(editor().save());
  EXPECT_EQ(textOnDisk(identifier), u"Morning with fog.\n\nEvening. Stars."_s);
  waitForText(u"Morning with fog.\n\nEvening. Stars."_s);
  EXPECT_TRUE(runUntil([&] { return bar().isVisible(); }));
}

TEST_F(VersionsTest, WhatIsReadFollowsTheJournal) {
  const QString identifier = write(u"before"_s);
  open();
  waitForText(u"before"_s);
  window->commands().read->trigger();
  ASSERT_EQ(window->view().paper->currentWidget(), window->view().reading);
  writeCopy(identifier, u".plist"_s, u"after"_s);
  EXPECT_TRUE(runUntil([&] { return window->view().reading->content().text == u"after"; }));
}

TEST_F(VersionsTest, Pictures) {
  if (qEnvironmentVariableIsEmpty("QUILLO_PICTURES")) GTEST_SKIP() << "only for people";
  const QString ours =
      u"The train was late again, so we walked along the river and had coffee at the old mill.\n\nLena told of her "
      "summer in Norway, of the boat and the long light. I want to write her more often.\n\nIn the evening rain."_s;
  const QString theirs =
      u"The train was an hour late, so we walked along the river and had tea at the old mill.\n\nLena told of her "
      "summer in Norway, of the boat and the long light. I want to write her more often.\n\nIn the evening rain, and "
      "a letter from home."_s;
  const QString identifier = write(ours, 0, {u"lena"_s, u"river"_s});
  write(u"Rain in the morning, and a long letter."_s, 1);
  PropertyListDictionary fields = fieldsAt(path(identifier + u".plist"_s));
  fields.insert(EntryFields::text, theirs);
  fields.insert(EntryFields::tags, PropertyListArray{u"lena"_s});
  fields.insert(EntryFields::modificationDate, Date::since1970(Date::now().timeIntervalSince1970() - 7200));
  ASSERT_TRUE(writeFileInPlace(path(identifier + dropbox),
                               *PropertyListSerialization::dataWithPropertyList(fields, PropertyListFormat::XML)));
  open();
  VersionsDialog* dialog = compare();
  ASSERT_TRUE(dialog);
  savePicture(*dialog, u"versions"_s);
  savePicture(*window, u"versions-bar"_s);
}
