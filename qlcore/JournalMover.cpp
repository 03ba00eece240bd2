#include "qlcore/JournalMover.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QThread>

#include <atomic>
#include <utility>

namespace quillo {

static constexpr int millisecondsBetweenTellings = 50;

// What both threads know.
struct JournalMover::Shared {
  JournalMove move;
  std::atomic<bool> isStopped{false};
  std::atomic<bool> isAbandoned{false};  // nobody is there any more to configure the journal

  // The question to configure it: the worker fills in the journal and waits for the answer.
  QUrl journal;
  Error error;
  bool isConfigured{false};
  QSemaphore answered;

  JournalMove::Result result;
};

JournalMover::JournalMover(QObject* parent) : QObject(parent) {}

JournalMover::~JournalMover() {
  if (!m_thread) return;
  m_shared->isAbandoned = true;
  m_shared->isStopped = true;
  m_shared->answered.release();
  m_thread->wait();
}

void JournalMover::start(JournalMove move) {
  if (m_thread) return;
  m_shared = std::make_shared<Shared>();
  m_shared->move = std::move(move);
  m_thread.reset(QThread::create([this, shared = m_shared] {
    JournalMove onThread = shared->move;
    QElapsedTimer sinceTold;
    onThread.progress = [this, &shared, &sinceTold](double done) {
      if (!sinceTold.isValid() || sinceTold.elapsed() >= millisecondsBetweenTellings || done >= 1) {
        sinceTold.start();
        QMetaObject::invokeMethod(this, [this, done] { Q_EMIT progressed(done); });
      }
      return !shared->isStopped;
    };
    onThread.configure = [this, &shared](const QUrl& journal, Error* error) {
      shared->journal = journal;
      QMetaObject::invokeMethod(this, &JournalMover::configureAsAsked);
      shared->answered.acquire();
      if (error) *error = shared->error;
      return shared->isConfigured;
    };
    shared->result = onThread.run();
  }));
  connect(m_thread.get(), &QThread::finished, this, &JournalMover::finish);
  m_thread->start();
}

void JournalMover::configureAsAsked() {
  if (!m_shared || m_shared->isAbandoned) return;
  m_shared->isConfigured = !m_shared->move.configure || m_shared->move.configure(m_shared->journal, &m_shared->error);
  m_shared->answered.release();
}

void JournalMover::stop() {
  if (m_shared) m_shared->isStopped = true;
}

void JournalMover::finish() {
  m_thread->wait();
  m_thread.reset();
  const auto shared = std::exchange(m_shared, nullptr);
  Q_EMIT finished(shared->result);
}

}  // namespace quillo
