#include "platform/linux/SessionBusUserNotifications.h"

#include "foundation/Log.h"
#include "platform/Sounds.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;
const QString interface = u"org.freedesktop.Notifications"_s;

// What a click on the notification itself is called.
const QString defaultAction = u"default"_s;
constexpr uint expired = 1;
// The server's own choice of how long it shows.
constexpr int serversTimeout = -1;
constexpr int callMilliseconds = 10000;

QDBusMessage callTo(const QString& server, const QString& method) {
  return QDBusMessage::createMethodCall(server, path, interface, method);
}

}  // namespace

// From the delivery until it is removed, dismissed or failed. An expired one stays, as servers can bring it back.
struct SessionBusUserNotifications::Delivered {
  UserNotification notification;
  // Both only once the server has taken it. The server by the one name that no other gets after it.
  QString server;
  uint number{0};
  // Removed before the server gave the number.
  bool withdrawn{false};
};

SessionBusUserNotifications::SessionBusUserNotifications(QString icon, Sounds& sounds)
    : m_icon(std::move(icon)), m_sounds(sounds) {}

SessionBusUserNotifications::~SessionBusUserNotifications() = default;

quint64 SessionBusUserNotifications::deliverNotification(const UserNotification& notification) {
  Delivered delivered{notification, {}, 0, false};
  delivered.notification.identifier = ++m_lastIdentifier;
  if (!notification.soundName.isEmpty()) m_sounds.playSoundNamed(notification.soundName);
  if (m_delegate && !m_delegate->shouldPresentNotification(delivered.notification)) return m_lastIdentifier;

  if (!m_bus)
    m_bus = std::make_unique<SessionBus>(u"user-notifications"_s, [this](QDBusConnection& connection) {
      // Of any sender: who it was is checked against each notification.
      connection.connect({}, path, interface, u"ActionInvoked"_s, u"us"_s, this,
                         SLOT(actionInvoked(uint, QString, QDBusMessage)));
      connection.connect({}, path, interface, u"NotificationClosed"_s, u"uu"_s, this,
                         SLOT(notificationClosed(uint, uint, QDBusMessage)));
    });
  if (!m_bus->connect()) {
    QMetaObject::invokeMethod(
        this, [this, lost = delivered.notification] { failed(lost, u"there is no session bus"_s); },
        Qt::QueuedConnection);
    return m_lastIdentifier;
  }
  m_delivered.push_back(std::move(delivered));
  askForCapabilities(m_lastIdentifier);
  return m_lastIdentifier;
}

void SessionBusUserNotifications::call(const QDBusMessage& message, std::function<void(const QDBusMessage&)> then) {
  auto* watcher = new QDBusPendingCallWatcher(m_bus->connection().asyncCall(message, callMilliseconds), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [then = std::move(then)](QDBusPendingCallWatcher* call) {
    call->deleteLater();
    then(call->reply());
  });
}

// Anew each time: the server may be another one by now.
void SessionBusUserNotifications::askForCapabilities(quint64 identifier) {
  call(callTo(service, u"GetCapabilities"_s), [this, identifier](const QDBusMessage& answer) {
    // A server that does not answer this shows it plain; where there is none, the next call says so.
    notify(identifier, answer.arguments().value(0).toStringList());
  });
}

void SessionBusUserNotifications::notify(quint64 identifier, const QStringList& capabilities) {
  const Place place = find(identifier);
  if (place == m_delivered.end()) return;
  if (place->withdrawn) {
    m_delivered.erase(place);
    return;
  }
  const UserNotification& notification = place->notification;
  const bool readsMarkup = capabilities.contains(u"body-markup"_s);
  QStringList actions;
  // Servers without actions may put up a dialog to be answered for one that has some.
  if (capabilities.contains(u"actions"_s)) actions = QStringList{defaultAction, u"Write"_s};
  auto message = callTo(service, u"Notify"_s);
  message << u"Quillo"_s << 0U << m_icon << notification.title
          << (readsMarkup ? notification.informativeText.toHtmlEscaped() : notification.informativeText) << actions
          << QVariantMap{{u"desktop-entry"_s, m_icon}, {u"suppress-sound"_s, true}} << serversTimeout;
  call(message, [this, identifier](const QDBusMessage& answer) { wasNotified(identifier, answer); });
}

void SessionBusUserNotifications::wasNotified(quint64 identifier, const QDBusMessage& answer) {
  const Place place = find(identifier);
  if (place == m_delivered.end()) return;
  if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().value(0).toUInt() == 0) {
    const Delivered lost = *place;
    m_delivered.erase(place);
    if (!lost.withdrawn) failed(lost.notification, answer.errorMessage());
    return;
  }
  place->server = answer.service();
  place->number = answer.arguments().at(0).toUInt();
  if (place->withdrawn) withdraw(place);
}

void SessionBusUserNotifications::failed(const UserNotification& notification, const QString& reason) {
  QLLogInfo(u"A notification could not be shown: %1"_s.arg(reason));
  if (m_delegate) m_delegate->didFailToShowNotification(notification);
}

void SessionBusUserNotifications::withdraw(Place place) {
  if (place->number == 0) {
    place->withdrawn = true;
    return;
  }
  auto message = callTo(place->server, u"CloseNotification"_s);
  message << place->number;
  m_delivered.erase(place);
  // Whatever it answers; it may be gone.
  m_bus->send(message);
}

void SessionBusUserNotifications::removeDeliveredNotification(quint64 identifier) {
  if (const Place place = find(identifier); place != m_delivered.end()) withdraw(place);
}

void SessionBusUserNotifications::removeAllDeliveredNotifications() {
  for (Place place = m_delivered.begin(); place != m_delivered.end();) withdraw(place++);
}

SessionBusUserNotifications::Place SessionBusUserNotifications::find(quint64 identifier) {
  return std::find_if(m_delivered.begin(), m_delivered.end(), [identifier](const Delivered& delivered) {
    return delivered.notification.identifier == identifier;
  });
}

SessionBusUserNotifications::Place SessionBusUserNotifications::find(const QString& server, uint number) {
  return std::find_if(m_delivered.begin(), m_delivered.end(), [&server, number](const Delivered& delivered) {
    return delivered.number != 0 && delivered.number == number && delivered.server == server;
  });
}

void SessionBusUserNotifications::actionInvoked(uint number, const QString& action, const QDBusMessage& signal) {
  const Place place = find(signal.service(), number);
  if (place == m_delivered.end() || action != defaultAction || !m_delegate) return;
  // A copy: the delegate removes it.
  const UserNotification notification = place->notification;
  m_delegate->didActivateNotification(notification);
}

void SessionBusUserNotifications::notificationClosed(uint number, uint reason, const QDBusMessage& signal) {
  const Place place = find(signal.service(), number);
  if (place != m_delivered.end() && reason != expired) m_delivered.erase(place);
}

}  // namespace quillo
