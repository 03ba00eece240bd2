#include "journal/exchange/BackgroundWork.h"

#include <utility>

namespace quillo {

void BackgroundWork::Monitor::progressed(const QString& what, qint64 done, qint64 total) {
  constexpr qint64 milliseconds = 60;
  if (m_sinceLast.isValid() && m_sinceLast.elapsed() < milliseconds) return;
  m_sinceLast.start();
  QMetaObject::invokeMethod(
      &m_owner, [owner = &m_owner, what, done, total] { Q_EMIT owner->progressed(what, done, total); },
      Qt::QueuedConnection);
}

BackgroundWork::~BackgroundWork() {
  stop();
  if (m_thread) m_thread->wait();
}

void BackgroundWork::start(std::function<void(Monitor&)> work, std::function<void()> done) {
  Q_ASSERT(!m_thread);
  m_stop = {};
  m_thread.reset(QThread::create([this, work = std::move(work), stop = m_stop.get_token()] {
    Monitor monitor(*this, stop);
    work(monitor);
  }));
  connect(m_thread.get(), &QThread::finished, this, [this, done = std::move(done)] {
    m_thread->wait();
    // It is the sender.
    m_thread.release()->deleteLater();
    done();
  });
  m_thread->start();
}

}  // namespace quillo
