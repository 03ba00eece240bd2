#include "JournalFixture.h"
#include "foundation/FileManager.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLMixpanelTracker.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace quillo {

using namespace Qt::StringLiterals;

class QLJournalIndexTest : public JournalFixture {
 protected:
  // An entry as another program would write it.
  void writeEntry(int number, double created) {
    write(entryPath(uuidOf(number)),
          {{u"text"_s, QString::number(number)}, {u"creationDate"_s, Date::since1970(created)}});
  }
  static QString uuidOf(int number) { return u"00000000-0000-4000-8000-%1"_s.arg(number, 12, 10, QChar(u'0')); }
  static QStringList textsOf(const QLJournalIndex& index) {
    QStringList texts;
    for (const auto& entry : index.entries()) texts << entry->string();
    return texts;
  }
};

TEST_F(QLJournalIndexTest, ListsNewestFirstAndDamagedOnesApart) {
  writeEntry(1, 1000);
  writeEntry(2, 3000);
  writeEntry(4, 2000);
  writeEntry(3, 2000);
  const QString folder = package->entriesFolder();
  write(entryPath(uuidOf(5)), QByteArray("half of an ent"));
  write(folder + u"/notes.plist"_s, PropertyListDictionary());
  QFile::link(entryPath(uuidOf(1)), entryPath(uuidOf(6)));
  // Nobody's entries.
  write(folder + u"/.DS_Store"_s, QByteArray("x"));
  write(folder + u"/.hidden.plist"_s, QByteArray("x"));
  write(folder + u"/read me.txt"_s, QByteArray("x"));
  write(folder + u"/."_s + uuidOf(7) + u".plist.1.1.tmp"_s, QByteArray("x"));
  write(folder + u'/' + uuidOf(8) + u"_BASE_4711.plist"_s, QByteArray("x"));
  // Other versions of an entry.
  write(folder + u'/' + uuidOf(1) + u".sync-conflict-20260309-140559-ABCDEF2.plist"_s, PropertyListDictionary());

  LogCapture log;
  const QLJournalIndex index(package);
  EXPECT_EQ(textsOf(index), (QStringList{u"2"_s, u"3"_s, u"4"_s, u"1"_s}));
  EXPECT_FALSE(index.readError());
  ASSERT_EQ(index.damagedEntries().size(), 3);
  EXPECT_EQ(log.lines().size(), 3);
  EXPECT_EQ(index.damagedEntries()[0].url, QUrl::fromLocalFile(entryPath(uuidOf(5))));
  EXPECT_TRUE(index.damagedEntries()[1].reason.contains(u"symbolic link"_s));
  EXPECT_TRUE(index.damagedEntries()[2].reason.contains(u"not an entry's identifier"_s));

  EXPECT_EQ(index.entryFileWithUUID(uuidOf(3))->string(), u"3"_s);
  EXPECT_TRUE(index.entryWithUUID(uuidOf(3)));
  EXPECT_FALSE(index.entryFileWithUUID(uuidOf(5)));
  EXPECT_TRUE(index.entryWithUUID(uuidOf(5)));
  EXPECT_FALSE(index.entryWithUUID(uuidOf(9)));
  EXPECT_FALSE(index.entryWithUUID(u"notes"_s));
}

TEST_F(QLJournalIndexTest, IsEmptyWithoutAFolderOfEntriesAndSaysSoOfALink) {
  EXPECT_TRUE(QLJournalIndex(nullptr).entries().isEmpty());
  ASSERT_TRUE(QDir().rmdir(package->entriesFolder()));
  EXPECT_TRUE(QLJournalIndex(package).entries().isEmpty());
  EXPECT_TRUE(QLJournalIndex(package).damagedEntries().isEmpty());
  EXPECT_FALSE(QLJournalIndex(package).readError());
  ASSERT_TRUE(QFile::link(home.path(), package->entriesFolder()));
  ASSERT_TRUE(QLJournalIndex(package).readError());
  EXPECT_TRUE(QLJournalIndex(package).readError()->localizedDescription.startsWith(package->entriesFolder()));
  ASSERT_EQ(QLJournalIndex(package).damagedEntries().size(), 1);
  EXPECT_EQ(QLJournalIndex(package).damagedEntries()[0].url, package->entriesURL());

  // Nothing is deleted where the link leads.
  const QString outside = home.path(uuidOf(1) + u".plist"_s);
  write(outside, QByteArray("x"));
  const auto remove = [](const QUrl& url, Error* error) { return FileManager::removeItemAtURL(url, false, error); };
  auto index = QLJournalIndex::unread(package);
  EXPECT_FALSE(index.deleteEntry({uuidOf(1), QUrl::fromLocalFile(entryPath(uuidOf(1)))}, nullptr, remove));
  EXPECT_TRUE(QFile::exists(outside));
}

