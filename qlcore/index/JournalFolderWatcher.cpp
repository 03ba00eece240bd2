#include "qlcore/index/JournalFolderWatcher.h"

#include "foundation/Log.h"
#include "qlcore/ConflictNames.h"
#include "qlcore/JournalPackageLayout.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// A file is often written to several times in a row.
constexpr int delayMilliseconds = 80;
// From so many on it is as quick to look at the whole folder.
constexpr qsizetype mostNames = 200;

constexpr quint32 entriesMask = IN_CLOSE_WRITE | IN_MODIFY | IN_ATTRIB | IN_CREATE | IN_DELETE | IN_MOVED_FROM |
                                IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW;
constexpr quint32 aboveMask =
    IN_CREATE | IN_CLOSE_WRITE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

}  // namespace

JournalFolderWatcher::JournalFolderWatcher(const QString& packagePath, QObject* parent)
    : QObject(parent),
      m_packagePath(packagePath),
      m_inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      m_mounts(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)) {
  m_delay.setSingleShot(true);
  m_delay.setInterval(delayMilliseconds);
  connect(&m_delay, &QTimer::timeout, this, &JournalFolderWatcher::tell);
  if (m_inotify.isOpen()) {
    m_notifier = std::make_unique<QSocketNotifier>(m_inotify.number(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &JournalFolderWatcher::readEvents);
  }
  // A disk that comes back over an empty folder is no event of that folder.
  if (m_mounts.isOpen()) {
    m_mountNotifier = std::make_unique<QSocketNotifier>(m_mounts.number(), QSocketNotifier::Exception);
    connect(m_mountNotifier.get(), &QSocketNotifier::activated, this, &JournalFolderWatcher::mountsChanged);
  }
  arm();
}

quint64 JournalFolderWatcher::entriesIdentity() const {
  struct stat status {};
  const QString path = m_packagePath + u'/' + JournalPackageLayout::entriesFolder;
  if (::lstat(QFile::encodeName(path).constData(), &status) != 0) return 0;
  return status.st_ino * 31 + status.st_dev;
}

void JournalFolderWatcher::watchFolder(const QString& path, quint32 mask, const QString& childOfInterest) {
  const int watch = ::inotify_add_watch(m_inotify.number(), QFile::encodeName(path).constData(), mask);
  if (watch < 0) {
    if (errno == ENOENT || errno == ENOTDIR) return;
    if (m_isWatching)
      QLLogInfo(u"Changes of other programs in the journal are not noticed at once - %1: %2"_s.arg(
          path, QString::fromLocal8Bit(std::strerror(errno))));
    m_isWatching = false;
    return;
  }
  Watch& known = m_watches[watch];
  known.isEntries = known.isEntries || childOfInterest.isEmpty();
  if (!childOfInterest.isEmpty()) known.children.insert(childOfInterest);
}

// Watches the folder, and those above it for its coming, going and being replaced.
void JournalFolderWatcher::arm() {
  for (auto watch = m_watches.cbegin(); watch != m_watches.cend(); ++watch)
    ::inotify_rm_watch(m_inotify.number(), watch.key());
  m_watches.clear();
  m_isToBeArmed = false;
  m_isWatching = m_inotify.isOpen();
  if (!m_isWatching) return;
  const QString entries = m_packagePath + u'/' + JournalPackageLayout::entriesFolder;
  m_identity = entriesIdentity();
  watchFolder(entries, entriesMask, {});
  // A synchroniser may bring it later than the entries.
  watchFolder(m_packagePath, aboveMask, JournalPackageLayout::propertiesFile);
  // Two folders above, and further ones as long as those are missing.
  QString path = entries;
  for (int above = 0; above < 2 || !QFileInfo::exists(path); ++above) {
    const QFileInfo info(path);
    if (info.path() == path) break;
    watchFolder(info.path(), aboveMask, info.fileName());
    path = info.path();
  }
}

void JournalFolderWatcher::readEvents() {
  alignas(inotify_event) std::array<char, size_t{16} * 1024> buffer{};
  // What comes in the meantime makes the notifier fire again.
  const ssize_t size = ::read(m_inotify.number(), buffer.data(), buffer.size());
  for (ssize_t at = 0; at + static_cast<ssize_t>(sizeof(inotify_event)) <= size;) {
    inotify_event event{};
    std::memcpy(&event, buffer.data() + at, sizeof event);
    const char* name = buffer.data() + at + sizeof event;
    takeEvent(event.wd, event.mask, event.len > 0 ? QFile::decodeName(name) : QString());
    at += static_cast<ssize_t>(sizeof event + event.len);
  }
}

void JournalFolderWatcher::takeEvent(int watch, quint32 mask, const QString& name) {
  if (mask & IN_Q_OVERFLOW) return folderMayDiffer(/*isStructure=*/false);
  const auto known = m_watches.constFind(watch);
  // Of a watch that was taken away.
  if (known == m_watches.constEnd()) return;
  if (mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED) || known->children.contains(name))
    return folderMayDiffer(/*isStructure=*/true);
  if (!known->isEntries || !ConflictNames::hasEnding(QFile::encodeName(name))) return;
  if (m_names.size() >= mostNames) return folderMayDiffer(/*isStructure=*/false);
  m_names.insert(name);
  if (!m_delay.isActive()) m_delay.start();
}

void JournalFolderWatcher::folderMayDiffer(bool isStructure) {
  m_isFolderChanged = true;
  m_isToBeArmed = m_isToBeArmed || isStructure;
  if (!m_delay.isActive()) m_delay.start();
}

void JournalFolderWatcher::mountsChanged() {
  // While the folder is missing, a disk may have covered the folders above that are watched for its coming.
  const quint64 identity = entriesIdentity();
  if (identity != m_identity || identity == 0) folderMayDiffer(/*isStructure=*/true);
}

void JournalFolderWatcher::tell() {
  // First the watches, then the news: what changes in between is told too.
  if (m_isToBeArmed) arm();
  const QStringList names(m_names.cbegin(), m_names.cend());
  m_names.clear();
  if (std::exchange(m_isFolderChanged, false))
    Q_EMIT folderChanged();
  else if (!names.isEmpty())
    Q_EMIT filesChanged(names);
}

}  // namespace quillo
