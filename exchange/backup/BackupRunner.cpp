#include "exchange/backup/BackupRunner.h"

#include "exchange/backup/BackupRecord.h"

#include <QElapsedTimer>
#include <QThread>

#include <utility>

namespace quillo {

static constexpr int millisecondsBetweenTellings = 50;

BackupRunner::BackupRunner(QObject* parent)
    : QObject(parent), m_isStopped(std::make_shared<std::atomic<bool>>(false)) {}

BackupRunner::~BackupRunner() {
  stop();
  if (m_thread) m_thread->wait();
}

bool BackupRunner::run(std::function<std::function<void()>(const Progress& progress)> work) {
  if (m_thread) return false;
  *m_isStopped = false;
  auto outcome = std::make_shared<std::function<void()>>();
  m_thread.reset(QThread::create([this, work = std::move(work), outcome, isStopped = m_isStopped] {
    QElapsedTimer sinceTold;
    *outcome = work([&](double done) {
      if (!sinceTold.isValid() || sinceTold.elapsed() >= millisecondsBetweenTellings || done >= 1) {
        sinceTold.start();
        QMetaObject::invokeMethod(this, [this, done] { Q_EMIT progressed(done); });
      }
      return !*isStopped;
    });
  }));
  connect(m_thread.get(), &QThread::finished, this, [this, outcome] {
    m_thread->wait();
    m_thread.reset();
    (*outcome)();
  });
  m_thread->start();
  return true;
}

bool BackupRunner::make(JournalBackup backup, const UserDirectories& directories) {
  return run([this, backup = std::move(backup), directories](const Progress& progress) mutable {
    backup.progress = progress;
    return std::function<void()>([this, result = BackupRecord::record(backup, directories)] { Q_EMIT made(result); });
  });
}

bool BackupRunner::restore(BackupRestore restore) {
  return run([this, restore = std::move(restore)](const Progress& progress) mutable {
    restore.progress = progress;
    return std::function<void()>([this, result = restore.run()] { Q_EMIT restored(result); });
  });
}

bool BackupRunner::list(const QString& folder) {
  return run([this, folder](const Progress&) {
    return std::function<void()>(
        [this, backups = backupsInFolder(folder, nullptr).value_or(QList<StoredBackup>())] { Q_EMIT listed(backups); });
  });
}

}  // namespace quillo
