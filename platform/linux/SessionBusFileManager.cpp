#include "platform/linux/SessionBusFileManager.h"

#include <QDBusPendingCallWatcher>
#include <QUrl>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// It may have to be started first.
constexpr int callMilliseconds = 10'000;

}  // namespace

SessionBusFileManager::SessionBusFileManager() : m_bus(u"file manager"_s, [](QDBusConnection&) {}) {}

void SessionBusFileManager::showItem(const QString& path, std::function<void()> failed) {
  if (!m_bus.connect()) return failed();
  auto call = QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s, u"/org/freedesktop/FileManager1"_s,
                                             u"org.freedesktop.FileManager1"_s, u"ShowItems"_s);
  call << QStringList{QString::fromUtf8(QUrl::fromLocalFile(path).toEncoded())} << QString();
  auto* watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(call, callMilliseconds), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this,
          [failed = std::move(failed)](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            if (finished->isError()) failed();
          });
}

}  // namespace quillo
