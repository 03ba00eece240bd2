#include "foundation/DistributedNotificationCenter.h"

#include "foundation/Log.h"
#include "platform/DistributedNotifications.h"

namespace quillo {

using namespace Qt::StringLiterals;

DistributedNotificationCenter& DistributedNotificationCenter::sharedCenter() {
  static DistributedNotificationCenter center;
  return center;
}

DistributedNotificationCenter::DistributedNotificationCenter() = default;

DistributedNotificationCenter::~DistributedNotificationCenter() {
  setTransport(nullptr);
}

void DistributedNotificationCenter::setTransport(DistributedNotifications* transport) {
  if (m_transport) m_transport->setReceiver({});
  m_transport = transport;
  if (!m_transport) return;
  m_transport->setReceiver([this](const QString& name) {
    QLLogDebug(u"Heard %1"_s.arg(name));
    deliver({name, nullptr});
  });
}

void DistributedNotificationCenter::postNotification(const QString& name, const void*) {
  if (m_transport && m_transport->post(name)) return;
  if (!m_saidLocalOnly) QLLogInfo(u"No session bus: change notifications stay inside this process"_s);
  m_saidLocalOnly = true;
  deliver({name, nullptr});
}

}  // namespace quillo
