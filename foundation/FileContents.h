#pragma once

#include "foundation/Error.h"
#include "foundation/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace quillo {

// Larger files are refused: nothing that the two applications keep comes near, and a hostile one must not fill memory.
inline constexpr qint64 largestFileRead = qint64{256} * 1024 * 1024;

// The whole of a regular file. Errors are of the Cocoa domain; a missing file is code 260. A device or a pipe is
// refused rather than waited for.
[[nodiscard]] std::optional<QByteArray> contentsOfFile(const QString& path, Error* error = nullptr);

// The same of a file that is open, from its beginning, wherever its position is; `path` is for the error.
[[nodiscard]] std::optional<QByteArray> contentsOfOpenFile(int descriptor, const QString& path, Error* error = nullptr);

// Replaces the contents of `path` in place: the same file, no temporary one, so another process that holds it open sees
// the new bytes. Space for what is longer is claimed first, so that a full disk is an error with the old contents
// whole. Makes the file, mode 0600, when it is missing, and removes it again when it cannot be filled.
bool writeFileInPlace(const QString& path, const QByteArray& bytes, Error* error = nullptr);

// The same with a file that is open for writing at its beginning and whose size is known; closes it.
bool writeOpenFileInPlace(FileDescriptor file, qint64 size, const QString& path, const QByteArray& bytes,
                          Error* error = nullptr);

// Replaces `path` as a whole, mode 0600: readers and a crash find the old contents or the new. A symbolic link stays
// and what it leads to is replaced, as some keep their settings elsewhere; so this is for files in the user's own
// folders only, and not for those of a journal.
bool writeFileAtomically(const QString& path, const QByteArray& bytes, Error* error = nullptr);

}  // namespace quillo
