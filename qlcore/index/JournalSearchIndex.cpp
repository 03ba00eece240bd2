#include "qlcore/index/JournalSearchIndex.h"

#include "foundation/UserDirectories.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/index/EntryExcerpt.h"
#include "qlcore/index/IndexKeeper.h"
#include "qlcore/index/IndexUpdate.h"
#include "qlcore/index/IndexWriter.h"
#include "qlcore/index/QuestionQuery.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

std::optional<dev_t> deviceOf(QString path) {
  // What is not there yet will be made on the file system of the folder above it.
  struct stat status {};
  while (::stat(QFile::encodeName(path).constData(), &status) != 0) {
    const QString above = QFileInfo(path).path();
    if (above == path) return std::nullopt;
    path = above;
  }
  return status.st_dev;
}

// Where the index of the package is kept; empty where it must not leave memory.
QString pathOfIndex(const QLJournalPackageFile& package, const JournalSearchIndex::Options& options) {
  const QString caches = options.cacheFolder.isEmpty() ? UserDirectories::current().caches : options.cacheFolder;
  const QString folder = caches + u"/quillo/index"_s;
  // The text of a journal on an encrypted or removable disk stays there.
  if (options.isInMemory || deviceOf(folder) != deviceOf(package.entriesFolder())) return {};
  // An identifier comes from a file that others write, and may be missing.
  const auto identifier = QLJournalEntryFile::canonicalUUID(package.identifier());
  const QByteArray path = QFileInfo(package.url().toLocalFile()).canonicalFilePath().toUtf8();
  const QString name =
      identifier ? *identifier : QString::fromLatin1(QCryptographicHash::hash(path, QCryptographicHash::Sha1).toHex());
  return folder + u'/' + name + u".sqlite"_s;
}

}  // namespace

// What is open, and the work on it: each piece is tried again where the database turned out damaged.
class JournalSearchIndex::OpenIndex {
 public:
  OpenIndex(const QLJournalPackageFile& package, const Options& options)
      : m_entriesFolder(QFileInfo(package.url().toLocalFile()).canonicalFilePath() + u"/Entries"_s),
        m_threads(options.readers > 0 ? options.readers : std::max(std::thread::hardware_concurrency(), 1U)),
        m_keeper({pathOfIndex(package, options), m_entriesFolder, options.cacheKiB}),
        m_seen(version()) {}

  [[nodiscard]] bool isInMemory() const { return m_keeper.isInMemory(); }
  [[nodiscard]] const CommonPrefixes& prefixes() { return m_keeper.prefixes(); }

  Update update(const std::function<Update(IndexUpdate&)>& work) {
    Update update;
    m_isUpdating = true;
    attempt([&] {
      IndexUpdate once(m_keeper, m_entriesFolder, m_threads);
      update = work(once);
    });
    m_isUpdating = false;
    const Version now = version();
    update.isFromOthers = now != std::exchange(m_seen, now);
    return update;
  }

  // An answer that needs what was known before: that is found anew where it had to be thrown away.
  void answer(const std::function<void(IndexDatabase&)>& work) {
    attempt([&] {
      // Asked while it is brought up to date, it answers with what there is.
      if (m_isRead && m_wasReplaced && !m_isUpdating)
        static_cast<void>(IndexUpdate(m_keeper, m_entriesFolder, m_threads).all({}, {}));
      m_wasReplaced = m_wasReplaced && m_isUpdating;
      if (!m_keeper.database().begin(/*forWriting=*/false)) return;
      work(m_keeper.database());
      m_keeper.database().commit();
    });
  }

  bool tidyUp();
  void noteRead() {
    m_isRead = true;
    m_wasReplaced = false;
  }

 private:
  // Which database it is, and a number that is another one after each change by other programs.
  using Version = std::pair<int, qint64>;
  [[nodiscard]] Version version() {
    const qint64 number = m_keeper.database().first(u"PRAGMA data_version"_s).toLongLong();
    return {m_keeper.openings(), number};
  }

  void attempt(const std::function<void()>& work) {
    // More often than the keeper has ways out.
    constexpr int mostAttempts = 8;
    for (int i = 0; i < mostAttempts; ++i) {
      if (!m_keeper.check()) m_wasReplaced = true;
      const int openings = m_keeper.openings();
      work();
      const bool hasFailed = m_keeper.database().failure() != IndexFailure::None;
      if (!hasFailed && m_keeper.openings() == openings) return m_keeper.noteSuccess();
      if (hasFailed && !m_keeper.recover()) return;
      // A question that came in between may have replaced it too.
      m_wasReplaced = m_wasReplaced || m_keeper.openings() != openings;
    }
  }

