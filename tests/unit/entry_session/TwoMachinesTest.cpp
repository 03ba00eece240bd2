// One journal on two machines and a synchroniser between them: whatever is written where, and in whatever order files
// come, no word that was saved is lost.

#include "SynchroniserDouble.h"
#include "entry/session/EntryPlace.h"
#include "entry/session/EntrySession.h"
#include "entry/session/EntryText.h"
#include "foundation/PropertyListSerialization.h"
#include "qlcore/EntryFields.h"
#include "qlcore/QLJournalIndexDeletion.h"
#include "qlcore/conflicts/JournalConflicts.h"
#include "tests/support/EntryFixture.h"

#include <QRegularExpression>
#include <QSet>

namespace quillo {
namespace {

struct PlainText : EntryText {
  [[nodiscard]] QString text() const override { return content; }
  void setText(const QString& text) override { content = text; }
  void commitComposition() override {}
  QString content;
};

QSet<QString> wordsOf(const QString& text) {
  const QStringList words = text.split(QRegularExpression(u"\\s+"_s), Qt::SkipEmptyParts);
  return {words.begin(), words.end()};
}

QSet<QString> wordsIn(const QString& folder) {
  QSet<QString> words;
  for (const QString& name : QDir(folder).entryList({u"*.plist"_s}, QDir::Files)) {
    const auto bytes = contentsOfFile(folder + u'/' + name);
    const auto list = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
    if (list) words.unite(wordsOf(list->dictionary().value(EntryFields::text).string()));
  }
  return words;
}

}  // namespace

class TwoMachinesTest : public EntryTest {
 protected:
  // A machine with its copy of the journal and an editor.
  struct Machine {
    Machine(TwoMachinesTest& test, const QString& name)
        : package(QLJournalPackageFile::openPackage(QUrl::fromLocalFile(test.home.path(name)), true, nullptr)),
          draft(test.home.path(name + u"-draft"_s)),
          place({.config = test.config, .makeLocationManager = test.makeLocationManager(), .weather = &test.weather}),
          session({.config = test.config,
                   .draft = draft,
                   .usageTracker = &QLMixpanelTracker::sharedInstance,
                   .journalFile = [this] { return package; },
                   .emptyJournalEntry = &QLJournalEntryFile::newEntry},
                  text, place) {
      QDir().mkpath(package->entriesFolder());
    }
    QString folder() const { return package->entriesFolder(); }
    QStringList entries() const {
      QStringList uuids;
      for (const QString& name : QDir(folder()).entryList({u"*.plist"_s}, QDir::Files, QDir::Name))
        if (const auto uuid = QLJournalEntryFile::canonicalUUID(name.chopped(6))) uuids << *uuid;
      return uuids;
    }
    JournalConflicts conflicts() const { return JournalConflicts(folder(), nullptr, std::chrono::seconds(0)); }

    std::shared_ptr<QLJournalPackageFile> package;
    EntryDraft draft;
    PlainText text;
    EntryPlace place;
    EntrySession session;
  };

  void run(quint32 seed, int steps) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    random.seed(seed);
    saved.clear();
    deleted.clear();
    QDir(UserDirectories::current().data + u"/Trash"_s).removeRecursively();
    const QString folder = u"m%1"_s.arg(seed);
    QDir().mkpath(home.path(folder));
    Machine machines[2]{{*this, folder + u"/a.quillojournal"_s}, {*this, folder + u"/b.quillojournal"_s}};
    SynchroniserDouble synchroniser({machines[0].folder(), machines[1].folder()}, random);
    bool isLinked = true;
    for (int i = 0; i < steps; ++i) {
      step(machines[random.bounded(2)]);
      if (random.bounded(12) == 0) isLinked = !isLinked;
      if (random.bounded(2) == 0) synchroniser.scan();
      for (int deliveries = isLinked ? random.bounded(5) : 0; deliveries > 0; --deliveries) synchroniser.deliverOne();
    }
    for (Machine& machine : machines) save(machine);
    synchroniser.finish();
    expectNothingLost(machines);
    copies += synchroniser.copies();

    resolveAll(machines[0]);
    synchroniser.finish();
    expectNothingLost(machines);
    for (Machine& machine : machines) {
      EXPECT_EQ(machine.conflicts().entries(nullptr), QList<ConflictedEntry>());
      EXPECT_TRUE(QLJournalIndex(machine.package).damagedEntries().isEmpty());
    }
  }

  void step(Machine& machine) {
    switch (random.bounded(14)) {
      case 0:
        return openNew(machine);
      case 1:
      case 2:
        return open(machine);
      case 3:
      case 4:
      case 5:
        return type(machine);
      case 6:
      case 7:
      case 8:
        return save(machine);
      case 9:
        machine.session.refresh(nullptr);
        return;
      case 10:
        return editElsewhere(machine);
      case 11:
        return remove(machine);
      case 12:
        return settle(machine);
      case 13:
        return random.bounded(3) == 0 ? resolveAll(machine) : settle(machine);
    }
  }

