#include "ConflictFixture.h"
#include "qlcore/JournalError.h"
#include "qlcore/conflicts/EntryAncestor.h"
#include "qlcore/conflicts/JournalConflicts.h"

#include <QRandomGenerator>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

struct KnownAncestor : EntryAncestor {
  std::optional<QString> textBefore(const QString&, const QStringList&) override { return text; }
  std::optional<QString> text;
};

}  // namespace

using JournalConflictsTest = ConflictFixture;

TEST_F(JournalConflictsTest, ListsEntriesWithTheirVersions) {
  write(own, fields(u"here"_s, {{EntryFields::tags, PropertyListArray{u"a"_s}}}));
  write(copy, fields(u"there"_s));
  writeBytes(secondCopy, "half of an ent");
  const QString other = u"0A1B2C3D-0000-4000-8000-000000000001"_s;
  write(other + u" 2.plist"_s, fields(u"alone"_s));
  write(u"0A1B2C3D-0000-4000-8000-000000000002.plist"_s, fields(u"no conflict"_s));
  write(uuid + u"_BASE_12.plist"_s, fields(u"of a merge"_s));

  const auto entries = conflicts().entries(nullptr);
  ASSERT_TRUE(entries);
  EXPECT_EQ(*entries, (QList<ConflictedEntry>{{other, {other + u" 2.plist"_s}}, {uuid, {secondCopy, copy}}}));

  const EntryVersions entry = versions();
  ASSERT_EQ(entry.versions.size(), 3);
  EXPECT_FALSE(entry.isOrphaned());
  EXPECT_EQ(entry.versions[0].text(), u"here"_s);
  EXPECT_EQ(entry.versions[0].tags(), QStringList{u"a"_s});
  EXPECT_FALSE(entry.versions[1].isWhole());
  EXPECT_TRUE(entry.versions[1].damage.contains(secondCopy));
  EXPECT_EQ(entry.versions[1].copy->origin, Synchroniser::Dropbox);
  EXPECT_EQ(entry.versions[2].text(), u"there"_s);
  EXPECT_EQ(entry.versions[2].modificationDate(), Date(written));

  QDir(package->entriesFolder()).removeRecursively();
  EXPECT_EQ(conflicts().entries(nullptr), QList<ConflictedEntry>());
}

TEST_F(JournalConflictsTest, TheOneThatIsKeptIsTheEntryAndTheOthersAreInTheTrash) {
  struct Case {
    const char* about;
    bool hasOwn;
    qsizetype chosen;
    QString kept;
    QStringList trashed;
  };
  const QList<Case> cases{{"the entry's own", true, 0, u"here"_s, {u"elsewhere"_s, u"there"_s}},
                          {"a copy", true, 2, u"there"_s, {u"elsewhere"_s, u"here"_s}},
                          {"a copy without the entry's own", false, 1, u"there"_s, {u"elsewhere"_s}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.about);
    QDir(trashFolder()).removeRecursively();
    QFile::remove(package->entriesFolder() + u'/' + own);
    if (c.hasOwn) write(own, fields(u"here"_s));
    write(copy, fields(u"there"_s, {{u"unknown"_s, u"kept"_s}}));
    write(secondCopy, fields(u"elsewhere"_s));
    Error error;
    ASSERT_TRUE(conflicts().keep(versions(), c.chosen, &error)) << error.description().toStdString();
    EXPECT_EQ(files(), QStringList{own});
    EXPECT_EQ(textOf(own), c.kept);
    EXPECT_EQ(fieldsOf(own).contains(u"unknown"_s), c.kept == u"there");
    EXPECT_EQ(trashedTexts(), c.trashed);
    EXPECT_FALSE(versions().isConflict());
  }
  EXPECT_FALSE(conflicts().keep(versions(), 1, nullptr));
}

// Once it is put back from the Trash, where the names of the files are kept.
TEST_F(JournalConflictsTest, WhatIsPutBackIsAVersionAgain) {
  write(own, fields(u"here"_s));
  write(copy, fields(u"there"_s));
  ASSERT_TRUE(conflicts().keep(versions(), 1, nullptr));
  const QString name = QDir(trashFolder()).entryList(QDir::Files).value(0);
  ASSERT_TRUE(QFile::rename(trashFolder() + u'/' + name, package->entriesFolder() + u'/' + name));
  ASSERT_EQ(versions().versions.size(), 2);
  EXPECT_EQ(versions().versions[1].text(), u"here"_s);
}

