#pragma once

#include "foundation/Error.h"
#include "foundation/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <utility>
#include <vector>

namespace quillo {

// What is said of a symbolic link in the place of a journal's folder or file.
[[nodiscard]] Error linkRefused(const QString& path);

// New contents of files of one folder, which lie beside the old ones until they take their place: a crash, a kill or a
// full disk leaves each file old or new, never half. Many are put on the disk in one go, which takes a fraction of the
// time of one after the other. Each holds a file open until sync(). Mode 0600. Errors are of the Cocoa domain.
class StagedFiles {
 public:
  // The descriptor of the folder outlives the object; the path is what errors tell.
  StagedFiles(int folder, QString path) : m_folder(folder), m_path(std::move(path)) {}
  // Removes what has not taken its place.
  ~StagedFiles();
  StagedFiles(const StagedFiles&) = delete;
  StagedFiles& operator=(const StagedFiles&) = delete;

  // Writes it to a temporary file. False, with an error, also where what has the name is no regular file.
  bool add(const QString& name, const QByteArray& bytes, Error* error);
  // Returns when the contents of all that were added are on the disk.
  bool sync(Error* error);
  // Lets the one of this index, by the order of add(), take its place; sync() came before.
  bool put(size_t index, Error* error);
  // Returns when those that took their place stay there also after a power cut.
  bool syncFolder(Error* error);

 private:
  struct Staged {
    QString name;
    QByteArray temporary;  // empty once it has taken its place
    FileDescriptor file;
  };
  [[nodiscard]] QString pathOf(const QString& name) const { return m_path + u'/' + name; }

  int m_folder;
  QString m_path;
  std::vector<Staged> m_files;
};

}  // namespace quillo
