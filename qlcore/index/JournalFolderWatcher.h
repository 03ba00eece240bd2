#pragma once

#include "foundation/FileDescriptor.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QSocketNotifier>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <memory>

namespace quillo {

// Tells when anything changes in a journal's folder of entries, whoever does it. It waits for the kernel to say so and
// looks at nothing by itself. Changes that come together are told together, a moment later.
//
// The folder may be missing, be moved away or be replaced, also with the disk that it is on: its return is noticed.
class JournalFolderWatcher : public QObject {
  Q_OBJECT

 public:
  // `packagePath` is the journal's folder, that with Journal.plist in it.
  explicit JournalFolderWatcher(const QString& packagePath, QObject* parent = nullptr);

  // False where the kernel has no watches left, or the file system cannot tell: then nothing is told, and whoever wants
  // to know has to look.
  [[nodiscard]] bool isWatching() const { return m_isWatching; }

 Q_SIGNALS:
  // Files of entries, by their names.
  void filesChanged(const QStringList& names);
  // Anything may be different.
  void folderChanged();

 private:
  void arm();
  void watchFolder(const QString& path, quint32 mask, const QString& childOfInterest);
  void readEvents();
  void takeEvent(int watch, quint32 mask, const QString& name);
  void folderMayDiffer(bool isStructure);
  void mountsChanged();
  void tell();
  [[nodiscard]] quint64 entriesIdentity() const;

  struct Watch {
    bool isEntries{false};
    QSet<QString> children;  // of a folder above: what leads to the entries
  };

  QString m_packagePath;
  FileDescriptor m_inotify;
  FileDescriptor m_mounts;
  std::unique_ptr<QSocketNotifier> m_notifier;
  std::unique_ptr<QSocketNotifier> m_mountNotifier;
  QHash<int, Watch> m_watches;
  bool m_isWatching{false};
  quint64 m_identity{0};  // of the folder of entries that is watched
  QSet<QString> m_names;
  bool m_isFolderChanged{false};
  bool m_isToBeArmed{false};
  QTimer m_delay;
};

}  // namespace quillo