TEST_F(JournalConflictsTest, BothBecomeEntriesAndTheSameOnesEachTime) {
  QStringList added[2];
  for (QStringList& identifiers : added) {
    write(own, fields(u"here"_s));
    write(copy, fields(u"there"_s, {{EntryFields::uuid, uuid}, {u"unknown"_s, u"kept"_s}}));
    writeBytes(secondCopy, "half of an ent");
    ASSERT_TRUE(conflicts().keepAll(versions(), &identifiers, nullptr));
    ASSERT_EQ(identifiers.size(), 1);
    const auto made = QLJournalEntryFile::entryWithUUID(*package, identifiers[0], nullptr);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->string(), u"there"_s);
    EXPECT_EQ(made->creationDate(), Date(written));
    EXPECT_EQ(fieldsOf(identifiers[0] + u".plist"_s).value(u"unknown"_s).string(), u"kept"_s);
    EXPECT_EQ(fieldsOf(identifiers[0] + u".plist"_s).value(EntryFields::uuid).string(), identifiers[0]);
    EXPECT_EQ(textOf(own), u"here"_s);
    EXPECT_EQ(files().size(), 2);
  }
  EXPECT_EQ(added[0], added[1]);
}

TEST_F(JournalConflictsTest, AMergedTextReplacesAllVersions) {
  write(own, fields(u"Morning.\nAt the sea.\n"_s, {{EntryFields::tags, PropertyListArray{u"sea"_s}}}));
  write(copy,
        fields(u"Morning.\nAt the sea.\nEvening.\n"_s, {{EntryFields::tags, PropertyListArray{u"Sea"_s, u"trip"_s}}}));
  EXPECT_EQ(conflicts().merged(versions()).text, u"Morning.\nAt the sea.\nEvening.\n"_s);
  KnownAncestor ancestor;
  ancestor.text = u"Morning.\nAt the sea.\nEvening.\n"_s;
  EXPECT_EQ(conflicts(&ancestor).merged(versions()).text, u"Morning.\nAt the sea.\n"_s);

  ASSERT_TRUE(conflicts().keepMerged(versions(), u"All of it."_s, nullptr));
  EXPECT_EQ(files(), QStringList{own});
  EXPECT_EQ(textOf(own), u"All of it."_s);
  EXPECT_EQ(fieldsOf(own).value(EntryFields::tags).array(), (PropertyListArray{u"sea"_s, u"trip"_s}));
  EXPECT_GT(fieldsOf(own).value(EntryFields::modificationDate).date(), Date(written));
  EXPECT_EQ(trashedTexts().size(), 2);
}

