#include "exchange/backup/TarWriter.h"

#include <archive.h>
#include <archive_entry.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

void TarWriter::Free::operator()(archive* one) const {
  archive_write_free(one);
}

TarWriter::TarWriter(int descriptor, QString shownPath)
    : m_descriptor(descriptor), m_shownPath(std::move(shownPath)), m_archive(archive_write_new()) {}

TarWriter::~TarWriter() {
  // What is not finished is thrown away by the caller. The library frees its buffers only where it can close in order.
  m_discards = true;
}

long TarWriter::write(archive*, void* writer, const void* bytes, size_t size) {
  auto& self = *static_cast<TarWriter*>(writer);
  const auto* rest = static_cast<const char*>(bytes);
  size_t left = size;
  // Each turn writes some, or is the last but for interruptions.
  while (left > 0 && !self.m_discards) {
    const ssize_t written = ::write(self.m_descriptor, rest, left);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      // Told by failed(): to the library an error means that it may free nothing.
      self.m_errorNumber = written < 0 ? errno : EIO;
      self.m_discards = true;
      break;
    }
    rest += written;
    left -= static_cast<size_t>(written);
  }
  return static_cast<long>(size);
}

bool TarWriter::failed(Error* error) const {
  if (m_errorNumber != 0) return fail(error, fileWriteError(m_errorNumber, m_shownPath));
  const int number = m_archive ? archive_errno(m_archive.get()) : ENOMEM;
  // The library has numbers of its own for what is no error of the system.
  if (number > 0) return fail(error, fileWriteError(number, m_shownPath));
  const char* text = archive_error_string(m_archive.get());
  return fail(error, cocoaError(ErrorCode::fileWriteUnknown,
                                m_shownPath + u": "_s + (text ? QString::fromUtf8(text) : u"cannot be written"_s)));
}

bool TarWriter::begin(Error* error) {
  constexpr int blockSize = 256 * 1024;
  archive* out = m_archive.get();
  const bool isOpen = out && archive_write_add_filter_zstd(out) == ARCHIVE_OK &&
                      archive_write_set_format_gnutar(out) == ARCHIVE_OK &&
                      archive_write_set_bytes_per_block(out, blockSize) == ARCHIVE_OK &&
                      archive_write_set_bytes_in_last_block(out, 1) == ARCHIVE_OK &&
                      archive_write_open(out, this, nullptr, &TarWriter::write, nullptr) == ARCHIVE_OK;
  return isOpen || failed(error);
}

bool TarWriter::addHeader(const std::string& path, mode_t type, mode_t mode, qint64 size, time_t modified,
                          Error* error) {
  const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(), archive_entry_free);
  if (!entry) return fail(error, fileWriteError(ENOMEM, m_shownPath));
  archive_entry_copy_pathname(entry.get(), path.c_str());
  archive_entry_set_filetype(entry.get(), type);
  archive_entry_set_perm(entry.get(), mode & 0777);
  archive_entry_set_size(entry.get(), size);
  archive_entry_set_mtime(entry.get(), modified, 0);
  archive_entry_set_uid(entry.get(), ::getuid());
  archive_entry_set_gid(entry.get(), ::getgid());
  const bool isWritten = archive_write_header(m_archive.get(), entry.get()) == ARCHIVE_OK && m_errorNumber == 0;
  return isWritten || failed(error);
}

bool TarWriter::addFolder(const std::string& path, mode_t mode, time_t modified, Error* error) {
  return addHeader(path + '/', AE_IFDIR, mode, 0, modified, error);
}

bool TarWriter::beginFile(const std::string& path, mode_t mode, qint64 size, time_t modified, Error* error) {
  return addHeader(path, AE_IFREG, mode, size, modified, error);
}

bool TarWriter::addData(QByteArrayView bytes, Error* error) {
  // Each turn takes some, or is the last.
  while (!bytes.isEmpty()) {
    const la_ssize_t taken = archive_write_data(m_archive.get(), bytes.data(), static_cast<size_t>(bytes.size()));
    if (taken <= 0 || m_errorNumber != 0) return failed(error);
    bytes = bytes.sliced(taken);
  }
  return true;
}

bool TarWriter::addFile(const std::string& path, mode_t mode, const QByteArray& bytes, time_t modified, Error* error) {
  return beginFile(path, mode, bytes.size(), modified, error) && addData(bytes, error);
}

bool TarWriter::end(Error* error) {
  if (archive_write_close(m_archive.get()) != ARCHIVE_OK || m_errorNumber != 0) return failed(error);
  m_archive.reset();
  return true;
}

}  // namespace quillo
