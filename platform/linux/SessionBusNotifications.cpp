#include "platform/linux/SessionBusNotifications.h"

#include "foundation/Log.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestName = 255;
// Within it a name is passed on once.
constexpr std::chrono::milliseconds pauseTime{20};

const QString path = u"/com/quilloapp/DistributedNotifications"_s;
const QString interface = u"com.quilloapp.DistributedNotifications"_s;
const QString member = u"Posted"_s;
const QString signature = u"s"_s;

}  // namespace

bool isNotificationName(const QString& name) {
  return !name.isEmpty() && name.size() <= longestName && name.isValidUtf16() &&
         std::none_of(name.cbegin(), name.cend(), [](QChar c) {
           return c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
         });
}

SessionBusNotifications::SessionBusNotifications()
    : m_bus(u"notifications"_s, [this](QDBusConnection& connection) {
        // Of any sender, this process included: the bus gives a broadcast back to the one who sent it.
        if (!connection.connect({}, path, interface, member, signature, this, SLOT(receive(QString))))
          QLLogError(u"Notifications of other programs cannot be received: %1"_s.arg(connection.lastError().message()));
      }) {
  m_pause.setSingleShot(true);
  connect(&m_pause, &QTimer::timeout, this, &SessionBusNotifications::tellWaiting);
}

void SessionBusNotifications::setReceiver(std::function<void(const QString& name)> receiver) {
  m_receiver = std::move(receiver);
}

bool SessionBusNotifications::post(const QString& name) {
  if (!isNotificationName(name)) {
    QLLogError(u"A notification was not sent: its name is empty, too long or no plain text"_s);
    return false;
  }
  auto message = QDBusMessage::createSignal(path, interface, member);
  message << name;
  return m_bus.send(message);
}

void SessionBusNotifications::receive(const QString& name) {
  // Anybody on the bus can send anything.
  if (!isNotificationName(name) || !m_receiver || m_waiting.contains(name)) return;
  if (m_told.contains(name))
    m_waiting << name;
  else
    tell(name);
}

void SessionBusNotifications::tell(const QString& name) {
  m_told.insert(name);
  if (!m_pause.isActive()) m_pause.start(pauseTime);
  // A copy, as the receiver may replace itself while it runs.
  if (const auto receiver = m_receiver) receiver(name);
}

void SessionBusNotifications::tellWaiting() {
  m_told.clear();
  for (const QString& name : std::exchange(m_waiting, {})) tell(name);
}

}  // namespace quillo
