#pragma once

#include "qlcore/JournalMove.h"

#include <QObject>

#include <memory>

class QThread;

namespace quillo {

// Moves a journal on a thread of its own. One at a time.
class JournalMover : public QObject {
  Q_OBJECT

 public:
  explicit JournalMover(QObject* parent = nullptr);
  // Stops a move under way and waits until it has cleared up.
  ~JournalMover() override;

  // `move.configure` is called on this object's thread, from its event loop; `move.progress` is set here.
  void start(JournalMove move);
  // finished() tells when it has: a move whose journal is configured already is brought to its end.
  void stop();
  [[nodiscard]] bool isMoving() const { return m_thread != nullptr; }

 Q_SIGNALS:
  // What is done, from 0 to 1, a few times a second.
  void progressed(double done);
  void finished(const quillo::JournalMove::Result& result);

 private:
  struct Shared;
  void configureAsAsked();
  void finish();

  std::shared_ptr<Shared> m_shared;
  std::unique_ptr<QThread> m_thread;
};

}  // namespace quillo
