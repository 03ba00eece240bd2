#include "qlcore/index/IndexKeeper.h"

#include "foundation/FolderLock.h"
#include "foundation/Log.h"

#include <QChar>
#include <QCryptographicHash>
#include <QFileInfo>

#include <algorithm>
#include <iterator>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int applicationIdentifier = 0x514C4A49;
// To be raised with every change of the tables or of the words that are stored in them.
constexpr int tableVersion = 2;

// The words depend on the table of characters too, which an update of the system may replace.
int version() {
  return tableVersion * 1000 + static_cast<int>(QChar::currentUnicodeVersion());
}

const QString& tables(int number) {
  static const QString statements[] = {
      u"CREATE TABLE entry(id INTEGER PRIMARY KEY, file BLOB NOT NULL UNIQUE, creation REAL NOT NULL, "
      "modification REAL NOT NULL, day INTEGER NOT NULL, tags TEXT NOT NULL, place TEXT NOT NULL, "
      "digest BLOB NOT NULL)"_s,
      u"CREATE TABLE content(id INTEGER PRIMARY KEY, text BLOB NOT NULL, details BLOB NOT NULL, "
      "others BLOB NOT NULL)"_s,
      u"CREATE TABLE damage(name BLOB PRIMARY KEY, stamp BLOB NOT NULL, reason TEXT NOT NULL) WITHOUT ROWID"_s,
      u"CREATE TABLE copy(name BLOB PRIMARY KEY, uuid BLOB NOT NULL, stamp BLOB NOT NULL) WITHOUT ROWID"_s,
      u"CREATE TABLE setting(name TEXT PRIMARY KEY, value) WITHOUT ROWID"_s,
      // Its words are looked up and never read back, so it keeps no text. All bytes from 0x80 on are parts of words.
      u"CREATE VIRTUAL TABLE words USING fts5(text, tags, place, marks, content='', tokenize='ascii')"_s,
      // Segments are merged by sixteens, and all of them when there is nothing else to do.
      u"INSERT INTO words(words, rank) VALUES('automerge', 0)"_s,
      u"INSERT INTO words(words, rank) VALUES('hashsize', 33554432)"_s,
  };
  static const QString none;
  return number < static_cast<int>(std::size(statements)) ? statements[number] : none;
}

}  // namespace

IndexKeeper::IndexKeeper(const Place& place) : m_place(place) {
  open();
}

IndexKeeper::~IndexKeeper() {
  close();
}

void IndexKeeper::open() {
  ++m_openings;
  m_prefixes.reset();
  if (m_place.path.isEmpty() || !openFile(m_place.path)) openInMemory();
}

// The file, or another one beside it where that is the index of a copy of the journal.
bool IndexKeeper::openFile(const QString& path) {
  m_file.emplace(path);
  if (!m_file->makeFolder()) {
    m_file.reset();
    return false;
  }
  const FolderLock lock(m_file->folder(), FolderLock::Mode::Exclusive);
  if (!m_file->isEmpty() && m_file->isSound() && m_database.open(path, m_place.cacheKiB) && isOurs()) {
    if (!isOfOtherFolder()) return true;
    m_database.close();
    const QByteArray hash = QCryptographicHash::hash(m_place.entriesFolder.toUtf8(), QCryptographicHash::Sha1);
    m_place.path = path.chopped(7) + u'-' + QString::fromLatin1(hash.toHex().first(8)) + u".sqlite"_s;
    m_file.emplace(m_place.path);
    if (!m_file->isEmpty() && m_file->isSound() && m_database.open(m_place.path, m_place.cacheKiB) && isOurs() &&
        !isOfOtherFolder())
      return true;
  }
  m_database.close();
  m_file->discard();
  if (m_file->make() && m_database.open(m_place.path, m_place.cacheKiB) && makeTables()) {
    m_file->noteWritten();
    return true;
  }
  QLLogInfo(u"The index of the journal is kept in memory - %1: %2"_s.arg(m_place.path, m_database.failureText()));
  m_database.close();
  m_file->discard();
  m_file.reset();
  return false;
}

bool IndexKeeper::isOurs() {
  // The log goes into the file only by writeLog(), which notes it.
  return m_database.run(u"PRAGMA wal_autocheckpoint = 0"_s) && m_database.run(u"PRAGMA synchronous = NORMAL"_s) &&
         m_database.first(u"PRAGMA application_id"_s).toInt() == applicationIdentifier &&
         m_database.first(u"PRAGMA user_version"_s).toInt() == version() &&
         m_database.first(u"SELECT count(*) FROM setting WHERE name = 'folder'"_s).toInt() == 1 &&
         m_database.failure() == IndexFailure::None;
}

// A journal that was moved takes its index along; a copy, with the original still in its place, needs one of its own.
bool IndexKeeper::isOfOtherFolder() {
  const QString folder = m_database.first(u"SELECT value FROM setting WHERE name = 'folder'"_s).toString();
  if (folder == m_place.entriesFolder) return false;
  if (QFileInfo(folder).isDir()) return true;
  m_database.run(u"UPDATE setting SET value = ? WHERE name = 'folder'"_s, {m_place.entriesFolder});
  return false;
}

