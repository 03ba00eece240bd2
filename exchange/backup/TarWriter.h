#pragma once

#include "foundation/Error.h"

#include <QByteArray>
#include <QString>

#include <sys/types.h>

#include <ctime>
#include <memory>
#include <string>

struct archive;

namespace quillo {

// Writes a tar archive that is compressed with zstd. Paths are bytes, as the file system has them: an archive is the
// same whatever the locale is.
class TarWriter {
 public:
  // The descriptor is open for writing and stays the caller's; `shownPath` is for errors.
  TarWriter(int descriptor, QString shownPath);
  ~TarWriter();
  TarWriter(const TarWriter&) = delete;
  TarWriter& operator=(const TarWriter&) = delete;

  bool begin(Error* error);
  bool addFolder(const std::string& path, mode_t mode, time_t modified, Error* error);
  // A file of so many bytes, all of which are then given to addData(), in any pieces.
  bool beginFile(const std::string& path, mode_t mode, qint64 size, time_t modified, Error* error);
  bool addData(QByteArrayView bytes, Error* error);
  bool addFile(const std::string& path, mode_t mode, const QByteArray& bytes, time_t modified, Error* error);
  bool end(Error* error);

 private:
  struct Free {
    void operator()(archive* one) const;
  };
  // The library's callback: writes all of the bytes, or notes the error.
  static long write(archive* one, void* writer, const void* bytes, size_t size);
  bool failed(Error* error) const;
  bool addHeader(const std::string& path, mode_t type, mode_t mode, qint64 size, time_t modified, Error* error);

  int m_descriptor;
  bool m_discards{false};
  int m_errorNumber{0};  // of the first write that failed
  QString m_shownPath;
  std::unique_ptr<archive, Free> m_archive;
};

}  // namespace quillo
