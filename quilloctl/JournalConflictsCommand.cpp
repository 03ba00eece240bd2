#include "quilloctl/JournalConflictsCommand.h"

#include "foundation/FileContents.h"
#include "foundation/PropertyListSerialization.h"
#include "qlcore/EntryFields.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/conflicts/JournalConflicts.h"
#include "qlcore/conflicts/VersionMerge.h"
#include "quilloctl/Pager.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <map>
#include <vector>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

enum class Resolution { This, That, Both, Merge };

struct Words {
  std::optional<Resolution> resolution;
  qsizetype version{0};  // counted from one; 0 where none is named
  std::vector<std::string> identifiers;
};

// As they are counted for a person, with the entry's own file as the first even where that is missing.
qsizetype numberOf(const EntryVersions& entry, qsizetype index) {
  return index + (entry.isOrphaned() ? 2 : 1);
}

// What it is a copy of, in words.
QString originOf(const EntryVersion& version) {
  if (!version.copy) return u"this entry"_s;
  const QString name = ConflictNames::nameOf(version.copy->origin);
  return version.copy->from.isEmpty() ? name : u"%1, %2"_s.arg(name, version.copy->from);
}

QString firstLine(const QString& text) {
  constexpr qsizetype most = 200;
  return text.left(most).simplified();
}

QJsonObject json(const EntryVersions& entry, qsizetype index) {
  const EntryVersion& version = entry.versions[index];
  QJsonObject object{{u"version"_s, numberOf(entry, index)}, {u"file"_s, version.fileName}};
  if (version.copy) {
    object.insert(u"origin"_s, ConflictNames::nameOf(version.copy->origin));
    if (!version.copy->from.isEmpty()) object.insert(u"from"_s, version.copy->from);
    if (version.copy->made.isValid()) object.insert(u"made"_s, version.copy->made.toString(u"yyyy-MM-ddTHH:mm:ss"_s));
  }
  if (!version.isWhole()) {
    object.insert(u"damage"_s, version.damage);
    return object;
  }
  object.insert(u"modificationDate"_s, version.modificationDate().toISO8601());
  object.insert(u"text"_s, version.text());
  object.insert(u"tags"_s, QJsonArray::fromStringList(version.tags()));
  return object;
}

QJsonObject json(const JournalConflicts& conflicts, const EntryVersions& entry) {
  QJsonArray versions;
  for (qsizetype i = 0; i < entry.versions.size(); ++i) versions << json(entry, i);
  const MergedText merged = conflicts.merged(entry);
  return {{u"uuid"_s, entry.uuid},
          {u"versions"_s, versions},
          {u"merged"_s, QJsonObject{{u"text"_s, merged.text}, {u"clash"_s, merged.hasClash}}}};
}

void printEntry(const EntryVersions& entry) {
  print(entry.uuid);
  for (qsizetype i = 0; i < entry.versions.size(); ++i) {
    const EntryVersion& version = entry.versions[i];
    const QString saved =
        version.isWhole() ? version.modificationDate().toISO8601() + u"  "_s + firstLine(version.text()) : u"damaged"_s;
    print(u"  %1  %2  %3"_s.arg(QString::number(numberOf(entry, i)), originOf(version), saved));
  }
}

// Those that were asked for; all where none is named. Nothing, with the reason said, where one is not there.
std::optional<QList<ConflictedEntry>> wanted(const JournalConflicts& conflicts, const Words& words) {
  Error error;
  const auto all = conflicts.entries(&error);
  if (!all) {
    failed(error.localizedDescription);
    return std::nullopt;
  }
  if (words.identifiers.empty()) return all;
  QList<ConflictedEntry> entries;
  for (const std::string& given : words.identifiers) {
    const QString beginning = QString::fromStdString(given);
    QList<ConflictedEntry> found;
    for (const ConflictedEntry& entry : *all)
      if (entry.uuid.startsWith(beginning, Qt::CaseInsensitive)) found << entry;
    if (found.size() != 1) {
      failed(found.isEmpty() ? u"there is no entry %1 with other versions"_s.arg(beginning)
                             : u"several entries with other versions begin with %1"_s.arg(beginning));
      return std::nullopt;
    }
    if (!entries.contains(found[0])) entries << found[0];
  }
  return entries;
}

// The number of the version in the list that is to be kept; -1, with the reason, where that is not clear.
qsizetype chosen(const EntryVersions& entry, const Words& words, QString* reason) {
  if (words.version > 0 || words.resolution == Resolution::This) {
    const qsizetype number = words.version > 0 ? words.version : 1;
    for (qsizetype i = 0; i < entry.versions.size(); ++i)
      if (numberOf(entry, i) == number) return i;
    *reason = u"%1: there is no version %2"_s.arg(entry.uuid, QString::number(number));
    return -1;
  }
  if (entry.versions.size() - (entry.isOrphaned() ? 0 : 1) == 1) return entry.versions.size() - 1;
  *reason = u"%1: there are several others; name one with --version"_s.arg(entry.uuid);
  return -1;
}

// What was done, in words; empty, with the reason, where it failed.
QString resolve(const JournalConflicts& conflicts, const EntryVersions& entry, const Words& words, QString* reason) {
  Error error;
  QStringList added;
  const auto result = [&](bool isDone, const QString& text) {
    if (!isDone) *reason = error.localizedDescription;
    return isDone ? text : QString();
  };
  switch (*words.resolution) {
    case Resolution::Both: {
      const bool isDone = conflicts.keepAll(entry, &added, &error);
      return result(isDone, added.isEmpty() ? u"nothing to add; the damaged copies are in the Trash"_s
                                            : u"the others are entries of their own, "_s + added.join(u", "_s));
    }
    case Resolution::Merge: {
      const MergedText merged = conflicts.merged(entry);
      return result(
          conflicts.keepMerged(entry, merged.text, &error),
          merged.hasClash ? u"merged; where both have written something else, both are there"_s : u"merged"_s);
    }
    case Resolution::This:
    case Resolution::That:
      break;
  }
  const qsizetype version = chosen(entry, words, reason);
  if (version < 0) return {};
  return result(conflicts.keep(entry, version, &error),
                u"kept version %1, the others are in the Trash"_s.arg(numberOf(entry, version)));
}

