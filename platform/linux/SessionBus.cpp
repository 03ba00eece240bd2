#include "platform/linux/SessionBus.h"

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 millisecondsBetweenAttempts = 2000;
constexpr int askMilliseconds = 1000;
constexpr int flushMilliseconds = 500;

QDBusMessage callToBus(const QString& method) {
  return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                        u"org.freedesktop.DBus"_s, method);
}

// Qt shares connections of one name; two objects for the same purpose must not.
QString uniqueName(const QString& purpose) {
  static int count = 0;
  return u"quillo-%1-%2"_s.arg(purpose).arg(++count);
}

}  // namespace

SessionBus::SessionBus(const QString& purpose, std::function<void(QDBusConnection&)> attach)
    : m_name(uniqueName(purpose)),
      m_attach(std::move(attach)),
      m_connection(m_name),
      m_return([this] { return connect(); }) {
  open();
  if (!m_connection.isConnected()) m_return.begin();
}

SessionBus::~SessionBus() {
  // An answer to a later question means that the bus has read everything before it.
  if (m_sentUnconfirmed && m_connection.isConnected())
    m_connection.call(callToBus(u"GetId"_s), QDBus::Block, flushMilliseconds);
  QDBusConnection::disconnectFromBus(m_name);
}

void SessionBus::open() {
  m_connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name);
  if (!m_connection.isConnected()) return m_sinceFailure.start();
  m_sinceFailure.invalidate();
  m_connection.connect({}, u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s, u"Disconnected"_s,
                       &m_return, SLOT(begin()));
  if (m_attach) m_attach(m_connection);
}

bool SessionBus::connect() {
  const bool mayTry = !m_sinceFailure.isValid() || m_sinceFailure.hasExpired(millisecondsBetweenAttempts);
  if (!m_connection.isConnected() && mayTry) {
    // Qt would otherwise hand out the dead connection again.
    QDBusConnection::disconnectFromBus(m_name);
    open();
  }
  return m_connection.isConnected();
}

bool SessionBus::send(const QDBusMessage& message) {
  if (!connect() || !m_connection.send(message)) return false;
  m_sentUnconfirmed = true;
  return true;
}

std::optional<QVariant> SessionBus::askBus(const QString& method, const QVariantList& arguments) {
  if (!connect()) return {};
  auto call = callToBus(method);
  call.setArguments(arguments);
  const auto reply = m_connection.call(call, QDBus::Block, askMilliseconds);
  if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
  m_sentUnconfirmed = false;
  return reply.arguments().constFirst();
}

}  // namespace quillo
