// Interactive deletion, with the user's answers from a list and real files.

#include "entry/session/Alerts.h"
#include "entry/session/QLJournalIndexOSXAdditions.h"
#include "foundation/FileManager.h"
#include "foundation/UserDirectories.h"
#include "qlcore/QLJournalPackageFile.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <unistd.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using namespace QLJournalIndexOSXAdditions;

constexpr auto wishes = "Are you sure you wish to move this entry to the Trash?";
constexpr auto unable = "Unable to move to Trash";

class AnsweringAlerts : public Alerts {
 public:
  void beginSheet(const Alert&, QWidget*, std::function<void(int)>) override { ADD_FAILURE(); }
  int runAlert(const Alert& alert, QWidget* window) override {
    seen << alert;
    parent = window;
    if (const auto meanwhile = std::exchange(whileShown, {})) meanwhile();
    return answers.isEmpty() ? -1 : answers.takeFirst();
  }
  QList<int> answers;
  QList<Alert> seen;
  QWidget* parent{nullptr};
  std::function<void()> whileShown;
};

// Permissions mean nothing to the superuser, so the test takes another user's identity.
class DeletionTest : public testing::Test {
 protected:
  DeletionTest() {
    if (::geteuid() == 0) {
      constexpr uid_t nobody = 65534;
      EXPECT_EQ(::chown(QFile::encodeName(home.path()).constData(), nobody, nobody), 0);
      EXPECT_EQ(::seteuid(nobody), 0);
    }
    Error error;
    package = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(home.path(u"J.quillojournal"_s)), true, &error);
    EXPECT_TRUE(package) << error.description().toStdString();
    const auto entry = QLJournalEntryFile::newEntry();
    entry->setString(u"to be deleted"_s);
    EXPECT_TRUE(entry->saveToJournal(package.get(), nullptr));
    file = entry->fileURLForEntryProperties()->toLocalFile();
    index = std::make_unique<QLJournalIndex>(package);
  }
  ~DeletionTest() override {
    makeWritable(true);
    const bool isRestored = ::getuid() != 0 || ::seteuid(0) == 0;
    EXPECT_TRUE(isRestored);
  }

  bool deleteInteractively(const QList<int>& answers) {
    alerts.answers = answers;
    return deleteEntryFileInteractively(*index, index->entries().value(0), alerts);
  }
  void makeWritable(bool writable) {
    const auto permissions = QFile::ReadOwner | QFile::ExeOwner | (writable ? QFile::WriteOwner : QFile::Permission(0));
    QFile::setPermissions(package->entriesFolder(), permissions);
  }
  // A file where the folder of the Trash would be.
  void blockTrash() {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(trashFolder()).path()));
    QFile blocker(trashFolder());
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
  }
  static QString trashFolder() { return UserDirectories::current().data + u"/Trash"_s; }
  QStringList trash() const { return QDir(trashFolder() + u"/files"_s).entryList(QDir::Files); }
  QStringList messages() const {
    QStringList texts;
    for (const Alert& alert : alerts.seen) texts << alert.message;
    return texts;
  }

  TestHome home;
  std::shared_ptr<QLJournalPackageFile> package;
  QString file;
  std::unique_ptr<QLJournalIndex> index;
  AnsweringAlerts alerts;
};

TEST_F(DeletionTest, MovesToTheTrash) {
  EXPECT_TRUE(deleteInteractively({0}));
  EXPECT_EQ(messages(), QStringList{QLatin1StringView(wishes)});
  EXPECT_EQ(alerts.seen[0].buttons, (QStringList{u"Move To Trash"_s, u"Cancel"_s}));
  EXPECT_TRUE(alerts.seen[0].informativeText.isEmpty());
  EXPECT_FALSE(QFile::exists(file));
  EXPECT_EQ(trash(), QStringList{QFileInfo(file).fileName()});
  EXPECT_TRUE(index->entries().isEmpty());
}

TEST_F(DeletionTest, DeletesNothingWithoutAYes) {
  EXPECT_FALSE(deleteInteractively({1}));
  makeWritable(false);
  // The second question, declined.
  EXPECT_FALSE(deleteInteractively({0, 1}));
  EXPECT_EQ(messages().size(), 3);
  EXPECT_TRUE(QFile::exists(file));
  EXPECT_EQ(index->entries().size(), 1);
}

TEST_F(DeletionTest, AFileThatIsGoneCountsAsDeleted) {
  alerts.whileShown = [this] { ASSERT_TRUE(QFile::remove(file)); };
  EXPECT_TRUE(deleteInteractively({0}));
  EXPECT_EQ(messages().size(), 1);
  EXPECT_TRUE(index->entries().isEmpty());
}

TEST_F(DeletionTest, WithoutATrashOffersToDeleteForGood) {
  blockTrash();
  EXPECT_TRUE(deleteInteractively({0, 0}));
  EXPECT_EQ(messages(), (QStringList{QLatin1StringView(wishes), QLatin1StringView(unable)}));
  EXPECT_EQ(alerts.seen[1].buttons, (QStringList{u"Delete"_s, u"Cancel"_s}));
  EXPECT_EQ(alerts.seen[1].informativeText, u"Would you like to attempt to permanently delete this entry?"_s);
  EXPECT_FALSE(QFile::exists(file));
  EXPECT_TRUE(index->entries().isEmpty());
}

TEST_F(DeletionTest, ShowsWhyItCannotBeDeletedAtAll) {
  makeWritable(false);
  // An entry by its place goes the same way.
  alerts.answers = {0, 0};
  EXPECT_FALSE(deleteEntryInteractively(*index, {index->entries()[0]->uuid(), QUrl::fromLocalFile(file)}, alerts));
  ASSERT_EQ(alerts.seen.size(), 3);
  EXPECT_TRUE(alerts.seen[2].message.contains(u"Permission denied"_s)) << alerts.seen[2].message.toStdString();
  EXPECT_TRUE(QFile::exists(file));
  EXPECT_EQ(index->entries().size(), 1);
}

TEST_F(DeletionTest, AsksOnTheActiveWindowOrElseTheFirst) {
  EXPECT_FALSE(deleteInteractively({1}));
  EXPECT_EQ(alerts.parent, nullptr);
  QWidget window;
  window.setAttribute(Qt::WA_ShowWithoutActivating);
  window.show();
  EXPECT_FALSE(deleteInteractively({1}));
  EXPECT_EQ(alerts.parent, &window);
  QWidget second;
  second.show();
  second.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&second));
  EXPECT_FALSE(deleteInteractively({1}));
  EXPECT_EQ(alerts.parent, &second);
}

}  // namespace
}  // namespace quillo