  QString m_entriesFolder;
  unsigned m_threads;
  IndexKeeper m_keeper;
  Version m_seen;
  bool m_isRead{false};  // it has been up to date once
  bool m_isUpdating{false};
  bool m_wasReplaced{false};  // it has been emptied since
};

JournalSearchIndex::JournalSearchIndex(const QLJournalPackageFile& package) : JournalSearchIndex(package, Options()) {}

JournalSearchIndex::JournalSearchIndex(const QLJournalPackageFile& package, const Options& options)
    : m_open(std::make_unique<OpenIndex>(package, options)) {}

JournalSearchIndex::~JournalSearchIndex() = default;

bool JournalSearchIndex::isInMemory() const {
  return m_open->isInMemory();
}

JournalSearchIndex::Update JournalSearchIndex::bringUpToDate(const std::stop_token& stop,
                                                             const ProgressCallback& progress) {
  Update update = m_open->update([&](IndexUpdate& once) { return once.all(stop, progress); });
  if (update.isComplete) m_open->noteRead();
  return update;
}

JournalSearchIndex::Update JournalSearchIndex::bringUpToDate(const QStringList& fileNames) {
  return m_open->update([&](IndexUpdate& once) { return once.some(fileNames); });
}

JournalAnswer JournalSearchIndex::ask(const JournalQuestion& question) {
  JournalAnswer answer;
  m_open->answer([&](IndexDatabase& database) {
    answer = {};
    QuestionQuery query(database, m_open->prefixes(), question);
    if (question.isCounted) {
      answer.total = query.total();
      if (answer.total == 0) return;
    }
    const EntryExcerpt excerpt(question);
    for (const qint64 id : query.ids()) {
      const auto record = IndexWriter::record(database, id);
      if (!record) return;
      answer.entries << record->toEntry();
      excerpt.find(answer.entries.last());
    }
  });
  return answer;
}

QList<JournalCount> JournalSearchIndex::counts(const JournalQuestion& question, JournalCountBy by) {
  QList<JournalCount> counts;
  m_open->answer(
      [&](IndexDatabase& database) { counts = QuestionQuery(database, m_open->prefixes(), question).counts(by); });
  return counts;
}

namespace {

// The identifiers between two, as rows hold them; files in lower case come right after those in upper case.
std::vector<StampedFile> filesFrom(IndexDatabase& database, const QByteArray& from, const QByteArray& to, int limit) {
  std::vector<StampedFile> files;
  IndexDatabase::Rows rows =
      database.rows(u"SELECT file FROM entry WHERE file >= ? AND file <= ? ORDER BY file LIMIT ?"_s, {from, to, limit});
  while (rows.next())
    if (const auto file = StampedFile::decoded(rows.value(0).toByteArray())) files.push_back(*file);
  return files;
}

// The first and the last identifier that begin with `prefix`; nothing where none can.
std::optional<std::pair<EntryFileKey, EntryFileKey>> keysWithPrefix(const QString& prefix) {
  static const QByteArray lowest = "00000000-0000-0000-0000-000000000000.plist";
  if (prefix.size() > lowest.size() - 6) return std::nullopt;
  const QByteArray given = prefix.toUpper().toLatin1();
  QByteArray low = given + lowest.sliced(given.size());
  QByteArray high = given + QByteArray(lowest).replace('0', 'F').sliced(given.size());
  const auto last = EntryFileKey::fromName(high);
  // The identifier of zeros only is none.
  const auto first = EntryFileKey::fromName(low);
  if (!last) return std::nullopt;
  return std::pair{first.value_or(EntryFileKey()), *last};
}

}  // namespace

std::optional<IndexedEntry> JournalSearchIndex::entryWithUUID(const QString& uuid) {
  std::optional<IndexedEntry> entry;
  const auto canonical = QLJournalEntryFile::canonicalUUID(uuid);
  const auto key =
      canonical ? EntryFileKey::fromName(QLJournalEntryFile::fileName(*canonical).toLatin1()) : std::nullopt;
  if (!key) return entry;
  m_open->answer([&](IndexDatabase& database) {
    const QByteArray from = StampedFile::encodedKey(*key);
    const QVariant id = database.first(u"SELECT id FROM entry WHERE file >= ? AND file < ? ORDER BY file LIMIT 1"_s,
                                       {from, from.chopped(1) + '\2'});
    const auto record = id.isNull() ? std::nullopt : IndexWriter::record(database, id.toLongLong());
    entry = record ? std::optional(record->toEntry()) : std::nullopt;
    if (entry) EntryExcerpt(JournalQuestion()).find(*entry);
  });
  return entry;
}

