#pragma once

#include <QByteArray>
#include <QString>

namespace quillo {

// Writes an open folder's names to the disk, so that they outlive a power cut. Some network file systems cannot, which
// is no failure. Answers errno, or 0.
int syncFolder(int descriptor);
int syncFolder(const QString& path);

// Renames and replaces nothing: EEXIST where there is something by the new name. Paths are encoded as file names.
// Answers errno, or 0.
int renameToFree(const QByteArray& from, const QByteArray& to);

}  // namespace quillo