int resolveAll(Context& context, const JournalConflicts& conflicts, const QList<ConflictedEntry>& entries,
               const Words& words) {
  QJsonArray results;
  int code = Done;
  for (const ConflictedEntry& conflicted : entries) {
    Error error;
    const auto entry = conflicts.read(conflicted, &error);
    QString reason = entry ? QString() : error.localizedDescription;
    // The copies are gone meanwhile.
    if (entry && !entry->isConflict()) continue;
    const QString done = entry ? resolve(conflicts, *entry, words, &reason) : QString();
    if (done.isEmpty()) {
      code = failed(reason);
      continue;
    }
    results << QJsonObject{{u"uuid"_s, conflicted.uuid}, {u"done"_s, done}};
    if (!context.json) print(u"%1: %2"_s.arg(conflicted.uuid, done));
  }
  if (context.json) printJson(results);
  return code;
}

int list(Context& context, const JournalConflicts& conflicts, const QList<ConflictedEntry>& entries) {
  Pager::begin();
  std::optional<JsonList> objects;
  if (context.json) objects.emplace();
  int code = Done;
  for (const ConflictedEntry& conflicted : entries) {
    if (outputIsGone()) break;
    Error error;
    const auto entry = conflicts.read(conflicted, &error);
    if (!entry) code = failed(error.localizedDescription);
    if (!entry || !entry->isConflict()) continue;
    if (objects)
      objects->add(json(conflicts, *entry));
    else
      printEntry(*entry);
  }
  if (objects) objects->end();
  return code;
}

int run(Context& context, const Words& words) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  const JournalConflicts conflicts(package->entriesFolder());
  const auto entries = wanted(conflicts, words);
  if (!entries) return Failed;
  return words.resolution ? resolveAll(context, conflicts, *entries, words) : list(context, conflicts, *entries);
}

// The fields of an entry's file; empty for an empty file, as git gives where there is none.
std::optional<PropertyListDictionary> fieldsOf(const std::string& path) {
  Error error;
  const auto bytes = contentsOfFile(QString::fromStdString(path), &error);
  if (bytes && bytes->isEmpty()) return PropertyListDictionary();
  const auto list = bytes ? PropertyListSerialization::propertyListWithData(*bytes, nullptr, &error)
                          : std::optional<PropertyListValue>();
  if (list && list->isDictionary()) return list->dictionary();
  const QString reason = list ? u"not an entry's file"_s : error.localizedDescription;
  failed(u"%1: %2"_s.arg(QString::fromStdString(path), reason));
  return std::nullopt;
}

int mergeFiles(const std::vector<std::string>& files) {
  const auto base = fieldsOf(files[0]);
  const auto ours = base ? fieldsOf(files[1]) : std::nullopt;
  const auto theirs = ours ? fieldsOf(files[2]) : std::nullopt;
  if (!theirs) return Failed;
  Error error;
  const auto bytes = EntryFields::serialized(VersionMerge::ofThree(*base, *ours, *theirs), &error);
  if (!bytes || !writeFileInPlace(QString::fromStdString(files[1]), *bytes, &error))
    return failed(error.localizedDescription);
  return Done;
}

void addMergeFilesCommand(CLI::App& journal, Action& action) {
  const auto files = std::make_shared<std::vector<std::string>>();
  CLI::App* command = journal.add_subcommand("merge-files", "Merge two versions of an entry's file, as git calls it");
  command
      ->add_option("SOURCE", *files, "BASE OURS THEIRS: the file that both were made from, and the two; OURS gets both")
      ->required()
      ->expected(3);
  command->callback([&action, files] { action = [files](Context&) { return mergeFiles(*files); }; });
}

}  // namespace

void addJournalConflictsCommand(CLI::App& journal, Action& action) {
  static const std::map<std::string, Resolution> resolutions{
      {"this", Resolution::This}, {"that", Resolution::That}, {"both", Resolution::Both}, {"merge", Resolution::Merge}};
  addMergeFilesCommand(journal, action);
  const auto words = std::make_shared<Words>();
  const auto resolution = std::make_shared<Resolution>();
  CLI::App* command = journal.add_subcommand(
      "conflicts", "List the entries of which a synchroniser has left several versions, and resolve them");
  command->add_option("ID", words->identifiers,
                      "Beginnings of the identifiers of such entries; all where none is named");
  CLI::Option* resolve =
      command
          ->add_option("--resolve", *resolution,
                       "this: keep the entry as it is; that: keep the other version; both: make the others entries of "
                       "their own; merge: put the texts together. What gives way goes to the Trash")
          ->transform(CLI::CheckedTransformer(resolutions, CLI::ignore_case));
  command->add_option("--version", words->version, "With --resolve that: the number of the version to keep, as listed")
      ->check(atLeastOne())
      ->needs(resolve);
  command->callback([&action, words, resolution, resolve] {
    if (resolve->count() > 0) words->resolution = *resolution;
    if (words->version > 0 && words->resolution != Resolution::That)
      throw CLI::ValidationError("--version", "goes with --resolve that");
    action = [words](Context& context) { return run(context, *words); };
  });
}

}  // namespace quillo::ctl