  void openNew(Machine& machine) {
    // Few, so that both work on the same ones.
    if (machine.entries().size() > 3) return open(machine);
    save(machine);
    machine.session.close();
    type(machine);
  }
  void open(Machine& machine) {
    save(machine);
    const QStringList uuids = machine.entries();
    if (uuids.isEmpty()) return;
    const auto entry =
        QLJournalEntryFile::entryWithUUID(*machine.package, uuids[random.bounded(uuids.size())], nullptr);
    if (entry) machine.session.open(entry);
  }
  // Puts a new word in somewhere, and sometimes takes one out.
  QString edited(const QString& text) {
    QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    if (!words.isEmpty() && random.bounded(5) == 0) deleted.unite(wordsOf(words.takeAt(random.bounded(words.size()))));
    const QString word = u"w%1"_s.arg(++lastWord) + (random.bounded(5) == 0 ? u"\n"_s : QString());
    words.insert(random.bounded(words.size() + 1), word);
    return words.join(u' ');
  }
  void type(Machine& machine) {
    machine.text.content = edited(machine.text.content);
    machine.session.textDidChange();
  }
  void save(Machine& machine) {
    Error error;
    ASSERT_TRUE(machine.session.save(/*force=*/false, &error)) << error.description().toStdString();
    saved.unite(wordsOf(machine.text.content));
  }
  // As the other program of the same machine does, with the weather and tags.
  void editElsewhere(Machine& machine) {
    const QStringList uuids = machine.entries();
    if (uuids.isEmpty()) return;
    const auto entry =
        QLJournalEntryFile::entryWithUUID(*machine.package, uuids[random.bounded(uuids.size())], nullptr);
    if (!entry) return;
    if (random.bounded(2) == 0) entry->setString(edited(entry->string()));
    if (random.bounded(2) == 0) entry->setTags(entry->tags() << u"t%1"_s.arg(random.bounded(5)));
    entry->setWeather(QLWeather{double(random.bounded(30)), u"cloudy"_s, {}, {}, {}});
    ASSERT_TRUE(entry->saveToJournal(machine.package.get(), nullptr));
    saved.unite(wordsOf(entry->string()));
  }
  void remove(Machine& machine) {
    const QStringList uuids = machine.entries();
    if (uuids.isEmpty() || random.bounded(3) > 0) return;
    const QString uuid = uuids[random.bounded(uuids.size())];
    auto index = QLJournalIndex::unread(machine.package);
    const auto url = QLJournalEntryFile::fileURL(*machine.package, uuid, nullptr);
    ASSERT_TRUE(url);
    EXPECT_TRUE(QLJournalIndexOSXAdditions::deleteEntry(index, {uuid, *url}, /*moveToTrash=*/true, nullptr));
  }
  void settle(Machine& machine) {
    const JournalConflicts conflicts = machine.conflicts();
    const auto entries = conflicts.entries(nullptr);
    ASSERT_TRUE(entries);
    Error error;
    for (const ConflictedEntry& entry : *entries)
      EXPECT_TRUE(conflicts.settle(entry, &error)) << error.description().toStdString();
  }
  void resolveAll(Machine& machine) {
    settle(machine);
    const JournalConflicts conflicts = machine.conflicts();
    const auto entries = conflicts.entries(nullptr);
    ASSERT_TRUE(entries);
    for (const ConflictedEntry& entry : *entries) {
      Error error;
      const auto read = conflicts.read(entry, &error);
      ASSERT_TRUE(read) << error.description().toStdString();
      bool isDone = false;
      const int way = random.bounded(3);
      if (way == 0) isDone = conflicts.keep(*read, random.bounded(read->versions.size()), &error);
      if (way == 1) isDone = conflicts.keepAll(*read, nullptr, &error);
      if (way == 2) isDone = conflicts.keepMerged(*read, conflicts.merged(*read).text, &error);
      EXPECT_TRUE(isDone) << error.description().toStdString();
    }
  }

  void expectNothingLost(const Machine (&machines)[2]) {
    EXPECT_EQ(filesOf(machines[0]), filesOf(machines[1]));
    QSet<QString> there = wordsIn(machines[0].folder());
    there.unite(wordsIn(UserDirectories::current().data + u"/Trash/files"_s));
    QStringList lost = (saved - deleted - there).values();
    lost.sort();
    EXPECT_EQ(lost, QStringList());
  }
  static QMap<QString, QByteArray> filesOf(const Machine& machine) {
    QMap<QString, QByteArray> files;
    for (const QString& name : QDir(machine.folder()).entryList(QDir::Files | QDir::Hidden))
      files[name] = contentsOfFile(machine.folder() + u'/' + name).value_or("");
    return files;
  }

  QRandomGenerator random;
  int lastWord{0};
  int copies{0};
  QSet<QString> saved;    // words that a save has acknowledged
  QSet<QString> deleted;  // of which a person has taken out
};

// More by hand: QUILLO_MODEL_RUNS=500.
TEST_F(TwoMachinesTest, NoSavedWordIsLostHoweverFilesCome) {
  const int more = qEnvironmentVariableIntValue("QUILLO_MODEL_RUNS");
  const int runs = more > 0 ? more : 5;
  for (int seed = 1; seed <= runs && !HasFailure(); ++seed) run(static_cast<quint32>(seed), 120);
  EXPECT_GT(copies, 2 * runs);
}

}  // namespace quillo
