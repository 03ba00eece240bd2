#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace quillo {

// Notices that a session bus that was lost is there again, so that a program which only listens hears others again.
// Nothing polls: the folder of the bus's socket is watched. A socket that outlives the bus, as where another program
// holds it, is tried a few times after the loss.
class SessionBusReturn final : public QObject {
  Q_OBJECT

 public:
  // `connect` tries to reach the bus and answers whether it did.
  explicit SessionBusReturn(std::function<bool()> connect);

 public Q_SLOTS:
  // To be called when the bus was lost, or was not there to begin with.
  void begin();

 private:
  void attempt();

  const std::function<bool()> m_connect;
  std::unique_ptr<QFileSystemWatcher> m_watcher;
  QTimer m_timer;
  int m_attempts{0};
};

}  // namespace quillo
