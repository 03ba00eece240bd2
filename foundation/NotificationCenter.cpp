#include "foundation/NotificationCenter.h"

namespace quillo {

struct NotificationCenter::Observation {
  QString name;
  Handler handler;
  const void* object;
  bool ended{false};
};

NotificationCenter::NotificationCenter()
    : m_observations(std::make_shared<std::vector<std::shared_ptr<Observation>>>()) {}
NotificationCenter::~NotificationCenter() = default;

NotificationCenter& NotificationCenter::localCenter() {
  static NotificationCenter center;
  return center;
}

NotificationCenter& NotificationCenter::workspaceCenter() {
  static NotificationCenter center;
  return center;
}

std::unique_ptr<Registration> NotificationCenter::observe(const QString& name, Handler handler, const void* object) {
  auto observation = std::make_shared<Observation>(Observation{name, std::move(handler), object});
  m_observations->push_back(observation);
  return std::make_unique<Registration>([observation, all = std::weak_ptr(m_observations)] {
    observation->ended = true;
    if (const auto observations = all.lock()) std::erase(*observations, observation);
  });
}

void NotificationCenter::postNotification(const QString& name, const void* object) {
  deliver({name, object});
}

void NotificationCenter::deliver(const Notification& notification) {
  // A snapshot: a handler may begin and end observations. One that has ended no longer hears of this notice.
  const auto snapshot = *m_observations;
  for (const auto& o : snapshot)
    if (!o->ended && o->name == notification.name && (!o->object || o->object == notification.object))
      o->handler(notification);
}

}  // namespace quillo
