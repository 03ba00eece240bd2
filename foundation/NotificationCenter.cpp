#include "foundation/NotificationCenter.h"

namespace quillo {

struct NotificationCenter::Observation {
  const void* observer;
  QString name;
  Handler handler;
  const void* object;
  bool ended{false};
};

NotificationCenter::NotificationCenter() = default;
NotificationCenter::~NotificationCenter() = default;

NotificationCenter& NotificationCenter::localCenter() {
  static NotificationCenter center;
  return center;
}

NotificationCenter& NotificationCenter::workspaceCenter() {
  static NotificationCenter center;
  return center;
}

void NotificationCenter::addObserver(const void* observer, const QString& name, Handler handler, const void* object) {
  m_observations.push_back(std::make_shared<Observation>(Observation{observer, name, std::move(handler), object}));
}

void NotificationCenter::removeObserver(const void* observer) {
  std::erase_if(m_observations, [&](const auto& o) { return o->observer == observer && (o->ended = true); });
}

void NotificationCenter::removeObserver(const void* observer, const QString& name) {
  std::erase_if(m_observations,
                [&](const auto& o) { return o->observer == observer && o->name == name && (o->ended = true); });
}

void NotificationCenter::postNotification(const QString& name, const void* object) {
  deliver({name, object});
}

void NotificationCenter::deliver(const Notification& notification) {
  // A snapshot: a handler may add or remove observers. A removed one no longer hears of this notice.
  const auto snapshot = m_observations;
  for (const auto& o : snapshot)
    if (!o->ended && o->name == notification.name && (!o->object || o->object == notification.object))
      o->handler(notification);
}

}  // namespace quillo
