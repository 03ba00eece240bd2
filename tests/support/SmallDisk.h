#pragma once

#include <QDir>
#include <QFile>
#include <QString>

#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>

namespace quillo {

// A small disk of memory, seen by this process only. These limits hold for root too, unlike permissions.
class SmallDisk {
 public:
  explicit SmallDisk(const QString& path) : m_path(QFile::encodeName(path)) {
    QDir().mkpath(path);
    m_isMounted = ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                  ::mount("tmpfs", m_path.constData(), "tmpfs", 0, "size=256k") == 0;
    m_number = errno;
  }
  ~SmallDisk() {
    if (m_isMounted) ::umount2(m_path.constData(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  [[nodiscard]] bool isMounted() const { return m_isMounted; }
  [[nodiscard]] const char* reason() const { return std::strerror(m_number); }
  bool makeReadOnly() { return ::mount(nullptr, m_path.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0; }

 private:
  QByteArray m_path;
  bool m_isMounted{false};
  int m_number{0};
};

}  // namespace quillo
