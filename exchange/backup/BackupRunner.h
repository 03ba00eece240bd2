#pragma once

#include "exchange/backup/BackupFolder.h"
#include "exchange/backup/BackupRestore.h"
#include "exchange/backup/JournalBackup.h"
#include "foundation/UserDirectories.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>

class QThread;

namespace quillo {

// Makes, restores and lists backups on a thread of its own. One at a time.
class BackupRunner : public QObject {
  Q_OBJECT

 public:
  explicit BackupRunner(QObject* parent = nullptr);
  // Stops what is under way and waits until it has cleared up.
  ~BackupRunner() override;

  // Their `progress` is set here. What becomes of a backup is recorded among `directories`. False while one runs.
  bool make(JournalBackup backup, const UserDirectories& directories);
  bool restore(BackupRestore restore);
  bool list(const QString& folder);
  void stop() { *m_isStopped = true; }
  [[nodiscard]] bool isRunning() const { return m_thread != nullptr; }

 Q_SIGNALS:
  // What is done, from 0 to 1, a few times a second.
  void progressed(double done);
  void made(const quillo::JournalBackup::Result& result);
  void restored(const quillo::BackupRestore::Result& result);
  // Newest first; none where the folder cannot be read.
  void listed(const QList<quillo::StoredBackup>& backups);

 private:
  using Progress = std::function<bool(double done)>;
  // `work` answers what is then done on this object's thread.
  bool run(std::function<std::function<void()>(const Progress& progress)> work);

  std::shared_ptr<std::atomic<bool>> m_isStopped;
  std::unique_ptr<QThread> m_thread;
};

}  // namespace quillo
