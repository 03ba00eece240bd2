#include "exchange/backup/BackupRecord.h"

#include "foundation/FileContents.h"
#include "foundation/Log.h"
#include "foundation/PropertyListSerialization.h"
#include "qlcore/StorableValues.h"

#include <QDir>
#include <QFileInfo>

#include <signal.h>
#include <unistd.h>

#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView lastMadeKey{"lastMade"};
constexpr QLatin1StringView lastPathKey{"lastPath"};
constexpr QLatin1StringView lastTryKey{"lastTry"};
constexpr QLatin1StringView failureKey{"failure"};
constexpr QLatin1StringView processKey{"process"};  // of a run that is going on

QString pathIn(const UserDirectories& directories) {
  return directories.state + u"/quillo/Backup.plist"_s;
}

bool isGone(qint64 process) {
  return process <= 0 || (::kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH);
}

void write(const BackupRecord& record, bool isGoingOn, const UserDirectories& directories) {
  PropertyListDictionary fields;
  if (record.lastMade) fields.insert(lastMadeKey, *record.lastMade);
  if (record.lastTry) fields.insert(lastTryKey, *record.lastTry);
  if (!record.lastPath.isEmpty()) fields.insert(lastPathKey, storableText(record.lastPath));
  if (!record.failure.isEmpty()) fields.insert(failureKey, storableText(record.failure));
  if (isGoingOn) fields.insert(processKey, qint64{::getpid()});
  const QString path = pathIn(directories);
  QDir().mkpath(QFileInfo(path).path());
  const auto bytes = PropertyListSerialization::dataWithPropertyList(fields, PropertyListFormat::XML);
  Error error;
  if (bytes && !writeFileAtomically(path, *bytes, &error))
    QLLogWarn(u"What became of the backup could not be noted - %1"_s.arg(error.description()));
}

}  // namespace

BackupRecord BackupRecord::of(const UserDirectories& directories) {
  BackupRecord record;
  const auto bytes = contentsOfFile(pathIn(directories));
  const auto list = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
  if (!list) return record;
  const PropertyListDictionary& fields = list->dictionary();
  record.lastMade = storableDate(fields.value(lastMadeKey));
  record.lastPath = fields.value(lastPathKey).string();
  record.lastTry = storableDate(fields.value(lastTryKey));
  record.failure = fields.value(failureKey).string();
  if (fields.contains(processKey) && isGone(fields.value(processKey).integerValue()))
    record.failure = u"it was ended before it was done"_s;
  return record;
}

JournalBackup::Result BackupRecord::record(const JournalBackup& backup, const UserDirectories& directories) {
  const BackupRecord before = of(directories);
  BackupRecord record = before;
  record.lastTry = storableNow();
  write(record, /*isGoingOn=*/true, directories);
  const JournalBackup::Result result = backup.run();
  switch (result.outcome) {
    case JournalBackup::Outcome::Made:
      record.lastMade = record.lastTry;
      record.lastPath = result.path;
      record.failure = result.isComplete ? QString() : result.leftOut.join(u"; "_s);
      break;
    case JournalBackup::Outcome::Stopped:
      record = before;
      break;
    case JournalBackup::Outcome::Failed:
      record.failure = result.error.localizedDescription;
      break;
  }
  write(record, /*isGoingOn=*/false, directories);
  return result;
}

void BackupRecord::recordFailure(const QString& reason, const UserDirectories& directories) {
  BackupRecord record = of(directories);
  record.lastTry = storableNow();
  record.failure = reason;
  write(record, /*isGoingOn=*/false, directories);
}

}  // namespace quillo
