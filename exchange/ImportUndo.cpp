#include "exchange/ImportUndo.h"

#include "exchange/ImportRecord.h"
#include "exchange/ImportRecordFolder.h"
#include "foundation/FolderLock.h"
#include "foundation/Trash.h"
#include "qlcore/EntryFields.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QFile>

#include <unistd.h>

#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

enum class Removal { Trial, ToTrash, ForGood };

bool removeEntry(const JournalFolder& folder, const QString& name, Removal removal, Error* error) {
  const QString path = folder.path() + u'/' + name;
  if (removal == Removal::ToTrash) return Trash::moveItem(path, error).has_value();
  if (::unlink(QFile::encodeName(path).constData()) == 0 || errno == ENOENT) return true;
  return fail(error, fileWriteError(errno, path));
}

// The way back through one record.
class WayBack {
 public:
  WayBack(const JournalFolder& folder, Removal removal, const ImportUndo::Listener& listener)
      : m_folder(folder), m_removal(removal), m_listener(listener) {}

  // All of its steps. False, with an error, at the first that fails.
  bool go(const QString& recordPath, qint64 total, Error* error) {
    bool isDone = true;
    qint64 done = 0;
    const auto takeBack = [&](const ImportStep& step) {
      if (m_listener.isStopped && m_listener.isStopped())
        return isDone = fail(error, cocoaError(ErrorCode::fileWriteUnknown, u"it was stopped"_s));
      if (m_listener.progress) m_listener.progress(++done, total);
      return isDone = takeBackStep(step, error);
    };
    return ImportRecord::forEachStep(recordPath, takeBack, error) && isDone;
  }
  [[nodiscard]] const ImportUndo::Counts& counts() const { return m_counts; }

 private:
  bool takeBackStep(const ImportStep& step, Error* error) {
    // None of ours writes between the look and the change.
    const FolderLock lock(m_folder.path(), FolderLock::Mode::Exclusive);
    Error reason;
    const auto there = m_folder.readFile(step.fileName, &reason);
    if (!there && EntryFields::isMissing(reason)) {
      ++m_counts.gone;
      return true;
    }
    if (!there) return keep(step, reason.localizedDescription);
    // The import ended before it, or this was begun before.
    if (step.old && *there == *step.old) return true;
    if (ImportStep::hashOf(*there) != step.hash) return keep(step, u"it was changed after the import"_s);
    ++(step.old ? m_counts.putBack : m_counts.removed);
    if (m_removal == Removal::Trial) return true;
    return step.old ? m_folder.replaceFile(step.fileName, *step.old, error)
                    : removeEntry(m_folder, step.fileName, m_removal, error);
  }

  bool keep(const ImportStep& step, const QString& reason) {
    ++m_counts.changed;
    if (m_listener.kept) m_listener.kept(step.fileName.left(step.fileName.lastIndexOf(u'.')).toUpper(), reason);
    return true;
  }

  const JournalFolder& m_folder;
  Removal m_removal;
  const ImportUndo::Listener& m_listener;
  ImportUndo::Counts m_counts;
};

std::optional<ImportUndo::Counts> takeBack(const QLJournalPackageFile& package, const QString& recordPath,
                                           Removal removal, const ImportUndo::Listener& listener, Error* error) {
  const auto head = ImportRecord::head(recordPath);
  if (!head) {
    fail(error, cocoaError(ErrorCode::fileReadCorrupt, recordPath + u": the note of an import is damaged"_s));
    return std::nullopt;
  }
  const auto folder = JournalFolder::openOrMake(package.entriesFolder(), error);
  if (!folder) return std::nullopt;
  WayBack way(*folder, removal, listener);
  if (!way.go(recordPath, head->added + head->replaced, error)) return std::nullopt;
  return way.counts();
}

std::optional<ImportUndo::Counts> takeBackLast(const QLJournalPackageFile& package, Removal removal,
                                               const ImportUndo::Listener& listener, Error* error) {
  if (ImportRecordFolder::newest(package).isEmpty()) {
    fail(error, cocoaError(ErrorCode::fileNoSuchFile, u"there is no import into this journal to take back"_s));
    return std::nullopt;
  }
  const auto records = ImportRecordFolder::claim(package, error);
  if (!records) return std::nullopt;
  const QString path = ImportRecordFolder::newest(package);
  const auto counts = takeBack(package, path, removal, listener, error);
  if (counts && removal != Removal::Trial) records->remove(path);
  return counts;
}

}  // namespace

std::optional<ImportUndo::LastImport> ImportUndo::lastImport(const QLJournalPackageFile& package) {
  const QString path = ImportRecordFolder::newest(package);
  const auto head = path.isEmpty() ? std::nullopt : ImportRecord::head(path);
  if (!head) return std::nullopt;
  return LastImport{head->origin.path, head->origin.format, head->started, head->added, head->replaced, head->hasEnd};
}

std::optional<ImportUndo::Counts> ImportUndo::look(const Listener& listener, Error* error) const {
  return takeBackLast(m_package, Removal::Trial, listener, error);
}

std::optional<ImportUndo::Counts> ImportUndo::run(const Listener& listener, Error* error) {
  return takeBackLast(m_package, Removal::ToTrash, listener, error);
}

bool ImportUndo::takeBackUnfinished(const QLJournalPackageFile& package, const ImportRecordFolder& records,
                                    const QString& recordPath, Error* error) {
  // A program that is killed at the very beginning leaves one with nothing in it.
  if (ImportRecord::head(recordPath) && !takeBack(package, recordPath, Removal::ForGood, {}, error)) return false;
  records.remove(recordPath);
  return true;
}

}  // namespace quillo