TEST_F(JournalConflictsTest, WhatNobodyHasToDecideIsDoneByItself) {
  const PropertyListValue sun = PropertyListDictionary{{u"temperature"_s, 20.0}};
  const PropertyListValue rain = PropertyListDictionary{{u"temperature"_s, 9.0}};
  const PropertyListValue here = PropertyListDictionary{{u"latitude"_s, 1.0}, {u"longitude"_s, 2.0}};
  const PropertyListValue there = PropertyListDictionary{{u"latitude"_s, 3.0}, {u"longitude"_s, 4.0}};
  const PropertyListArray a{u"a"_s};
  const PropertyListArray ab{u"a"_s, u"b"_s};
  struct Case {
    const char* about;
    PropertyListDictionary first, second;
    std::optional<QString> ancestor;
    std::optional<PropertyListDictionary> merged;
  };
  const auto later = PropertyListDictionary{{EntryFields::modificationDate, Date(written + 60)}};
  const QList<Case> cases{
      {"the same", fields(u"x"_s), fields(u"x"_s), {}, fields(u"x"_s)},
      {"saved later", fields(u"x"_s), fields(u"x"_s, later), {}, fields(u"x"_s, later)},
      {"other weather",
       fields(u"x"_s, {{u"weather"_s, sun}}),
       fields(u"x"_s, {{u"weather"_s, rain}}),
       {},
       fields(u"x"_s, {{u"weather"_s, sun}})},
      {"weather there only",
       fields(u"x"_s),
       fields(u"x"_s, {{u"weather"_s, rain}}),
       {},
       fields(u"x"_s, {{u"weather"_s, rain}})},
      {"other tags",
       fields(u"x"_s, {{u"tags"_s, a}}),
       fields(u"x"_s, {{u"tags"_s, ab}}),
       {},
       fields(u"x"_s, {{u"tags"_s, ab}})},
      {"a place there only",
       fields(u"x"_s),
       fields(u"x"_s, {{u"location"_s, there}}),
       {},
       fields(u"x"_s, {{u"location"_s, there}})},
      {"another place", fields(u"x"_s, {{u"location"_s, here}}), fields(u"x"_s, {{u"location"_s, there}}), {}, {}},
      {"another day", fields(u"x"_s), fields(u"x"_s, {{u"creationDate"_s, Date(1)}}), {}, {}},
      {"something unknown", fields(u"x"_s, {{u"mood"_s, u"good"_s}}), fields(u"x"_s, {{u"mood"_s, u"bad"_s}}), {}, {}},
      {"another text", fields(u"x"_s), fields(u"x y"_s), {}, {}},
      {"texts that go together", fields(u"one\ntwo 2\n"_s), fields(u"one 1\ntwo\n"_s), u"one\ntwo\n"_s,
       fields(u"one 1\ntwo 2\n"_s)},
      {"texts that clash", fields(u"one is red\n"_s), fields(u"one is blue\n"_s), u"one is green\n"_s, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.about);
    QDir(trashFolder()).removeRecursively();
    write(own, c.first);
    write(copy, c.second);
    KnownAncestor ancestor;
    ancestor.text = c.ancestor;
    Error error;
    const auto settled = conflicts(&ancestor).settle({uuid, {copy}}, &error);
    ASSERT_TRUE(settled) << error.description().toStdString();
    EXPECT_EQ(settled->merged, c.merged ? QStringList{copy} : QStringList());
    EXPECT_EQ(settled->isLeft, !c.merged);
    EXPECT_EQ(files(), c.merged ? QStringList{own} : (QStringList{own, copy}));
    EXPECT_EQ(fieldsOf(own), c.merged.value_or(c.first));
    // What is not in the entry any more can be found in the Trash.
    if (c.merged) {
      EXPECT_TRUE(trashedTexts().contains(c.second.value(EntryFields::text).string()));
      if (c.merged->value(EntryFields::text) != c.first.value(EntryFields::text)) {
        EXPECT_TRUE(trashedTexts().contains(c.first.value(EntryFields::text).string()));
      }
    } else {
      EXPECT_EQ(trashedTexts(), QStringList());
    }
  }
}

TEST_F(JournalConflictsTest, ACopyWithoutTheEntrysFileIsTheEntryOnceTheSynchroniserIsThrough) {
  write(copy, fields(u"first"_s));
  write(secondCopy, fields(u"second"_s, {{EntryFields::modificationDate, Date(written + 60)}}));
  EXPECT_TRUE(versions().isOrphaned());
  const ConflictedEntry entry{uuid, {secondCopy, copy}};
  const JournalConflicts patient(package->entriesFolder(), nullptr, std::chrono::hours(1));
  const auto early = patient.settle(entry, nullptr);
  ASSERT_TRUE(early);
  EXPECT_FALSE(early->isSomething());
  EXPECT_TRUE(early->isLeft);
  EXPECT_EQ(files().size(), 2);

  const auto settled = conflicts().settle(entry, nullptr);
  ASSERT_TRUE(settled);
  EXPECT_EQ(settled->renamed, secondCopy);
  EXPECT_TRUE(settled->isLeft);
  EXPECT_EQ(textOf(own), u"second"_s);
  EXPECT_EQ(files(), (QStringList{own, copy}));
  EXPECT_EQ(trashedTexts(), QStringList());
}

TEST_F(JournalConflictsTest, AWholeCopyTakesThePlaceOfADamagedEntry) {
  writeBytes(own, "half of an ent");
  write(copy, fields(u"whole"_s));
  QString replaced;
  Error error;
  ASSERT_TRUE(conflicts().replaceDamaged({uuid, {copy}}, &replaced, &error)) << error.description().toStdString();
  EXPECT_EQ(replaced, copy);
  EXPECT_EQ(files(), QStringList{own});
  EXPECT_EQ(textOf(own), u"whole"_s);
  const QString trashed = QDir(trashFolder()).entryList(QDir::Files).value(0);
  EXPECT_EQ(contentsOfFile(trashFolder() + u'/' + trashed), "half of an ent");

  // Nothing of an entry that is whole.
  write(copy, fields(u"other"_s));
  ASSERT_TRUE(conflicts().replaceDamaged({uuid, {copy}}, &replaced, nullptr));
  EXPECT_EQ(replaced, QString());
  EXPECT_EQ(textOf(own), u"whole"_s);
}

