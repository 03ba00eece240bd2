#pragma once

#include "exchange/backup/BackupManifest.h"
#include "foundation/Error.h"
#include "foundation/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <ctime>
#include <functional>
#include <memory>
#include <set>
#include <string>

struct archive;
struct archive_entry;

namespace quillo {

// Reads a backup's archive from one end to the other and trusts nothing in it: there are files and folders only, below
// the one folder of the journal, each once and each folder before what is in it; paths are such that they stay there;
// sizes keep to what the manifest announces; and the end has the checksum of every file. Whatever is not so ends the
// reading with an error, as does a part that is missing.
class BackupReader {
 public:
  // Takes what is read. Paths are within the journal's folder, and safe to be put behind that of another. An error
  // given by one of them ends the reading.
  class Visitor {
   public:
    virtual ~Visitor() = default;
    virtual bool folder(const std::string& /*path*/, Error* /*error*/) { return true; }
    virtual bool beginFile(const std::string& /*path*/, qint64 /*size*/, Error* /*error*/) { return true; }
    virtual bool data(QByteArrayView /*bytes*/, Error* /*error*/) { return true; }
    virtual bool endFile(const std::string& /*path*/, time_t /*modified*/, Error* /*error*/) { return true; }
  };
  // What is done, from 0 to 1; called often. False stops the work, which then fails with isStopped().
  using Progress = std::function<bool(double done)>;

  // Reads the manifest, and so only the beginning of the file. Null, with an error that names the file, where it is no
  // backup. A descriptor is read from where it stands.
  [[nodiscard]] static std::unique_ptr<BackupReader> open(const QString& path, Error* error);
  [[nodiscard]] static std::unique_ptr<BackupReader> open(FileDescriptor file, const QString& shownPath, Error* error);
  ~BackupReader();
  BackupReader(const BackupReader&) = delete;
  BackupReader& operator=(const BackupReader&) = delete;

  [[nodiscard]] const BackupManifest& manifest() const { return m_manifest; }
  // All the rest; to be called once. What the visitor got is whole and unchanged only if this answers true.
  bool readAll(Visitor& visitor, const Progress& progress, Error* error);
  [[nodiscard]] bool isStopped() const { return m_isStopped; }
  // Of every file that was read, by its path within the archive.
  [[nodiscard]] const BackupChecksums& checksums() const { return m_checksums; }
  // SHA-256 of the text with the checksums; known when all was read.
  [[nodiscard]] const QByteArray& digestOfChecksums() const { return m_digestOfChecksums; }
  // The folder of the journal within the archive; known when something in it was read.
  [[nodiscard]] const std::string& rootFolder() const { return m_root; }

 private:
  struct Free {
    void operator()(archive* one) const;
  };
  enum class Step { Member, End, Failed };

  BackupReader(FileDescriptor file, QString shownPath);
  bool damaged(const QString& why, Error* error) const;
  bool readFailed(Error* error) const;
  bool begin(Error* error);
  Step nextHeader(Error* error);
  std::optional<QByteArray> readSmallFile(qint64 bound, Error* error);
  bool readMember(Visitor& visitor, Error* error);
  bool readFile(const std::string& path, const std::string& within, Visitor& visitor, Error* error);
  bool readData(qint64 size, const std::function<bool(QByteArrayView)>& take, Error* error);
  bool checkPlace(const std::string& path, bool isFolder, std::string& within, Error* error);
  bool checkSums(Error* error);
  bool advance(Error* error);

  FileDescriptor m_file;
  QString m_shownPath;
  qint64 m_fileSize{0};
  std::unique_ptr<archive, Free> m_archive;
  archive_entry* m_entry{nullptr};  // the archive's
  BackupManifest m_manifest;
  std::string m_root;
  std::set<std::string> m_folders;
  BackupChecksums m_checksums;
  QByteArray m_digestOfChecksums;
  qint64 m_bytes{0};
  qint64 m_bytesOfPaths{0};
  Progress m_progress;
  bool m_isStopped{false};
};

}  // namespace quillo
