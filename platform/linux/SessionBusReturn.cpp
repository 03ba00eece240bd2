#include "platform/linux/SessionBusReturn.h"

#include <QFile>
#include <QFileInfo>

#include <chrono>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// More than the pause that a connection keeps between its attempts.
constexpr auto pause = 2500ms;
// A socket is in its folder a moment before anybody listens.
constexpr auto untilItListens = 100ms;
constexpr int attemptsAfterAnEvent = 3;

// The folder of the socket in "unix:path=/run/user/1000/bus,guid=…"; nothing for other kinds of address.
QString folderOfSocket() {
  const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
  static constexpr QLatin1StringView start = "unix:path="_L1;
  if (!address.startsWith(start)) return {};
  const QString path = address.sliced(start.size()).section(u',', 0, 0).section(u';', 0, 0);
  return QFileInfo(QFile::decodeName(QByteArray::fromPercentEncoding(path.toUtf8()))).path();
}

}  // namespace

SessionBusReturn::SessionBusReturn(std::function<bool()> connect) : m_connect(std::move(connect)) {
  m_timer.setSingleShot(true);
  QObject::connect(&m_timer, &QTimer::timeout, this, [this] { attempt(); });
}

void SessionBusReturn::begin() {
  if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) return;
  m_attempts = attemptsAfterAnEvent;
  m_timer.start(pause);
  const QString folder = folderOfSocket();
  if (m_watcher || !QFileInfo(folder).isDir()) return;
  m_watcher = std::make_unique<QFileSystemWatcher>(QStringList{folder});
  QObject::connect(m_watcher.get(), &QFileSystemWatcher::directoryChanged, this, [this] {
    m_attempts = attemptsAfterAnEvent;
    m_timer.start(untilItListens);
  });
}

void SessionBusReturn::attempt() {
  if (m_connect()) {
    m_watcher.reset();
  } else if (--m_attempts > 0) {
    m_timer.start(pause);
  }
}

}  // namespace quillo
