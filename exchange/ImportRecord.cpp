#include "exchange/ImportRecord.h"

#include "qlcore/QLJournalEntryFile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int currentVersion = 1;
// The last line is short.
constexpr qint64 longestEnd = 512;
// Above that of the largest file that an entry can be, in base64.
constexpr qint64 longestLine = qint64{512} * 1024 * 1024;

QByteArray lineOf(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

QByteArray lineOf(const ImportStep& step) {
  QJsonObject object{{u"file"_s, step.fileName}, {u"hash"_s, QString::fromLatin1(step.hash.toHex())}};
  if (step.old) object[u"old"_s] = QString::fromLatin1(qCompress(*step.old).toBase64());
  return lineOf(object);
}

// Names become paths; the file may have been changed by anybody.
bool isEntryFileName(const QString& name) {
  const auto uuid = QLJournalEntryFile::canonicalUUID(name.left(name.lastIndexOf(u'.')));
  if (!uuid) return false;
  const auto names = QLJournalEntryFile::fileNames(*uuid);
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::optional<ImportStep> stepOf(const QJsonObject& object) {
  ImportStep step{object[u"file"_s].toString(), QByteArray::fromHex(object[u"hash"_s].toString().toLatin1()), {}};
  if (!isEntryFileName(step.fileName) || step.hash.isEmpty()) return std::nullopt;
  const QJsonValue old = object[u"old"_s];
  if (old.isString()) step.old = qUncompress(QByteArray::fromBase64(old.toString().toLatin1()));
  return step;
}

bool isHead(const QJsonObject& object) {
  return object[u"import"_s].toInt() == currentVersion;
}

bool isEnd(const QJsonObject& object) {
  return object.contains(u"added"_s);
}

// The object that stands in the line; an empty one where it is none.
QJsonObject objectOf(const QByteArray& line) {
  return line.endsWith('\n') ? QJsonDocument::fromJson(line).object() : QJsonObject();
}

// The counts of the last line. The steps may be very many.
void readEnd(QFile& file, ImportRecordHead& head) {
  const qint64 position = file.pos();
  file.seek(std::max<qint64>(file.size() - longestEnd, 0));
  const QByteArray tail = file.readAll();
  const QJsonObject object = objectOf(tail.mid(tail.lastIndexOf('\n', tail.size() - 2) + 1));
  head.added = object[u"added"_s].toInteger();
  head.replaced = object[u"replaced"_s].toInteger();
  head.hasEnd = isEnd(object);
  file.seek(position);
}

// The steps behind the first line.
bool readSteps(QFile& file, bool hasEnd, const std::function<bool(const ImportStep&)>& take, Error* error) {
  // Bounded by the length of the file.
  for (int number = 2; !file.atEnd(); ++number) {
    const QJsonObject object = objectOf(file.readLine(longestLine));
    if (isEnd(object)) return true;
    const auto step = stepOf(object);
    if (!step && !hasEnd) return true;
    if (!step)
      return fail(error,
                  cocoaError(ErrorCode::fileReadCorrupt,
                             u"%1: the note of an import is damaged in line %2"_s.arg(file.fileName()).arg(number)));
    if (!take(*step)) return true;
  }
  return true;
}

std::optional<ImportRecordHead> readHead(QFile& file) {
  const QJsonObject object = objectOf(file.readLine(longestLine));
  if (!isHead(object)) return std::nullopt;
  ImportRecordHead head{{object[u"source"_s].toString(), object[u"format"_s].toString()},
                        Date::fromISO8601(object[u"started"_s].toString()).value_or(Date())};
  readEnd(file, head);
  return head;
}

}  // namespace

QByteArray ImportStep::hashOf(const QByteArray& bytes) {
  return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

std::optional<ImportRecord> ImportRecord::begin(const QString& path, const ImportOrigin& origin, Error* error) {
  FileDescriptor file(::open(QFile::encodeName(path).constData(),
                             O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.isOpen()) {
    fail(error, fileWriteError(errno, path));
    return std::nullopt;
  }
  ImportRecord record(std::move(file), path);
  const QByteArray head = lineOf(QJsonObject{{u"import"_s, currentVersion},
                                             {u"source"_s, origin.path},
                                             {u"format"_s, origin.format},
                                             {u"started"_s, Date::now().toISO8601()}});
  if (record.appendLines(head, error)) return record;
  ::unlink(QFile::encodeName(path).constData());
  return std::nullopt;
}

bool ImportRecord::appendLines(const QByteArray& lines, Error* error) {
  int number = writeAll(m_file.number(), lines);
  if (number == 0 && ::fdatasync(m_file.number()) != 0) number = errno;
  if (number == 0) {
    m_size += lines.size();
    return true;
  }
  // Where that fails, too, the torn line says as much.
  static_cast<void>(::ftruncate(m_file.number(), m_size) == 0);
  return fail(error, fileWriteError(number, m_path));
}

bool ImportRecord::append(const QList<ImportStep>& steps, Error* error) {
  QByteArray lines;
  for (const ImportStep& step : steps) lines += lineOf(step);
  if (!appendLines(lines, error)) return false;
  for (const ImportStep& step : steps) ++(step.old ? m_replaced : m_added);
  return true;
}

bool ImportRecord::end(Error* error) {
  return appendLines(lineOf(QJsonObject{{u"added"_s, m_added}, {u"replaced"_s, m_replaced}}), error);
}

bool ImportRecord::forEachStep(const QString& path, const std::function<bool(const ImportStep&)>& take, Error* error) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return fail(error, cocoaError(ErrorCode::fileReadUnknown, path + u": "_s + file.errorString()));
  const auto head = readHead(file);
  return head ? readSteps(file, head->hasEnd, take, error)
              : fail(error, cocoaError(ErrorCode::fileReadCorrupt, path + u": the note of an import is damaged"_s));
}

std::optional<ImportRecordHead> ImportRecord::head(const QString& path) {
  QFile file(path);
  auto head = file.open(QIODevice::ReadOnly) ? readHead(file) : std::nullopt;
  if (!head || head->hasEnd) return head;
  const auto count = [&head](const ImportStep& step) {
    ++(step.old ? head->replaced : head->added);
    return true;
  };
  static_cast<void>(readSteps(file, head->hasEnd, count, nullptr));
  return head;
}

}  // namespace quillo
