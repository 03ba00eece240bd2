#pragma once

#include "foundation/FileDescriptor.h"

#include <QString>

namespace quillo {

// Keeps other programs that ask for the same lock from a folder's files, for as long as the object lives. It is on the
// folder and not on a file, since the file may not be there yet, and may be replaced.
//
// It never hangs: after half a second, or on a file system that cannot lock, the work goes on without it. It is for
// moments, such as a file's reading and rewriting; nothing that may wait for anybody is done under it.
class FolderLock {
 public:
  enum class Mode { Shared, Exclusive };  // readers share it; a writer has it alone

  FolderLock(const QString& folder, Mode mode);

 private:
  FileDescriptor m_folder;
};

}  // namespace quillo
