#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QThread>

#include <functional>
#include <memory>
#include <stop_token>

namespace quillo {

// Work that takes a while, in a thread of its own, with how far it is and a way to stop it. One piece of work at a
// time. All functions are for the thread that made the object, in which the signals arrive.
class BackgroundWork : public QObject {
  Q_OBJECT

 public:
  // What the work has of it, in its own thread.
  class Monitor {
   public:
    [[nodiscard]] bool isStopped() const { return m_stop.stop_requested(); }
    [[nodiscard]] const std::stop_token& stopToken() const { return m_stop; }
    // As often as it likes: it is passed on a few times a second. `what` is what is going on; of 0 it is not known how
    // much there is.
    void progressed(const QString& what, qint64 done, qint64 total);

   private:
    friend BackgroundWork;
    Monitor(BackgroundWork& owner, std::stop_token stop) : m_owner(owner), m_stop(std::move(stop)) {}

    BackgroundWork& m_owner;
    std::stop_token m_stop;
    QElapsedTimer m_sinceLast;
  };

  explicit BackgroundWork(QObject* parent = nullptr) : QObject(parent) {}
  // Stops the work and waits until it has ended.
  ~BackgroundWork() override;

  // `done` is called when the work has ended, whether it was stopped or not; not once the object is gone.
  void start(std::function<void(Monitor&)> work, std::function<void()> done);
  void stop() { m_stop.request_stop(); }
  [[nodiscard]] bool isRunning() const { return m_thread != nullptr; }

 Q_SIGNALS:
  void progressed(const QString& what, qint64 done, qint64 total);

 private:
  std::stop_source m_stop;
  std::unique_ptr<QThread> m_thread;
};

}  // namespace quillo