TEST_F(QLJournalIndexTest, EntriesOfOneSecondListTheLastWrittenFirst) {
  const Date second = Date::since1970(1000);
  const auto writeEdited = [&](int number, double edited, time_t written) {
    write(entryPath(uuidOf(number)), {{u"text"_s, QString::number(number)},
                                      {u"creationDate"_s, second},
                                      {u"modificationDate"_s, Date::since1970(edited)}});
    const timespec times[] = {{written, 0}, {written, number}};
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(entryPath(uuidOf(number))).constData(), times, 0), 0);
  };
  writeEdited(1, 1000, 5000);
  writeEdited(2, 1000, 6000);
  writeEdited(3, 2000, 4000);
  writeEdited(4, 1000, 6000);  // two nanoseconds later
  EXPECT_EQ(textsOf(QLJournalIndex(package)), (QStringList{u"3"_s, u"4"_s, u"2"_s, u"1"_s}));
}

TEST_F(QLJournalIndexTest, FilesNamedInLowerCaseAreEntriesLikeOthers) {
  const QString uuid = u"ABCDEF00-0000-4000-8000-00000000000A"_s;
  const QString lower = entryPath(uuid.toLower());
  write(lower, {{u"text"_s, u"low"_s}, {u"creationDate"_s, Date::since1970(1000)}});
  const QUrl url = QUrl::fromLocalFile(lower);
  QLJournalIndex index(package);
  ASSERT_EQ(textsOf(index), QStringList{u"low"_s});
  EXPECT_TRUE(index.damagedEntries().isEmpty());
  EXPECT_EQ(index.entryWithUUID(uuid), (QLEntry{uuid, url}));
  EXPECT_EQ(QLJournalEntryFile::fileURL(*package, uuid, nullptr), url);

  const auto entry = QLJournalEntryFile::load(url, nullptr);
  ASSERT_TRUE(entry);
  entry->setString(u"lower"_s);
  ASSERT_TRUE(entry->saveToJournal(package.get(), nullptr));
  EXPECT_EQ(everythingIn(package->entriesFolder()), QStringList{uuid.toLower() + u".plist"_s});
  EXPECT_EQ(reread(uuid)->string(), u"lower"_s);

  // Beside one in our own spelling it is not shown as the same entry twice.
  write(entryPath(uuid), {{u"text"_s, u"high"_s}});
  const QLJournalIndex both(package);
  EXPECT_EQ(textsOf(both), QStringList{u"high"_s});
  ASSERT_EQ(both.damagedEntries().size(), 1);
  EXPECT_EQ(both.damagedEntries()[0].url, url);
  QFile::remove(entryPath(uuid));

  const auto remove = [](const QUrl& file, Error* error) { return FileManager::removeItemAtURL(file, false, error); };
  EXPECT_TRUE(index.deleteEntry(*index.entryWithUUID(uuid), nullptr, remove));
  EXPECT_TRUE(everythingIn(package->entriesFolder()).isEmpty());
}

TEST_F(QLJournalIndexTest, DropsAnEntryOnlyOnceItsFileIsGone) {
  writeEntry(1, 1000);
  const struct {
    const char* name;
    std::optional<Error> error;
    bool isDropped;
  } cases[] = {{"removed", {}, true},
               {"gone before", Error{ErrorDomain::osStatus, ErrorCode::fileNotFound, {}, {}, {}}, true},
               {"gone before, by the other message", cocoaError(ErrorCode::fileNoSuchFile, {}), true},
               {"another status", Error{ErrorDomain::osStatus, -120, {}, {}, {}}, false},
               {"the same code elsewhere", Error{ErrorDomain::posix, ErrorCode::fileNotFound, {}, {}, {}}, false}};
  for (const auto& [name, expected, isDropped] : cases) {
    SCOPED_TRACE(name);
    const std::optional<Error> answer = expected;
    QLJournalIndex index(package);
    QList<QUrl> urls;
    Error error;
    const bool done = index.deleteEntryFile(index.entries()[0], &error, [&](const QUrl& url, Error* out) {
      urls << url;
      return !answer || fail(out, *answer);
    });
    EXPECT_EQ(done, !answer.has_value());
    EXPECT_EQ(error, answer.value_or(Error()));
    EXPECT_EQ(urls, QList<QUrl>{QUrl::fromLocalFile(entryPath(uuidOf(1)))});
    EXPECT_EQ(index.entries().isEmpty(), isDropped);
  }
}

