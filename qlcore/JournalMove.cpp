#include "qlcore/JournalMove.h"

#include "foundation/FolderLock.h"
#include "foundation/FolderOperations.h"
#include "foundation/Trash.h"
#include "qlcore/FolderCopy.h"
#include "qlcore/FolderFiles.h"
#include "qlcore/JournalError.h"
#include "qlcore/JournalMoveMark.h"
#include "qlcore/JournalPackageLayout.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// So few files are brought up to date within the time that others wait for a lock.
constexpr qsizetype fewChanges = 20;
// Rounds in which changes are caught up with before the last one under the lock. Whoever writes faster than that is no
// person.
constexpr int mostRounds = 5;

constexpr QLatin1StringView moving{"moving"};

QString entriesOf(const QString& journal) {
  return journal + u'/' + JournalPackageLayout::entriesFolder;
}

}  // namespace

// One run.
class JournalMove::Work {
 public:
  explicit Work(const JournalMove& move)
      : m_move(move),
        m_source(QFileInfo(move.journal).canonicalFilePath()),
        m_folder(QFileInfo(move.folder).canonicalFilePath()),
        m_name(QFileInfo(QDir::cleanPath(move.journal)).fileName()),
        m_target(m_folder + u'/' + m_name),
        m_temporary(m_folder + u'/' + pendingFolderName(m_name, moving)),
        m_mark(m_source, m_target),
        m_copy(m_source, m_temporary) {}

  Result run() {
    if (!check() || !makeCopy() || !takePlace()) return failed();
    Result result{Outcome::Moved, {}, QUrl::fromLocalFile(m_target)};
    settle(result.error);
    return result;
  }

 private:
  bool check() {
    if (!QLJournalPackageFile::openPackage(QUrl::fromLocalFile(m_move.journal), /*create=*/false, &m_error))
      return false;
    const auto problem = [this](JournalError::Code code, const QString& text) {
      return fail(&m_error, JournalError::make(code, text));
    };
    if (m_folder.isEmpty() || !QFileInfo(m_folder).isDir())
      return problem(JournalError::JournalFileNotFound, m_move.folder + u": there is no such folder"_s);
    if (m_target == m_source)
      return problem(JournalError::AlreadyExists, m_target + u": the journal is there already"_s);
    if ((m_folder + u'/').startsWith(m_source + u'/'))
      return problem(JournalError::NotWritable, m_folder + u": a journal cannot be moved into itself"_s);
    // What a kill between name and configuration has left. Renamed first: half removed, it is no journal to be found.
    if (m_mark.findsLeftover()) renameToFree(QFile::encodeName(m_target), QFile::encodeName(m_temporary));
    if (const QFileInfo there(m_target); there.exists() || there.isSymLink())
      return problem(JournalError::AlreadyExists, m_target + u": there is something already"_s);
    return true;
  }

  bool makeCopy() {
    removePendingFolders(m_folder, m_name, moving);
    m_mark.removeLeftovers();
    const auto tell = [this](qint64 done, qint64 all) {
      return !m_move.progress || m_move.progress(all > 0 ? std::min(1.0, double(done) / double(all)) : 1);
    };
    if (!m_copy.make(tell, &m_error)) return false;
    for (int round = 0; round < mostRounds; ++round) {
      if (!m_copy.bringUpToDate(&m_error)) return false;
      if (m_copy.changes() <= fewChanges) break;
    }
    return true;
  }

  // From the lock to the configuration it takes a moment, in which whoever wants to save waits.
  bool takePlace() {
    const FolderLock lock(entriesOf(m_source), FolderLock::Mode::Exclusive);
    if (!m_copy.bringUpToDate(&m_error)) return false;
    if (m_move.progress && !m_move.progress(1)) {
      m_isStopped = true;
      return false;
    }
    if (!m_mark.make(&m_error)) return false;
    int number = renameToFree(QFile::encodeName(m_temporary), QFile::encodeName(m_target));
    m_isInPlace = number == 0;
    if (number == 0) number = syncFolder(m_folder);
    if (number != 0) return fail(&m_error, JournalError::forWriting(fileWriteError(number, m_target)));
    m_copy.setTarget(m_target);
    if (m_move.configure && !m_move.configure(QUrl::fromLocalFile(m_target), &m_error)) return false;
    m_mark.remove();
    return true;
  }

  // Whoever was about to save into the old journal has done so by the end of the wait.
  void settle(Error& error) {
    QThread::msleep(static_cast<unsigned long>(std::max(0, m_move.millisecondsToHear)));
    const FolderLock lock(entriesOf(m_source), FolderLock::Mode::Exclusive);
    bool isWhole = false;
    {
      const FolderLock newLock(entriesOf(m_target), FolderLock::Mode::Exclusive);
      isWhole = m_copy.bringUpToDate(&error);
    }
    isWhole = isWhole && keepConflicts(error);
    if (isWhole && m_move.oldJournal == OldJournal::ToTrash) Trash::moveItem(QDir::cleanPath(m_move.journal), &error);
  }

  // An entry that was saved into both journals in that moment is in the new one twice, and nothing is lost.
  bool keepConflicts(Error& error) {
    const auto package = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(m_target), /*create=*/false, &error);
    if (!package) return false;
    for (const QByteArray& path : m_copy.conflicts()) {
      const auto url = QUrl::fromLocalFile(m_source + u'/' + QFile::decodeName(path));
      const auto old = QLJournalEntryFile::load(url, nullptr);
      const auto now = old ? QLJournalEntryFile::entryWithUUID(*package, old->uuid(), nullptr) : nullptr;
      if (!old || (now && now->string().contains(old->string()))) continue;
      const auto beside = QLJournalEntryFile::newEntry();
      beside->setString(old->string());
      beside->setTags(old->tags());
      beside->setLocation(old->location());
      beside->setWeather(old->weather());
      beside->setCreationDate(old->creationDate());
      if (!beside->saveToJournal(package.get(), &error)) return false;
    }
    return true;
  }

  Result failed() {
    // A kill while it is removed leaves what the next move removes, and no half of a journal under the real name.
    if (m_isInPlace) renameToFree(QFile::encodeName(m_target), QFile::encodeName(m_temporary));
    removeFolder(m_temporary);
    m_mark.remove();
    return {m_isStopped || m_copy.isStopped() ? Outcome::Stopped : Outcome::Failed, m_error, {}};
  }

  const JournalMove& m_move;
  QString m_source;
  QString m_folder;
  QString m_name;
  QString m_target;
  QString m_temporary;
  JournalMoveMark m_mark;
  FolderCopy m_copy;
  Error m_error;
  bool m_isInPlace{false};
  bool m_isStopped{false};
};

JournalMove::Result JournalMove::run() const {
  return Work(*this).run();
}

}  // namespace quillo