bool IndexKeeper::makeTables() {
  if (m_file) {
    m_database.run(u"PRAGMA journal_mode = WAL"_s);
    m_database.run(u"PRAGMA synchronous = NORMAL"_s);
    m_database.run(u"PRAGMA wal_autocheckpoint = 0"_s);
  }
  m_database.run(u"PRAGMA application_id = %1"_s.arg(applicationIdentifier));
  m_database.begin(/*forWriting=*/true);
  for (int i = 0; !tables(i).isEmpty(); ++i) m_database.run(tables(i));
  m_database.run(u"INSERT INTO setting VALUES('folder', ?)"_s, {m_place.entriesFolder});
  m_database.run(u"PRAGMA user_version = %1"_s.arg(version()));
  m_database.commit();
  writeLog();
  return m_database.failure() == IndexFailure::None;
}

void IndexKeeper::openInMemory() {
  m_file.reset();
  m_database.open(QString(), m_place.cacheKiB);
  makeTables();
}

bool IndexKeeper::check() {
  if (!m_file || m_file->isAsRemembered()) return true;
  {
    const FolderLock lock(m_file->folder(), FolderLock::Mode::Shared);
    if (!m_file->isEmpty() && m_file->isSound()) return true;
  }
  QLLogInfo(u"The index of the journal was changed by another program and is made anew - "_s + m_file->path());
  m_database.close();
  open();
  return false;
}

bool IndexKeeper::recover() {
  constexpr int mostFailures = 5;
  const IndexFailure failure = m_database.failure();
  if (failure == IndexFailure::None) return true;
  if (++m_failures > mostFailures) {
    m_failures = 0;
    return false;
  }
  m_database.rollBack();
  // The other program may be through with it the next time.
  if (failure == IndexFailure::Busy && m_failures <= 1) {
    m_database.forgetFailure();
    return true;
  }
  QLLogInfo(u"The index of the journal is made anew - %1: %2"_s.arg(m_file ? m_file->path() : u"in memory"_s,
                                                                    m_database.failureText()));
  m_database.close();
  // What cannot be written any more is of no use to the next one either; what another program holds on to is.
  if (m_file && failure != IndexFailure::Busy) {
    const FolderLock lock(m_file->folder(), FolderLock::Mode::Exclusive);
    m_file->discard();
  }
  if (failure != IndexFailure::Damaged || m_failures > 1) m_place.path.clear();
  open();
  return true;
}

const CommonPrefixes& IndexKeeper::prefixes() {
  if (!m_prefixes) {
    const QString joined = m_database.first(u"SELECT value FROM setting WHERE name = 'prefixes'"_s).toString();
    m_prefixes = CommonPrefixes(joined.split(u' ', Qt::SkipEmptyParts));
  }
  return *m_prefixes;
}

void IndexKeeper::setPrefixes(const CommonPrefixes& prefixes) {
  if (!m_database.begin(/*forWriting=*/true)) return;
  // Another program may have been first.
  if (!m_database.first(u"SELECT 1 FROM entry LIMIT 1"_s).isValid())
    m_database.run(u"INSERT OR IGNORE INTO setting VALUES('prefixes', ?)"_s, {prefixes.all().join(u' ')});
  m_database.commit();
  m_prefixes.reset();
}

void IndexKeeper::startAnew() {
  m_database.close();
  if (m_file) {
    const FolderLock lock(m_file->folder(), FolderLock::Mode::Exclusive);
    m_file->discard();
  }
  open();
}

void IndexKeeper::useMemory(bool much) {
  constexpr qint64 muchKiB = qint64{8} * 1024;
  m_database.run(u"PRAGMA cache_size = -%1"_s.arg(much ? std::max(muchKiB, m_place.cacheKiB) : m_place.cacheKiB));
  if (!much) m_database.run(u"PRAGMA shrink_memory"_s);
}

// Only here, and where the tables are made, the file itself is written to.
void IndexKeeper::writeLog() {
  if (!m_file) return;
  m_file->noteWriting();
  m_database.run(u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
  m_file->noteWritten();
}

void IndexKeeper::settle(qint64 logSize) {
  if (!m_file || m_file->logSize() <= logSize || m_database.failure() != IndexFailure::None) return;
  const FolderLock lock(m_file->folder(), FolderLock::Mode::Exclusive);
  if (m_file->isSound()) writeLog();
}

void IndexKeeper::close() {
  if (!m_file) return;
  const FolderLock lock(m_file->folder(), FolderLock::Mode::Exclusive);
  // The last one to close it writes the log into the file, where there is any. Nobody opens or closes it meanwhile, so
  // that a log that others may still begin has not us for the last one.
  const bool isSound = m_file->logSize() > 0 && m_file->isSound();
  if (isSound) m_file->noteWriting();
  m_database.close();
  if (isSound) m_file->noteWritten();
}

}  // namespace quillo
