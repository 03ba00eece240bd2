#include "platform/linux/desktop/TrayWatcher.h"

#include "foundation/Log.h"
#include "platform/linux/desktop/X11.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView service{"org.kde.StatusNotifierWatcher"};
constexpr QLatin1StringView path{"/StatusNotifierWatcher"};
constexpr QLatin1StringView hostCame{"StatusNotifierHostRegistered"};
constexpr int longestWait = 1000;

// A tray that draws icons: a watcher that somebody shows the items of.
bool isDrawingTrayThere() {
  const auto bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return false;
  auto question = QDBusMessage::createMethodCall(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
  question << QString(service) << u"IsStatusNotifierHostRegistered"_s;
  question.setAutoStartService(false);
  const auto answer = bus.call(question, QDBus::Block, longestWait);
  if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return false;
  return answer.arguments().constFirst().value<QDBusVariant>().variant().toBool();
}

}  // namespace

TrayWatcher::TrayWatcher(std::function<void()> onTray) : m_onTray(std::move(onTray)) {
  if (X11::trayOwner() || isDrawingTrayThere()) {
    std::exchange(m_onTray, {})();
    return;
  }
  QLLogInfo(u"There is no tray yet; the icon appears when there is one"_s);
  auto bus = QDBusConnection::sessionBus();
  const auto* watcher = new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForRegistration, this);
  connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &TrayWatcher::lookAgain);
  bus.connect(QString(), path, service, hostCame, this, SLOT(lookAgain()));
  qApp->installNativeEventFilter(this);
  // One that came between the first look and the subscriptions.
  QMetaObject::invokeMethod(this, &TrayWatcher::lookAgain, Qt::QueuedConnection);
}

TrayWatcher::~TrayWatcher() {
  if (qApp) qApp->removeNativeEventFilter(this);
}

bool TrayWatcher::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (m_onTray && eventType == "xcb_generic_event_t" && X11::announcesTray(message))
    QMetaObject::invokeMethod(this, &TrayWatcher::lookAgain, Qt::QueuedConnection);
  return false;
}

void TrayWatcher::lookAgain() {
  // The callback may destroy this object.
  if (m_onTray && (X11::trayOwner() || isDrawingTrayThere())) std::exchange(m_onTray, {})();
}

}  // namespace quillo
