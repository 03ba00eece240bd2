#pragma once

#include "platform/Registration.h"

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
class NotificationCenter {
 public:
  using Handler = std::function<void(const Notification&)>;

  NotificationCenter();
  virtual ~NotificationCenter();
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  static NotificationCenter& localCenter();
  static NotificationCenter& workspaceCenter();

  // `object`: only notices of this object; null for those of any. The observation ends with the answer, which may
  // outlive the centre, and may end while a notice is passed on.
  [[nodiscard]] std::unique_ptr<Registration> observe(const QString& name, Handler handler,
                                                      const void* object = nullptr);

  virtual void postNotification(const QString& name, const void* object = nullptr);

 protected:
  void deliver(const Notification& notification);

 private:
  struct Observation;
  std::shared_ptr<std::vector<std::shared_ptr<Observation>>> m_observations;
};

}  // namespace quillo
