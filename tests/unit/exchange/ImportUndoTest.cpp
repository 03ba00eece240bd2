#include "ExchangeFixture.h"
#include "exchange/ImportRecordFolder.h"
#include "exchange/ImportUndo.h"
#include "foundation/UserDirectories.h"

#include <QTemporaryDir>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

class ImportBack : public ExchangeFixture {
 protected:
  // A list of entries with these numbers and one text.
  QString listOf(const QList<int>& numbers, const QByteArray& text) const {
    QByteArray list;
    for (const int number : numbers)
      list += (list.isEmpty() ? "[" : ",\n") + QByteArray(R"({"uuid":")") + uuidOf(number).toLatin1() +
              R"(","text":")" + text + R"("})";
    return stored(u"list.json"_s, list + "]");
  }
  void import(const QList<int>& numbers, const QByteArray& text) const {
    Error error;
    ASSERT_TRUE(imported(journal, "json", listOf(numbers, text), /*isReplacing=*/true, &error))
        << error.description().toStdString();
  }
  QString textOf(int number) const {
    const auto read = QLJournalEntryFile::entryWithUUID(*journal, uuidOf(number), nullptr);
    return read ? read->string() : QString();
  }
  static QString trash() { return UserDirectories::current().data + u"/Trash"_s; }
};

TEST_F(ImportBack, OnlyWhatWasNotTouchedSince) {
  store(journal, uuidOf(1), {{EntryFields::text, u"mine"_s}});
  store(journal, uuidOf(2), {{EntryFields::text, u"old"_s}, {u"mood"_s, 3}});
  const Entries before = entriesOf(journal);
  import({2, 3, 4, 5}, "new");
  store(journal, uuidOf(4), {{EntryFields::text, u"new and more"_s}});
  ASSERT_TRUE(QFile::remove(pathOf(journal, uuidOf(5))));
  const Entries after = entriesOf(journal);

  const auto last = ImportUndo::lastImport(*journal);
  ASSERT_TRUE(last);
  EXPECT_EQ(std::tuple(last->added, last->replaced, last->isFinished), std::tuple(3, 1, true));
  QStringList kept;
  const ImportUndo::Listener listener{.kept = [&](const QString& uuid, const QString&) { kept << uuid; }};
  Error error;
  const ImportUndo::Counts expected{.removed = 1, .putBack = 1, .changed = 1, .gone = 1};
  EXPECT_EQ(ImportUndo(*journal).look(listener, &error), expected);
  EXPECT_EQ(entriesOf(journal), after);
  EXPECT_EQ(ImportUndo(*journal).run(listener, &error), expected);
  EXPECT_EQ(kept, (QStringList{uuidOf(4), uuidOf(4)}));
  Entries left = before;
  left[QLJournalEntryFile::fileName(uuidOf(4))] = after.at(QLJournalEntryFile::fileName(uuidOf(4)));
  EXPECT_EQ(entriesOf(journal), left);
  EXPECT_EQ(QDir(trash() + u"/files"_s).entryList(QDir::Files), QStringList{QLJournalEntryFile::fileName(uuidOf(3))});
  EXPECT_FALSE(ImportUndo::lastImport(*journal));
  EXPECT_FALSE(ImportUndo(*journal).run({}, &error));
  EXPECT_TRUE(error.localizedDescription.contains(u"no import"_s));
}

TEST_F(ImportBack, OneAfterTheOther) {
  constexpr int imports = 12;
  for (int i = 1; i <= imports; ++i) {
    import({1}, "text " + QByteArray::number(i));
    import({1}, "text " + QByteArray::number(i));  // changes nothing, and so is none to take back
  }
  // The ten latest.
  for (int i = imports - 1; i >= 2; --i) {
    ASSERT_TRUE(ImportUndo(*journal).run({}, nullptr)) << i;
    EXPECT_EQ(textOf(1), u"text %1"_s.arg(i));
  }
  EXPECT_FALSE(ImportUndo(*journal).run({}, nullptr));
  EXPECT_EQ(textOf(1), u"text 2"_s);
}

