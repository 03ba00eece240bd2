#include "qlcore/index/IndexUpdate.h"

#include "qlcore/ConflictNames.h"
#include "qlcore/JournalError.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/index/EntryReaders.h"
#include "qlcore/index/FolderScan.h"
#include "qlcore/index/IndexWriter.h"
#include "qlcore/index/KnownFiles.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <fcntl.h>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;
using Update = JournalSearchIndex::Update;
using Progress = JournalSearchIndex::Progress;
using ProgressCallback = JournalSearchIndex::ProgressCallback;

namespace {

// What is written at once: the first few soon, for there to be something to see, then as many as are quick to write.
constexpr size_t firstPortion = 512;
constexpr size_t portion = 8192;
// From so many on, sorting all for an index at once is quicker than adding to it one by one.
constexpr size_t many = 5000;
constexpr std::chrono::milliseconds pulse{8};
// The log grows to that size before it is moved into the file.
constexpr qint64 largestLog = qint64{16} * 1024 * 1024;

FileDescriptor openFolder(const QString& path) {
  return FileDescriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

}  // namespace

Update IndexUpdate::all(const std::stop_token& stop, const ProgressCallback& progress) {
  Update update;
  Error reason;
  const auto folder = JournalFolder::open(m_entriesFolder, &reason);
  const FileDescriptor descriptor = openFolder(m_entriesFolder);
  if (!folder || !descriptor.isOpen()) {
    // A journal may lack the folder as long as it has no entries; one that is gone with all its folders may come back.
    const bool isEmptyJournal =
        reason.code == ErrorCode::fileReadNoSuchFile && QFileInfo(QFileInfo(m_entriesFolder).path()).isDir();
    if (isEmptyJournal)
      removeEverything(update);
    else
      update.error = JournalError::make(JournalError::NotReadable, reason.localizedDescription);
    update.isComplete = isEmptyJournal;
    return update;
  }
  startAnewIfGrown();
  // Files that change while they are read are looked at again, but not for ever.
  constexpr int mostTurns = 3;
  for (int turn = 0; turn < mostTurns; ++turn) {
    const int openings = m_keeper.openings();
    KnownFiles known(m_keeper.database());
    FolderScan scan(descriptor.number(), m_threads);
    // Before the names are read: what comes or goes from now on gives the folder another stamp.
    const auto names = EntryFileStamp::ofNames(descriptor.number());
    // Looked at while what is known is read, unless its names are those of the folder.
    const bool hasNames = turn == 0 && names && known.areAllOf(*names);
    if (!hasNames) scan.start();
    known.read();
    if (hasNames) scan.start(known);
    // Whoever asks meanwhile is not to wait for the end.
    while (!stop.stop_requested() && !scan.waitFor(pulse))
      if (progress) progress({});
    if (!scan.wait()) {
      update.error = JournalError::make(JournalError::NotReadable,
                                        fileReadError(scan.errnoNumber(), m_entriesFolder).localizedDescription);
      update.isComplete = false;
      return update;
    }
    const qsizetype left = readAndWrite(*folder, descriptor.number(), compare(known, scan), update, stop, progress);
    update.isComplete = left == 0 && !stop.stop_requested();
    // Asked in between, it may have had to begin with an empty database.
    if (update.isComplete && names && m_keeper.openings() == openings) known.noteAllOf(*names);
    if (left == 0 || stop.stop_requested() || m_keeper.database().failure() != IndexFailure::None) break;
  }
  makeSecondaryIndexes();
  return update;
}

Update IndexUpdate::some(const QStringList& fileNames) {
  Update update;
  Error reason;
  const auto folder = JournalFolder::open(m_entriesFolder, &reason);
  const FileDescriptor descriptor = openFolder(m_entriesFolder);
  if (!folder || !descriptor.isOpen()) return all({}, {});
  update.isComplete =
      readAndWrite(*folder, descriptor.number(), named(fileNames, descriptor.number()), update, {}, {}) == 0;
  return update;
}

// What is to be read where these files may have changed.
IndexUpdate::Difference IndexUpdate::named(const QStringList& fileNames, int folder) {
  Difference difference;
  QSet<QByteArray> names;
  for (const QString& fileName : fileNames) {
    const QByteArray name = QFile::encodeName(fileName);
    if (name.contains('/') || !ConflictNames::hasEnding(name)) continue;
    if (ConflictNames::isTemporary(fileName)) continue;
    const auto copied = EntryFileKey::ofCopy(name);
    const auto key = copied ? copied : EntryFileKey::fromName(name);
    names.insert(copied ? copied->fileName() : name);
    if (!key) continue;
    QList<QByteArray>& copies = difference.copies[key->uuidBytes()];
    if (copied && !copies.contains(name)) copies << name;
    // Of two files of one entry, whether the one counts depends on the other.
    for (const bool isLowerCase : {false, true})
      if (const QByteArray other = EntryFileKey{key->uuid, isLowerCase}.fileName(); EntryFileStamp::of(folder, other))
        names.insert(other);
  }
  // A copy that is told of has others beside it that are known.
  IndexDatabase::Rows rows = m_keeper.database().rows(u"SELECT name, uuid FROM copy"_s);
  while (rows.next()) {
    const auto copies = difference.copies.find(rows.value(1).toByteArray());
    const QByteArray name = rows.value(0).toByteArray();
    if (copies != difference.copies.end() && !copies->contains(name)) *copies << name;
  }
  difference.toRead.assign(names.cbegin(), names.cend());
  return difference;
}

void IndexUpdate::removeEverything(Update& update) {
  std::vector<QByteArray> names;
  {
    IndexDatabase::Rows rows = m_keeper.database().rows(u"SELECT file FROM entry"_s);
    while (rows.next())
      if (const auto file = StampedFile::decoded(rows.value(0).toByteArray())) names.push_back(file->key.fileName());
    IndexDatabase::Rows damage = m_keeper.database().rows(u"SELECT name FROM damage"_s);
    while (damage.next()) names.push_back(damage.value(0).toByteArray());
  }
  m_keeper.database().run(u"DELETE FROM copy"_s);
  // No folder: none of them is there.
  IndexWriter writer(m_keeper.database(), -1, m_keeper.prefixes());
  writer.remove(names);
  update.removed += writer.removed();
}

IndexUpdate::Difference IndexUpdate::compare(const KnownFiles& known, const FolderScan& scan) {
  QHash<QByteArray, EntryFileStamp> damaged = known.damaged();
  Difference difference;
  // What is damaged is read again when its file differs, as everything is.
  const auto readUnlessDamaged = [&](const QByteArray& name, const EntryFileStamp& stamp) {
    const auto damage = damaged.constFind(name);
    if (damage == damaged.constEnd() || *damage != stamp) difference.toRead.push_back(name);
    damaged.remove(name);
  };
  // The next row that has no file yet.
  qsizetype next = 0;
  StampedFile row;
  const auto advance = [&] {
    if (next < known.count()) row = known.entry(next);
    return next++ < known.count();
  };
  bool hasRow = advance();
  for (const StampedFile& file : scan.entries()) {
    for (; hasRow && row.key < file.key; hasRow = advance()) difference.toRemove.push_back(row.key.fileName());
    if (!hasRow || row.key != file.key) {
      readUnlessDamaged(file.key.fileName(), file.stamp);
      continue;
    }
    if (row.stamp != file.stamp) difference.toRead.push_back(file.key.fileName());
    hasRow = advance();
  }
  for (; hasRow; hasRow = advance()) difference.toRemove.push_back(row.key.fileName());
  for (auto other = scan.others().cbegin(); other != scan.others().cend(); ++other)
    if (!ConflictNames::isConflictCopy(other.key())) readUnlessDamaged(other.key(), other.value());
  for (auto left = damaged.cbegin(); left != damaged.cend(); ++left) difference.toRemove.push_back(left.key());
  compareCopies(known, scan, difference);
  return difference;
}

// An entry is read again when one of its copies has come, gone or changed.
void IndexUpdate::compareCopies(const KnownFiles& known, const FolderScan& scan, Difference& difference) {
  QSet<QByteArray> changed;  // identifiers
  for (auto other = scan.others().cbegin(); other != scan.others().cend(); ++other) {
    const auto key = EntryFileKey::ofCopy(other.key());
    if (!key) continue;
    difference.copies[key->uuidBytes()] << other.key();
    const auto before = known.copies().constFind(other.key());
    if (before == known.copies().constEnd() || *before != other.value()) changed.insert(key->fileName());
  }
  for (auto copy = known.copies().cbegin(); copy != known.copies().cend(); ++copy)
    if (const auto key = EntryFileKey::ofCopy(copy.key()); key && !scan.others().contains(copy.key()))
      changed.insert(key->fileName());
  if (changed.isEmpty()) return;
  // The one in lower case, where that is the entry's only file.
  const auto hasFile = [&scan](const EntryFileKey& wanted) {
    const auto found =
        std::lower_bound(scan.entries().begin(), scan.entries().end(), wanted,
                         [](const StampedFile& file, const EntryFileKey& key) { return file.key < key; });
    return found != scan.entries().end() && found->key == wanted;
  };
  const QSet<QByteArray> toRead(difference.toRead.begin(), difference.toRead.end());
  for (const QByteArray& name : std::as_const(changed)) {
    EntryFileKey key = EntryFileKey::fromName(name).value_or(EntryFileKey());
    const EntryFileKey lower{key.uuid, true};
    if (!hasFile(key) && hasFile(lower)) key = lower;
    if (!toRead.contains(key.fileName())) difference.toRead.push_back(key.fileName());
  }
}

qsizetype IndexUpdate::readAndWrite(const JournalFolder& folder, int descriptor, Difference difference, Update& update,
                                    const std::stop_token& stop, const ProgressCallback& progress) {
  const bool isLarge = difference.toRead.size() >= many;
  if (isLarge) m_keeper.useMemory(true);
  settlePrefixes(folder, descriptor, difference.toRead);
  const CommonPrefixes prefixes = m_keeper.prefixes();
  IndexWriter writer(m_keeper.database(), descriptor, prefixes);
  writer.remove(difference.toRemove);
  Progress done{0, static_cast<qsizetype>(difference.toRead.size())};
  EntryReaders readers(folder, descriptor, prefixes, difference.copies, std::move(difference.toRead), m_threads);
  std::vector<FileReading> batch;
  size_t batchSize = firstPortion;
  const auto write = [&] {
    done.done += static_cast<qsizetype>(batch.size());
    writer.write(std::exchange(batch, {}));
    m_keeper.settle(largestLog);
    if (progress) progress(done);
  };
  QDeadlineTimer isDue(200);
  while (m_keeper.database().failure() == IndexFailure::None) {
    std::vector<FileReading> taken = readers.take();
    if (taken.empty() || stop.stop_requested()) break;
    std::move(taken.begin(), taken.end(), std::back_inserter(batch));
    if (batch.size() < batchSize && !isDue.hasExpired()) continue;
    write();
    batchSize = portion;
    isDue.setRemainingTime(1000);
  }
  if (!batch.empty()) write();
  if (isLarge) m_keeper.useMemory(false);
  update.changed += writer.changed();
  update.removed += writer.removed();
  return writer.overtaken();
}

// An index that was made when the journal was small has no marks for common beginnings of words.
void IndexUpdate::startAnewIfGrown() {
  constexpr qint64 grown = 4 * many;
  IndexDatabase& database = m_keeper.database();
  if (database.first(u"SELECT 1 FROM setting WHERE name = 'prefixes'"_s).isValid()) return;
  if (database.first(u"SELECT count(*) FROM entry"_s).toLongLong() >= grown) m_keeper.startAnew();
}

// Of a journal that is indexed for the first time and is large enough for that to matter.
void IndexUpdate::settlePrefixes(const JournalFolder& folder, int descriptor, const std::vector<QByteArray>& names) {
  constexpr size_t sampleSize = 300;
  if (names.size() < many || m_keeper.database().first(u"SELECT 1 FROM entry LIMIT 1"_s).isValid()) return;
  const CommonPrefixes none;
  const CopyNames noCopies;
  EntryReader reader(folder, descriptor, none, noCopies);
  QStringList texts;
  for (size_t i = 0; i < sampleSize; ++i) {
    const FileReading reading = reader.read(names[i * names.size() / sampleSize]);
    if (reading.entry) texts << QString::fromUtf8(reading.entry->text);
  }
  m_keeper.setPrefixes(CommonPrefixes::ofSample(texts));
}

// For counting by them, which the entries' own order does not serve. Made when most entries are there.
void IndexUpdate::makeSecondaryIndexes() {
  IndexDatabase& database = m_keeper.database();
  if (database.first(u"SELECT 1 FROM setting WHERE name = 'indexed'"_s).isValid()) return;
  if (!database.begin(/*forWriting=*/true)) return;
  database.run(u"CREATE INDEX IF NOT EXISTS entry_day ON entry(day)"_s);
  database.run(u"CREATE INDEX IF NOT EXISTS entry_tags ON entry(tags, id)"_s);
  database.run(u"CREATE INDEX IF NOT EXISTS entry_place ON entry(place, id)"_s);
  database.run(u"INSERT OR REPLACE INTO setting VALUES('indexed', 1)"_s);
  database.commit();
}

}  // namespace quillo
