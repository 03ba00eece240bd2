#pragma once

#include "platform/linux/SessionBusReturn.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QString>

#include <functional>
#include <optional>

namespace quillo {

// A connection of our own to the session bus, which comes back after the bus was away: when the bus is there again, or
// somebody next uses it. While attempts fail, there is one in two seconds at most. Nothing polls. Needs a
// QCoreApplication. Main thread only.
class SessionBus {
 public:
  // `attach` is called for every new connection, to subscribe and to claim names.
  SessionBus(const QString& purpose, std::function<void(QDBusConnection&)> attach);
  // Lets the bus take what was sent, for half a second at most.
  ~SessionBus();
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

  // Connects anew where the connection was lost; false when there is no bus.
  bool connect();
  [[nodiscard]] const QDBusConnection& connection() const { return m_connection; }

  // Hands a message to the bus without waiting for anything. False when there is no bus.
  bool send(const QDBusMessage& message);
  // Asks the bus itself and waits, for a second at most; nothing when it does not answer.
  std::optional<QVariant> askBus(const QString& method, const QVariantList& arguments = {});

 private:
  void open();

  const QString m_name;
  const std::function<void(QDBusConnection&)> m_attach;
  QDBusConnection m_connection;
  QElapsedTimer m_sinceFailure;  // invalid when the last attempt succeeded
  bool m_sentUnconfirmed{false};
  SessionBusReturn m_return;
};

}  // namespace quillo