TEST_F(ImportBack, AKilledImportIsTakenBackByTheNext) {
  store(journal, uuidOf(1), {{EntryFields::text, u"old"_s}});
  const Entries before = entriesOf(journal);
  QList<int> numbers;
  for (int i = 1; i <= 200; ++i) numbers << i;
  const QString path = listOf(numbers, "new");
  const pid_t child = ::fork();
  if (child == 0) {
    int asked = 0;
    const auto source = importFormatNamed(u"json"_s)->open(path, false);
    static_cast<void>(JournalImport(*journal, true, {path, u"json"_s})
                          .write(*source,
                                 {.isStopped =
                                      [&] {
                                        if (++asked > 190) ::_exit(0);
                                        return false;
                                      }},
                                 nullptr));
    ::_exit(1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  ASSERT_GT(entriesOf(journal).size(), 50u);
  auto last = ImportUndo::lastImport(*journal);
  ASSERT_TRUE(last);
  EXPECT_FALSE(last->isFinished);
  EXPECT_EQ(last->source, path);
  // A line that was not whole on the disk when the power went.
  QFile record(ImportRecordFolder::newest(*journal));
  ASSERT_TRUE(record.open(QIODevice::Append) && record.write("{\"file\":\"0000") > 0);
  record.close();
  // What somebody has changed is theirs.
  store(journal, uuidOf(2), {{EntryFields::text, u"changed"_s}});

  int told = 0;
  const auto source = importFormatNamed(u"json"_s)->open(stored(u"empty.json"_s, "[]"), false);
  ASSERT_TRUE(JournalImport(*journal, false).write(*source, {.tookBack = [&](const auto&) { ++told; }}, nullptr));
  EXPECT_EQ(told, 1);
  Entries expected = before;
  expected[QLJournalEntryFile::fileName(uuidOf(2))] = {{EntryFields::text, u"changed"_s}};
  EXPECT_EQ(entriesOf(journal), expected);
  EXPECT_FALSE(QFileInfo::exists(trash()));
  EXPECT_FALSE(ImportUndo::lastImport(*journal));
}

TEST_F(ImportBack, WithoutItsNoteNothingIsImported) {
  const Entries before = entriesOf(journal);
  Error error;
  {
    const auto held = ImportRecordFolder::claim(*journal, &error);
    ASSERT_TRUE(held);
    EXPECT_FALSE(imported(journal, "json", listOf({1}, "new"), false, &error));
    EXPECT_TRUE(error.localizedDescription.contains(u"under way"_s)) << error.localizedDescription.toStdString();
    EXPECT_FALSE(ImportUndo(*journal).run({}, &error));
  }
  QDir(UserDirectories::current().state + u"/quillo/imports"_s).removeRecursively();
  stored(u"f"_s, "");
  ASSERT_TRUE(QFile::rename(home.path(u"f"_s), UserDirectories::current().state + u"/quillo/imports"_s));
  EXPECT_FALSE(imported(journal, "json", listOf({1}, "new"), false, &error));
  EXPECT_TRUE(error.localizedDescription.contains(u"imports"_s)) << error.localizedDescription.toStdString();
  EXPECT_EQ(entriesOf(journal), before);
}

TEST_F(ImportBack, AJournalOnAnotherFileSystemKeepsItsNotes) {
  const QTemporaryDir disk(u"/dev/shm/quillo-import-XXXXXX"_s);
  struct stat here {};
  struct stat there {};
  if (!disk.isValid() || ::stat(QFile::encodeName(disk.path()).constData(), &there) != 0 ||
      ::stat(QFile::encodeName(home.path()).constData(), &here) != 0 || here.st_dev == there.st_dev)
    GTEST_SKIP() << "there is no other file system";
  const QString path = disk.filePath(u"J.quillojournal"_s);
  const auto away = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(path), /*create=*/true, nullptr);
  ASSERT_TRUE(imported(away, "json", listOf({1}, "new")));
  EXPECT_FALSE(QFileInfo::exists(UserDirectories::current().state + u"/quillo/imports"_s));
  // Carried home, as moving a journal does.
  const QString moved = home.path(u"Moved.quillojournal"_s);
  for (const QString& name : {u"Journal.plist"_s, u"Entries/"_s + QLJournalEntryFile::fileName(uuidOf(1)),
                              u".imports/"_s + QFileInfo(ImportRecordFolder::newest(*away)).fileName()}) {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(moved + u'/' + name).path()));
    ASSERT_TRUE(QFile::copy(path + u'/' + name, moved + u'/' + name));
  }
  const auto back = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(moved), /*create=*/false, nullptr);
  ASSERT_TRUE(back);
  const auto counts = ImportUndo(*back).run({}, nullptr);
  ASSERT_TRUE(counts);
  EXPECT_EQ(counts->removed, 1);
  EXPECT_TRUE(entriesOf(back).empty());
}

TEST_F(ImportBack, WhatFailedHalfWayCanBeGoneOnWith) {
  store(journal, uuidOf(1), {{EntryFields::text, u"old"_s}});
  const Entries before = entriesOf(journal);
  import({1, 2, 3}, "new");
  // The Trash takes nothing.
  ASSERT_TRUE(QDir().mkpath(UserDirectories::current().data));
  stored(u"f"_s, "");
  ASSERT_TRUE(QFile::rename(home.path(u"f"_s), trash()));
  Error error;
  EXPECT_FALSE(ImportUndo(*journal).run({}, &error));
  EXPECT_TRUE(error.localizedDescription.contains(u"Trash"_s)) << error.localizedDescription.toStdString();
  EXPECT_EQ(textOf(2), u"new"_s);
  ASSERT_TRUE(QFile::remove(trash()));
  int asked = 0;
  EXPECT_FALSE(ImportUndo(*journal).run({.isStopped = [&] { return ++asked > 2; }}, &error));
  EXPECT_TRUE(ImportUndo(*journal).run({}, &error));
  EXPECT_EQ(entriesOf(journal), before);
}

}  // namespace
