#pragma once

#include "foundation/Date.h"
#include "foundation/Error.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace quillo {

// What a backup says of itself. It is the first member of the archive, so that a list of many archives reads only the
// beginning of each; the numbers are those of the moment in which it was begun.
struct BackupManifest {
  QString journal;            // the name of the journal's folder without its ending
  QString journalIdentifier;  // empty where the journal has lost it
  Date begun;                 // to the second
  qint64 entries{0};
  qint64 files{0};  // with the entries, without folders
  qint64 bytes{0};  // of all files, as they are in the journal

  bool operator==(const BackupManifest&) const = default;

  [[nodiscard]] QByteArray toPropertyList() const;
  // Nothing, with an error, for what is none or was made by a newer version.
  [[nodiscard]] static std::optional<BackupManifest> fromPropertyList(const QByteArray& bytes, Error* error);
};

// The names of the archive's first and last member; between them is the folder of the journal, as it lies on the disk.
namespace BackupMember {
inline constexpr const char* manifest = "Backup.plist";
inline constexpr const char* checksums = "SHA256SUMS";
}  // namespace BackupMember

// SHA-256 of each file by its path within the archive.
using BackupChecksums = std::map<std::string, QByteArray>;
// As the program sha256sum writes and checks it, in the order of the paths.
[[nodiscard]] QByteArray checksumText(const BackupChecksums& checksums);

// Reads such a text in pieces: with all of a large journal's paths it is too large to be held beside them.
class ChecksumTextReader {
 public:
  using Take = std::function<bool(const std::string& path, const QByteArray& digest)>;
  // False where it is no such text, a path is not behind the one before, or `take` answers false.
  bool read(QByteArrayView part, const Take& take);
  // Whether it may end here.
  [[nodiscard]] bool isAtEndOfLine() const { return m_rest.isEmpty(); }

 private:
  bool readLine(QByteArrayView line, const Take& take);

  QByteArray m_rest;
  std::string m_last;
};

// Whether a file by this path within the journal is an entry.
[[nodiscard]] bool isEntryPath(const std::string& path);

}  // namespace quillo
