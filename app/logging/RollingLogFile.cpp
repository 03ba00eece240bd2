#include "app/logging/RollingLogFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace quillo {

namespace {

// A directory that cannot be written is not asked again for every line.
constexpr std::chrono::seconds pauseBetweenAttempts{10};

}  // namespace

RollingLogFile::RollingLogFile(const LogFileManager& manager)
    : m_manager(manager), m_descriptor(manager.openCurrentFile()) {
  if (m_descriptor < 0) m_lastFailure = std::chrono::steady_clock::now();
}

RollingLogFile::~RollingLogFile() {
  close();
}

void RollingLogFile::close() {
  if (m_descriptor >= 0) ::close(m_descriptor);
  m_descriptor = -1;
  m_lineIsTorn = false;
}

void RollingLogFile::openIfNeeded() {
  if (m_descriptor >= 0) {
    // The size is asked of the system each time: another agent may be writing to the same file for a moment.
    struct stat status {};
    const bool stillThere = ::fstat(m_descriptor, &status) == 0 && status.st_nlink > 0;
    if (stillThere && status.st_size < LogFileManager::maximumFileSize) return;
    if (!stillThere) close();
  }
  const auto now = std::chrono::steady_clock::now();
  if (m_lastFailure && now - *m_lastFailure < pauseBetweenAttempts) return;
  if (m_descriptor < 0) m_manager.createDirectory();
  const int next = m_manager.openCurrentFile();
  // A full file that has no successor is better than none.
  if (next < 0) {
    m_lastFailure = now;
    return;
  }
  close();
  m_descriptor = next;
  m_lastFailure.reset();
}

bool RollingLogFile::writeAll(std::string_view bytes) {
  // Ends: every turn either shortens what is left, repeats an interrupted call, or returns.
  while (!bytes.empty()) {
    const ssize_t written = ::write(m_descriptor, bytes.data(), bytes.size());
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
  if (m_descriptor < 0) return;
  if (m_lineIsTorn && !writeAll("\n")) return;
  writeAll(line);
}

}  // namespace quillo
