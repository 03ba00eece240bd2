#include "app/logging/RollingLogFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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

bool RollingLogFile::writeAll(std::string_view bytes) {
  // Ends: every turn either shortens what is left, repeats an interrupted call, or returns.
  while (!bytes.empty()) {
    const ssize_t written = ::write(m_file.number(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    m_lineIsTorn = true;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  m_lineIsTorn = false;
  return true;
}

void RollingLogFile::append(std::string_view line) {
  openIfNeeded();
  if (!m_file.isOpen()) return;
  if (m_lineIsTorn && !writeAll("\n")) return;
  writeAll(line);
}

}  // namespace quillo
