#include "FormPicture.h"
#include "PreferencesFixture.h"
#include "exchange/backup/BackupRecord.h"
#include "preferences/controls/FormRow.h"
#include "tests/support/EventLoop.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

namespace quillo {
namespace {

using Page = PreferencesWindow::Page;

class BackupPageTest : public PreferencesTest {
 protected:
  FormRow* rowOf(const QString& name) {
    for (QWidget* each = field(name); each; each = each->parentWidget())
      if (auto* row = qobject_cast<FormRow*>(each)) return row;
    return nullptr;
  }
  void chooseIn(const QString& panelName, const QString& path) {
    auto* panel = window->findChild<QFileDialog*>(panelName);
    ASSERT_NE(panel, nullptr) << panelName.toStdString();
    panel->findChild<QLineEdit*>()->setText(path);
    QTest::keyClick(panel, Qt::Key_Return);
  }
  void backUpNow() {
    QTest::mouseClick(field(u"makeBackup"_s), Qt::LeftButton);
    ASSERT_TRUE(runUntil([&] { return field(u"makeBackup"_s)->isEnabled(); }));
    ASSERT_TRUE(runUntil([&] { return field<QComboBox>(u"archives"_s)->currentData().isValid(); }));
  }
};

TEST_F(BackupPageTest, TheSessionIsToldOfEveryChange) {
  open(Page::Backup);
  QTest::mouseClick(field(Key::autoBackupEnabled), Qt::LeftButton);
  ASSERT_EQ(commandSchedule.enabled.size(), 1);
  const ScheduledCommand command = commandSchedule.enabled.last();
  EXPECT_EQ(command.every, ScheduledCommand::Every::Day);
  EXPECT_EQ(command.program, u"/usr/bin/quilloctl"_s);
  EXPECT_EQ(command.arguments, (QStringList{u"backup"_s, u"make"_s, u"--scheduled"_s}));
  EXPECT_TRUE(rowOf(Key::autoBackupEnabled)->note().startsWith(u"Next: tomorrow"_s));

  setElsewhere(Key::autoBackupFrequency, 32, Notice::settingsDidChange);
  EXPECT_EQ(commandSchedule.enabled.last().every, ScheduledCommand::Every::Hour);
  EXPECT_EQ(field<QComboBox>(Key::autoBackupFrequency)->currentText(), u"Every hour"_s);
  // Counted from the last one, and so asked for more often.
  setElsewhere(Key::autoBackupFrequency, 256, Notice::settingsDidChange);
  setElsewhere(Key::autoBackupInterval, 2, Notice::settingsDidChange);
  EXPECT_EQ(commandSchedule.enabled.last().every, ScheduledCommand::Every::Day);
  EXPECT_EQ(field<QComboBox>(Key::autoBackupFrequency)->currentText(), u"Every 2 weeks"_s);

  QTest::mouseClick(field(Key::autoBackupEnabled), Qt::LeftButton);
  EXPECT_FALSE(commandSchedule.isOn);
  commandSchedule.outcome = CommandSchedule::Outcome::Written;
  QTest::mouseClick(field(Key::autoBackupEnabled), Qt::LeftButton);
  EXPECT_TRUE(runUntil(
      [&] { return rowOf(Key::autoBackupEnabled)->error().contains(u"nobody answers; this line in your crontab"_s); }));
}

TEST_F(BackupPageTest, OneIsMadeAndBecomesANewJournal) {
  open(Page::Backup);
  EXPECT_EQ(field<QComboBox>(u"archives"_s)->currentText(), u"There is no backup yet"_s);
  EXPECT_FALSE(field(u"restoreBackup"_s)->isEnabled());
  backUpNow();
  EXPECT_EQ(rowOf(u"makeBackup"_s)->error(), QString());
  EXPECT_TRUE(rowOf(u"makeBackup"_s)->note().startsWith(u"Made: 0 entries"_s));
  EXPECT_TRUE(field<QComboBox>(u"archives"_s)->currentText().startsWith(u"Today "_s));

  QTest::mouseClick(field(u"restoreBackup"_s), Qt::LeftButton);
  chooseIn(u"restorePanel"_s, home.path(u"Restored"_s));
  ASSERT_TRUE(runUntil([&] { return field(u"useRestored"_s)->isVisible(); }));
  EXPECT_EQ(config.configuredJournalFileURL(), journalURL);
  QTest::mouseClick(field(u"useRestored"_s), Qt::LeftButton);
  EXPECT_EQ(config.configuredJournalFileURL()->toLocalFile(), home.path(u"Restored.quillojournal"_s));
  EXPECT_TRUE(distributed.posted.contains(QString(Notice::journalPackagePathDidChange)));

  // Never over one that is there.
  QTest::mouseClick(field(u"restoreBackup"_s), Qt::LeftButton);
  chooseIn(u"restorePanel"_s, home.path(u"Restored"_s));
  EXPECT_TRUE(runUntil([&] { return !rowOf(u"restoreBackup"_s)->error().isEmpty(); }));
  EXPECT_TRUE(rowOf(u"restoreBackup"_s)->error().contains(u"there is something already"_s));
}

TEST_F(BackupPageTest, TellsOfOneThatFailed) {
  BackupRecord::recordFailure(u"/media/stick: No such file or directory"_s, UserDirectories::current());
  open(Page::Backup);
  EXPECT_TRUE(rowOf(u"makeBackup"_s)->error().contains(u"/media/stick"_s));
  backUpNow();
  EXPECT_EQ(rowOf(u"makeBackup"_s)->error(), QString());
}

TEST_F(BackupPageTest, TheFolderCanBeChosenAndIsMissedWhenItGoes) {
  ASSERT_TRUE(QDir().mkpath(home.path(u"Stick"_s)));
  open(Page::Backup);
  QTest::mouseClick(field(u"chooseBackupFolder"_s), Qt::LeftButton);
  chooseIn(u"backupFolderPanel"_s, home.path(u"Stick"_s));
  EXPECT_TRUE(runUntil([&] { return config.backupRootURL().toLocalFile() == home.path(u"Stick"_s); }));
  ASSERT_TRUE(QDir().rmdir(home.path(u"Stick"_s)));
  QTest::mouseClick(field(u"makeBackup"_s), Qt::LeftButton);
  EXPECT_TRUE(rowOf(u"makeBackup"_s)->error().contains(u"Stick"_s));
  EXPECT_TRUE(QDir(config.defaultBackupDirectoryURL().toLocalFile()).isEmpty()) << "not made elsewhere instead";
}

TEST_F(BackupPageTest, Pictures) {
  if (qEnvironmentVariableIsEmpty("QUILLO_PICTURES")) GTEST_SKIP() << "only for people";
  list().setBoolForKey(true, Key::autoBackupEnabled);
  commandSchedule.isOn = true;
  for (const bool isDark : {false, true}) {
    QApplication::setPalette(desktopPalette(isDark));
    open(Page::Backup);
    backUpNow();
    savePicture(*window, u"BackupMade-%1"_s.arg(isDark ? u"dark"_s : u"light"_s));
    BackupRecord::recordFailure(u"/media/stick/Backups: No such file or directory"_s, UserDirectories::current());
    window->close();
    open(Page::Backup);
    field(u"makeBackup"_s)->hide();
    field(u"stopBackup"_s)->show();
    field<QProgressBar>({})->show();
    field<QProgressBar>({})->setValue(600);
    QTest::qWait(50);
    savePicture(*window, u"BackupFailed-%1"_s.arg(isDark ? u"dark"_s : u"light"_s));
    field(u"makeBackup"_s)->show();
    field(u"stopBackup"_s)->hide();
    field<QProgressBar>({})->hide();
  }
  QApplication::setPalette(QPalette());
}

}  // namespace
}  // namespace quillo
