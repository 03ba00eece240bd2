#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace quillo {

// A notice by name. The object is an identity to compare, never followed.
struct Notification {
  QString name;
  const void* object{nullptr};
};

// Passes notices from posters to observers by name. There are three: the local one (in the process), the workspace's
// (the machine woke) and the distributed one (every process of the user). Main thread only.
//
// An observer is named by its address, which is not followed; it must remove itself before it goes.
class NotificationCenter {
 public:
  using Handler = std::function<void(const Notification&)>;

  NotificationCenter();
  virtual ~NotificationCenter();
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  static NotificationCenter& localCenter();
  static NotificationCenter& workspaceCenter();

  // `object`: only notices of this object; null for those of any.
  void addObserver(const void* observer, const QString& name, Handler handler, const void* object = nullptr);
  void removeObserver(const void* observer);
  void removeObserver(const void* observer, const QString& name);

  virtual void postNotification(const QString& name, const void* object = nullptr);

 protected:
  void deliver(const Notification& notification);

 private:
  struct Observation;
  std::vector<std::shared_ptr<Observation>> m_observations;
};

}  // namespace quillo
