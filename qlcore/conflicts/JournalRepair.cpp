#include "qlcore/conflicts/JournalRepair.h"

#include "foundation/FolderLock.h"
#include "foundation/FolderOperations.h"
#include "foundation/Trash.h"
#include "qlcore/JournalError.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/JournalPackageLayout.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/conflicts/JournalConflicts.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace JournalPackageLayout;

namespace {

// A conflict copy of Journal.plist that can be read; empty where there is none.
QString copyOfProperties(const JournalFolder& folder) {
  QStringList names = folder.propertyListNames(nullptr, u"Journal"_s).value_or(QStringList());
  names.sort();
  for (const QString& name : std::as_const(names))
    if (name != propertiesFile && QLJournalPackageFile::isReadable(folder, name)) return name;
  return {};
}

}  // namespace

bool JournalRepair::run(Error* error) {
  if (!mendProperties(error)) return false;
  // Whatever fails, the rest is mended all the same.
  Error reason;
  bool isDone = mendEntries(&reason);
  if (!isDone) fail(error, reason);
  if (!removeLeftovers(&reason)) isDone = fail(error, reason);
  return isDone;
}

bool JournalRepair::mendProperties(Error* error) {
  Error reason;
  if (QLJournalPackageFile::openPackage(QUrl::fromLocalFile(m_journal), /*create=*/false, &reason)) return true;
  const QString entries = m_journal + u'/' + entriesFolder;
  // One of a newer version is not ours to judge, and a folder without entries may be anybody's.
  const bool isOurs = reason.code == JournalError::NotAPackage || reason.code == JournalError::NotHereYet;
  if (!isOurs || !hasEntries(m_journal)) return fail(error, reason);
  const auto folder = JournalFolder::open(QFileInfo(m_journal).canonicalFilePath(), &reason);
  if (!folder) return fail(error, JournalError::make(JournalError::NotReadable, reason.localizedDescription));
  const FolderLock lock(entries, FolderLock::Mode::Exclusive);
  const QString path = folder->path() + u'/' + propertiesFile;
  if (folder->timeWritten(propertiesFile) != 0) {
    if (!Trash::moveItem(path, error)) return false;
    m_done << path + u": it was damaged and is in the Trash"_s;
  }
  if (const QString copy = copyOfProperties(*folder); !copy.isEmpty()) {
    const int number = renameToFree(QFile::encodeName(folder->path() + u'/' + copy), QFile::encodeName(path));
    if (number != 0) return fail(error, JournalError::forWriting(fileWriteError(number, path)));
    m_done << u"%1: it was missing; %2 has taken its place"_s.arg(path, copy);
    return true;
  }
  if (!makeProperties(*folder, &reason)) return fail(error, JournalError::forWriting(reason));
  m_done << path + u": it was missing; a new one was made"_s;
  return true;
}

bool JournalRepair::mendEntries(Error* error) {
  const QString folder = m_journal + u'/' + entriesFolder;
  const JournalConflicts conflicts(folder);
  const auto entries = conflicts.entries(error);
  if (!entries) return false;
  bool isDone = true;
  for (const ConflictedEntry& entry : *entries) {
    const QString path = folder + u'/' + QLJournalEntryFile::fileName(entry.uuid);
    QString replaced;
    if (!conflicts.replaceDamaged(entry, &replaced, error)) isDone = false;
    if (!replaced.isEmpty())
      m_done << u"%1: it was damaged and is in the Trash; %2 has taken its place"_s.arg(path, replaced);
    const auto settled = conflicts.settle(entry, error);
    if (!settled) {
      isDone = false;
      continue;
    }
    if (!settled->renamed.isEmpty())
      m_done << u"%1: it was missing; %2 has taken its place"_s.arg(path, settled->renamed);
    if (!settled->merged.isEmpty())
      m_done << u"%1: merged with %2, now in the Trash"_s.arg(path, settled->merged.join(u", "_s));
  }
  return isDone;
}

bool JournalRepair::removeLeftovers(Error* error) {
  constexpr qint64 oneDay = qint64{86'400} * 1'000'000'000;
  Error reason;
  const auto folder = JournalFolder::open(m_journal + u'/' + entriesFolder, &reason);
  if (!folder && reason.code == ErrorCode::fileReadNoSuchFile) return true;
  const auto names = folder ? folder->temporaryFiles(&reason) : std::nullopt;
  if (!names) return fail(error, JournalError::make(JournalError::NotReadable, reason.localizedDescription));
  folder->removeLeftovers();
  const qint64 now = QDateTime::currentMSecsSinceEpoch() * 1'000'000;
  bool isDone = true;
  for (const QString& name : *names) {
    const QString path = folder->path() + u'/' + name;
    const qint64 written = folder->timeWritten(name);
    if (written == 0) {
      m_done << path + u": removed, left by a program that was ended"_s;
    } else if (now - written > oneDay) {
      const bool isMoved = Trash::moveItem(path, error).has_value();
      isDone = isDone && isMoved;
      if (isMoved) m_done << path + u": left by another program, now in the Trash"_s;
    }
  }
  return isDone;
}

}  // namespace quillo