QStringList JournalSearchIndex::uuidsWithPrefix(const QString& prefix, int limit) {
  QStringList uuids;
  const auto keys = keysWithPrefix(prefix);
  if (!keys || limit <= 0) return uuids;
  m_open->answer([&](IndexDatabase& database) {
    uuids.clear();
    // Behind all that begin with the last one.
    const QByteArray to = StampedFile::encodedKey(keys->second).chopped(1) + '\2';
    for (const StampedFile& file : filesFrom(database, StampedFile::encodedKey(keys->first), to, limit))
      uuids << file.key.uuidText();
    IndexDatabase::Rows rows = database.rows(u"SELECT name FROM damage"_s);
    while (rows.next())
      if (const auto key = EntryFileKey::fromName(rows.value(0).toByteArray());
          key && key->uuid >= keys->first.uuid && key->uuid <= keys->second.uuid)
        uuids << key->uuidText();
  });
  uuids.sort();
  uuids.removeDuplicates();
  return uuids.first(std::min<qsizetype>(uuids.size(), limit));
}

std::optional<QString> JournalSearchIndex::newestUUID() {
  std::optional<QString> uuid;
  m_open->answer([&](IndexDatabase& database) {
    const auto file =
        StampedFile::decoded(database.first(u"SELECT file FROM entry ORDER BY id DESC LIMIT 1"_s).toByteArray());
    uuid = file ? std::optional(file->key.uuidText()) : std::nullopt;
  });
  return uuid;
}

QList<IndexedDamage> JournalSearchIndex::damagedEntries() {
  QList<IndexedDamage> damaged;
  m_open->answer([&](IndexDatabase& database) {
    damaged.clear();
    IndexDatabase::Rows rows = database.rows(u"SELECT name, reason FROM damage ORDER BY name"_s);
    while (rows.next()) {
      const QByteArray name = rows.value(0).toByteArray();
      const auto key = EntryFileKey::fromName(name);
      damaged << IndexedDamage{QFile::decodeName(name), key ? key->uuidText() : QString(), rows.value(1).toString()};
    }
  });
  return damaged;
}

QList<ConflictedEntry> JournalSearchIndex::conflicts() {
  QList<ConflictedEntry> conflicts;
  m_open->answer([&](IndexDatabase& database) {
    conflicts.clear();
    IndexDatabase::Rows rows = database.rows(u"SELECT name FROM copy ORDER BY uuid, name"_s);
    while (rows.next()) {
      const QByteArray name = rows.value(0).toByteArray();
      const auto key = EntryFileKey::ofCopy(name);
      if (!key) continue;
      const QString uuid = key->uuidText();
      if (conflicts.isEmpty() || conflicts.constLast().uuid != uuid) conflicts << ConflictedEntry{uuid, {}};
      conflicts.last().copies << QFile::decodeName(name);
    }
  });
  return conflicts;
}

bool JournalSearchIndex::tidyUp() {
  return m_open->tidyUp();
}

// Merges all parts of the full-text table into one, in which nothing is left of what was deleted.
bool JournalSearchIndex::OpenIndex::tidyUp() {
  bool isLeft = false;
  attempt([&] {
    IndexDatabase& database = m_keeper.database();
    const QString step = database.first(u"SELECT value FROM setting WHERE name = 'untidy'"_s).toString();
    if (step.isEmpty()) return m_keeper.settle(0);
    if (!database.begin(/*forWriting=*/true)) return;
    // The first step takes in all parts that there are, the others go on with them. Pages a step; a few milliseconds.
    const qint64 before = database.first(u"SELECT total_changes()"_s).toLongLong();
    const bool isFirst = step == u"1";
    database.run(u"INSERT INTO words(words, rank) VALUES('merge', ?)"_s, {isFirst ? -200 : 200});
    isLeft = isFirst || database.first(u"SELECT total_changes()"_s).toLongLong() - before > 1;
    if (isLeft)
      database.run(u"INSERT OR REPLACE INTO setting VALUES('untidy', 2)"_s);
    else
      database.run(u"DELETE FROM setting WHERE name = 'untidy'"_s);
    database.commit();
    if (!isLeft) m_keeper.settle(0);
  });
  return isLeft;
}

}  // namespace quillo
