#include "foundation/FolderLock.h"

#include "foundation/Log.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>

#include <atomic>
#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

// The work under a lock takes a few milliseconds at most. Who has not got it by then waits for a program that is
// stopped.
static constexpr int longestWaitMilliseconds = 500;

FolderLock::FolderLock(const QString& folder, Mode mode)
    : m_folder(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (!m_folder.isOpen()) return;
  // Once it was in vain, it is tried without waiting until it is free again: a stopped program costs one wait.
  static std::atomic<bool> wasInVain{false};
  const int operation = (mode == Mode::Shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
  const QDeadlineTimer deadline(wasInVain ? 0 : longestWaitMilliseconds);
  // Asked anew each millisecond, at most as long as the deadline allows: the call that waits by itself has no bound.
  while (::flock(m_folder.number(), operation) != 0) {
    if (errno == EINTR) continue;
    // A file system without locks is used as if there were none.
    if (errno != EWOULDBLOCK) return;
    if (deadline.hasExpired()) {
      if (!wasInVain.exchange(true))
        QLLogInfo(u"Went on without the lock of %1 - another program does not let go of it"_s.arg(folder));
      return;
    }
    QThread::msleep(1);
  }
  wasInVain = false;
}

}  // namespace quillo
