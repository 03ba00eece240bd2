#pragma once

#include "platform/Registration.h"

#include <QString>

#include <memory>
#include <vector>

namespace quillo {

class KeyValueObservable;

// Is told before and after a value changes. The context is the token given at registration, by which an observer tells
// its own observations from others.
class KeyValueObserver {
 public:
  virtual ~KeyValueObserver() = default;
  virtual void observeWillChange(const QString& keyPath, KeyValueObservable& object, const void* context);
  virtual void observeValueForKeyPath(const QString& keyPath, KeyValueObservable& object, const void* context) = 0;
};

// An object whose values can be observed by key. Keys are arbitrary strings. The object sends both notices itself;
// they need not balance. Main thread only.
class KeyValueObservable {
 public:
  KeyValueObservable();
  virtual ~KeyValueObservable();
  KeyValueObservable(const KeyValueObservable&) = delete;
  KeyValueObservable& operator=(const KeyValueObservable&) = delete;

  // The observation ends with the answer, which may outlive this object; the observer must outlive the answer.
  [[nodiscard]] std::unique_ptr<Registration> addObserver(KeyValueObserver& observer, const QString& keyPath,
                                                          const void* context = nullptr);

  void willChangeValueForKey(const QString& key);
  void didChangeValueForKey(const QString& key);

 private:
  struct Observation {
    KeyValueObserver* observer;
    QString keyPath;
    const void* context;
  };
  template <typename Notice>
  void notify(const QString& key, Notice notice);

  std::shared_ptr<std::vector<std::shared_ptr<Observation>>> m_observations;
};

}  // namespace quillo