TEST_F(QLJournalIndexTest, DeletesOnlyEntriesOfItsOwnJournal) {
  writeEntry(1, 1000);
  write(entryPath(uuidOf(2)), QByteArray("damaged"));
  const auto other = make(home.path(u"Other.quillojournal"_s));
  const auto foreign = QLJournalEntryFile::newEntry();
  ASSERT_TRUE(foreign->saveToJournal(other.get(), nullptr));

  QLJournalIndex index(package);
  const auto remove = [](const QUrl& url, Error* error) { return FileManager::removeItemAtURL(url, false, error); };
  EXPECT_FALSE(index.deleteEntryFile(foreign, nullptr, remove));
  EXPECT_FALSE(index.deleteEntryFile(nullptr, nullptr, remove));
  EXPECT_FALSE(index.deleteEntry({uuidOf(1), *foreign->fileURLForEntryProperties()}, nullptr, remove));
  EXPECT_FALSE(index.deleteEntry({u"../Journal"_s, package->url()}, nullptr, remove));
  EXPECT_FALSE(index.deleteEntry(*index.entryWithUUID(uuidOf(1)), nullptr, {}));
  EXPECT_TRUE(QFile::exists(foreign->fileURLForEntryProperties()->toLocalFile()));
  EXPECT_EQ(everythingIn(package->entriesFolder()).size(), 2);

  EXPECT_TRUE(index.deleteEntryFile(QLJournalEntryFile::newEntry(), nullptr, remove));  // never saved
  EXPECT_TRUE(index.deleteEntry(*index.entryWithUUID(uuidOf(2)), nullptr, remove));
  EXPECT_TRUE(index.damagedEntries().isEmpty());
  EXPECT_TRUE(index.deleteEntry(*index.entryWithUUID(uuidOf(1)), nullptr, remove));
  EXPECT_TRUE(index.entries().isEmpty());
  EXPECT_TRUE(everythingIn(package->entriesFolder()).isEmpty());
}

TEST_F(QLJournalIndexTest, LeftoversOfACrashAreClearedAwayButNothingElse) {
  const pid_t gone = ::fork();
  if (gone == 0) ::_exit(0);
  ASSERT_EQ(::waitpid(gone, nullptr, 0), gone);
  const QString uuid = uuidOf(1);
  const auto temporary = [&](qint64 process) { return u".%1.plist.%2.3.tmp"_s.arg(uuid, QString::number(process)); };
  const QStringList kept = {
      temporary(::getpid()),       u"."_s + uuid + u".plist.x.3.tmp"_s, u".notes.plist.%1.3.tmp"_s.arg(gone),
      u"."_s + uuid + u".plist"_s, temporary(gone).sliced(1),           temporary(gone) + u'~'};
  const QString old = u".%1.plist.%2.4.tmp"_s.arg(uuid, QString::number(::getpid()));
  const QString path = package->entriesFolder();
  for (const QString& name : kept + QStringList{temporary(gone), old}) write(path + u'/' + name, QByteArray("x"));
  const timespec times[] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path + u'/' + old).constData(), times, 0), 0);

  JournalFolder::open(path, nullptr)->removeLeftovers();
  QStringList expected = kept;
  expected.sort();
  EXPECT_EQ(everythingIn(path), expected);
}

TEST_F(QLJournalIndexTest, EventsHoldNoWordOfTheEntryAndComeOnlyWhenWanted) {
  const auto entry = saved(u"secret words"_s, {u"secret"_s});
  const PropertyListDictionary context{{QString(QLMixpanelTrackerEntryContextFromAgentKey), true},
                                       {QString(QLMixpanelTrackerEntryContextEditTimeKey), 42},
                                       {u"other"_s, u"secret"_s}};
  LogCapture log;
  QLMixpanelTracker::setTrackingEnabled(false);
  QLMixpanelTracker::sharedInstance().trackEntryCreate(*entry, context);
  EXPECT_TRUE(log.lines().isEmpty());
  QLMixpanelTracker::setTrackingEnabled(true);
  QLMixpanelTracker::sharedInstance().trackEntryCreate(*entry, context);
  QLMixpanelTracker::setTrackingEnabled(false);
  ASSERT_EQ(log.lines().size(), 1);
  EXPECT_TRUE(log.lines()[0].contains(u"42"_s));
  EXPECT_FALSE(log.lines()[0].contains(u"secret"_s));
}

}  // namespace quillo