TEST_F(JournalConflictsTest, NothingIsDoneWithVersionsThatHaveChangedMeanwhile) {
  write(own, fields(u"here"_s));
  write(copy, fields(u"there"_s));
  const EntryVersions seen = versions();
  write(own, fields(u"here, and more"_s));
  Error error;
  EXPECT_FALSE(conflicts().keep(seen, 0, &error));
  EXPECT_TRUE(error.localizedDescription.contains(u"changed meanwhile"_s));
  EXPECT_FALSE(conflicts().keep(seen, 1, nullptr));
  EXPECT_FALSE(conflicts().keepAll(seen, nullptr, nullptr));
  EXPECT_FALSE(conflicts().keepMerged(seen, u"x"_s, nullptr));
  const EntryVersions now = versions();
  QFile::remove(package->entriesFolder() + u'/' + copy);
  EXPECT_FALSE(conflicts().keep(now, 0, nullptr));
  EXPECT_EQ(files(), QStringList{own});
  EXPECT_EQ(textOf(own), u"here, and more"_s);
  EXPECT_EQ(trashedTexts(), QStringList());
}

// An entry's file came while a copy was all there was.
TEST_F(JournalConflictsTest, AnEntryThatHasComeIsNotWrittenOver) {
  write(copy, fields(u"there"_s));
  const EntryVersions seen = versions();
  write(own, fields(u"here"_s));
  EXPECT_FALSE(conflicts().keep(seen, 0, nullptr));
  EXPECT_EQ(textOf(own), u"here"_s);
  EXPECT_EQ(textOf(copy), u"there"_s);
}

TEST_F(JournalConflictsTest, WithoutATrashEverythingStays) {
  write(own, fields(u"here"_s));
  write(copy, fields(u"there"_s));
  const EntryVersions seen = versions();
  // A file where the folder would be.
  ASSERT_TRUE(QDir().mkpath(UserDirectories::current().data));
  ASSERT_TRUE(writeFileInPlace(UserDirectories::current().data + u"/Trash"_s, "in the way"));
  Error error;
  EXPECT_FALSE(conflicts().keep(seen, 1, &error));
  EXPECT_FALSE(error.localizedDescription.isEmpty());
  EXPECT_FALSE(conflicts().keep(seen, 0, nullptr));
  EXPECT_FALSE(conflicts().keepMerged(seen, u"x"_s, nullptr));
  EXPECT_EQ(files(), (QStringList{own, copy}));
  EXPECT_EQ(textOf(own), u"here"_s);
  EXPECT_EQ(textOf(copy), u"there"_s);
}

TEST_F(JournalConflictsTest, AKillInTheMiddleLosesNoVersion) {
  QRandomGenerator random(23);
  int ended = 0;
  for (int round = 0; round < 120; ++round) {
    SCOPED_TRACE(round);
    QDir(trashFolder()).removeRecursively();
    for (const QString& name : files()) QFile::remove(package->entriesFolder() + u'/' + name);
    write(own, fields(u"here"_s));
    write(copy, fields(u"there"_s));
    write(secondCopy, fields(u"elsewhere"_s));
    const EntryVersions seen = versions();
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      const JournalConflicts journal = conflicts();
      if (round % 3 == 0) journal.keep(seen, 1, nullptr);
      if (round % 3 == 1) journal.keepMerged(seen, u"here there elsewhere"_s, nullptr);
      if (round % 3 == 2) journal.keepAll(seen, nullptr, nullptr);
      ::_exit(0);
    }
    // The moment of the kill is the test: there is no clock to fake.
    const timespec moment{0, static_cast<long>(random.bounded(3'000'000))};
    ::nanosleep(&moment, nullptr);
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ended += WIFSIGNALED(status) ? 1 : 0;
    QStringList texts = trashedTexts();
    for (const QString& name : files())
      if (!name.startsWith(u'.')) texts << textOf(name);
    for (const QString& text : {u"here"_s, u"there"_s, u"elsewhere"_s}) EXPECT_TRUE(texts.contains(text));
    EXPECT_FALSE(textOf(own).isEmpty());
  }
  EXPECT_GT(ended, 0);
}

}  // namespace quillo
