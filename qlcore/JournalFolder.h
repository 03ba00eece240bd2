#pragma once

#include "foundation/Error.h"
#include "foundation/FileDescriptor.h"
#include "qlcore/StagedFiles.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <utility>

namespace quillo {

// An open folder of a journal, by which its files are read and replaced. Symbolic links in the place of the folder or
// of a file in it are refused, so that nothing leads out of the journal. Errors are of the Cocoa domain.
class JournalFolder {
 public:
  // Nothing, with an error, when there is no such folder or it is a symbolic link.
  [[nodiscard]] static std::optional<JournalFolder> open(const QString& path, Error* error);
  // Makes the folder, for the user alone, where it is missing: programs that copy or synchronise drop empty folders.
  [[nodiscard]] static std::optional<JournalFolder> openOrMake(const QString& path, Error* error);

  [[nodiscard]] const QString& path() const { return m_path; }

  // The contents of the file `name`; code 260 when there is none.
  [[nodiscard]] std::optional<QByteArray> readFile(const QString& name, Error* error) const;

  // When the file `name` was last written, in nanoseconds since 1970; 0 where there is none.
  [[nodiscard]] qint64 timeWritten(const QString& name) const;
  // The same of when it was last written, made, renamed or otherwise changed, which nobody can set back.
  [[nodiscard]] qint64 timeChanged(const QString& name) const;

  // Replaces the file `name` so that a crash, a kill or a full disk leaves the old contents or the new, never half:
  // written to a temporary file beside it, synced, renamed, the folder synced. Mode 0600. False, with an error, when it
  // fails; nothing of it then stays behind.
  bool replaceFile(const QString& name, const QByteArray& bytes, Error* error) const;
  // For many at once, with the same promise for each. The folder outlives it.
  [[nodiscard]] StagedFiles stage() const { return {m_folder.number(), m_path}; }

  // Removes the file `name` for good. False, with an error, when it fails.
  bool removeFile(const QString& name, Error* error) const;

  // The names that end in ".plist" and begin with `beginning`, in any case of letters, in no order; hidden ones, and
  // with them all temporary files, are passed by.
  [[nodiscard]] std::optional<QStringList> propertyListNames(Error* error, const QString& beginning = {}) const;

  // The names of conflict copies of entries, in no order.
  [[nodiscard]] std::optional<QStringList> conflictCopies(Error* error) const;
  // The names of temporary files, see ConflictNames::isTemporary(), in no order.
  [[nodiscard]] std::optional<QStringList> temporaryFiles(Error* error) const;

  // Removes temporary files of entries whose writer is gone or that are older than a day.
  void removeLeftovers() const;
  // The same, but only the first time that the process asks for it: with very many entries it takes time.
  void removeLeftoversOnce() const;

 private:
  [[nodiscard]] std::optional<QStringList> namesThat(const std::function<bool(QByteArrayView)>& isWanted,
                                                     Error* error) const;
  JournalFolder(FileDescriptor folder, QString path) : m_folder(std::move(folder)), m_path(std::move(path)) {}
  [[nodiscard]] QString pathOf(const QString& name) const { return m_path + u'/' + name; }

  FileDescriptor m_folder;
  QString m_path;
};

}  // namespace quillo
