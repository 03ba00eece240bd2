#include "platform/linux/SessionBusNotifications.h"

#include "foundation/Log.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestName = 255;
// From one round to the next. The first name after a silence does not wait.
constexpr std::chrono::milliseconds roundTime{20};

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
  m_turn.setSingleShot(true);
  connect(&m_turn, &QTimer::timeout, this, &SessionBusNotifications::passOn);
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
  m_names << name;
  m_waiting.insert(name);
  if (m_turn.isActive()) return;
  const bool isSoon = m_sinceRound.isValid() && !m_sinceRound.hasExpired(roundTime.count());
  m_turn.start(isSoon ? roundTime : std::chrono::milliseconds(0));
}

void SessionBusNotifications::passOn() {
  if (m_leftOfRound == 0) {
    m_leftOfRound = m_names.size();
    m_sinceRound.start();
  }
  --m_leftOfRound;
  const QString name = m_names.takeFirst();
  m_waiting.remove(name);
  // Before the receiver, which may wait for a person in an event loop of its own.
  if (!m_names.isEmpty()) m_turn.start(m_leftOfRound > 0 ? std::chrono::milliseconds(0) : roundTime);
  // A copy, as the receiver may replace itself while it runs.
  if (const auto receiver = m_receiver) receiver(name);
}

}  // namespace quillo
