#include "app/logging/RollingLogFile.h"

#include <sys/stat.h>

#include <utility>

namespace quillo {

namespace {

// A directory that cannot be written is not asked again for every line.
constexpr std::chrono::seconds pauseBetweenAttempts{10};

}  // namespace

RollingLogFile::RollingLogFile(const LogFileManager& manager) : m_manager(manager), m_file(manager.openCurrentFile()) {
  if (!m_file.isOpen()) m_lastFailure = std::chrono::steady_clock::now();
}

void RollingLogFile::goOnWith(FileDescriptor file) {
  m_file = std::move(file);
  m_lineIsTorn = false;
}

void RollingLogFile::openIfNeeded() {
  if (m_file.isOpen()) {
    // The size is asked of the system each time: another agent may be writing to the same file for a moment.
    struct stat status {};
    const bool stillThere = ::fstat(m_file.number(), &status) == 0 && status.st_nlink > 0;
    if (stillThere && status.st_size < LogFileManager::maximumFileSize) return;
    if (!stillThere) goOnWith({});
  }
  const auto now = std::chrono::steady_clock::now();
  if (m_lastFailure && now - *m_lastFailure < pauseBetweenAttempts) return;
  if (!m_file.isOpen()) m_manager.createDirectory();
  FileDescriptor next = m_manager.openCurrentFile();
  // A full file that has no successor is better than none.
  if (!next.isOpen()) {
    m_lastFailure = now;
    return;
  }
  goOnWith(std::move(next));
  m_lastFailure.reset();
}

void RollingLogFile::append(std::string_view line) {
  openIfNeeded();
  if (!m_file.isOpen()) return;
  if (m_lineIsTorn && writeAll(m_file.number(), "\n") != 0) return;
  qsizetype written = 0;
  m_lineIsTorn = writeAll(m_file.number(), line, &written) != 0 && written > 0;
}

}  // namespace quillo
