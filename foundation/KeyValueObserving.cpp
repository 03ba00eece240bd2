#include "foundation/KeyValueObserving.h"

#include <algorithm>

namespace quillo {

void KeyValueObserver::observeWillChange(const QString&, KeyValueObservable&, const void*) {}

KeyValueObservable::KeyValueObservable()
    : m_observations(std::make_shared<std::vector<std::shared_ptr<Observation>>>()) {}

KeyValueObservable::~KeyValueObservable() = default;

std::unique_ptr<Registration> KeyValueObservable::addObserver(KeyValueObserver& observer, const QString& keyPath,
                                                              const void* context) {
  auto observation = std::make_shared<Observation>(Observation{&observer, keyPath, context});
  m_observations->push_back(observation);
  return std::make_unique<Registration>([list = std::weak_ptr(m_observations), observation] {
    observation->observer = nullptr;
    if (const auto observations = list.lock()) std::erase(*observations, observation);
  });
}

template <typename Notice>
void KeyValueObservable::notify(const QString& key, Notice notice) {
  // A snapshot: a notice may add or end observations. An ended one is skipped by its cleared observer.
  const auto snapshot = *m_observations;
  for (const auto& observation : snapshot)
    if (observation->observer && observation->keyPath == key) notice(*observation);
}

void KeyValueObservable::willChangeValueForKey(const QString& key) {
  notify(key, [&](const Observation& o) { o.observer->observeWillChange(key, *this, o.context); });
}

void KeyValueObservable::didChangeValueForKey(const QString& key) {
  notify(key, [&](const Observation& o) { o.observer->observeValueForKeyPath(key, *this, o.context); });
}

}  // namespace quillo
