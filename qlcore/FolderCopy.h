#pragma once

#include "foundation/Error.h"
#include "qlcore/FolderFiles.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <map>
#include <string>

namespace quillo {

// A copy of a folder whose files other programs go on changing: made once, then brought up to date as often as wanted.
// Files are copied with their times, and read again from the disk to see that they are what was written. Links are
// copied as links; a pipe or a device is an error. Temporary files of entries that are being written are passed by.
//
// Errors are of JournalError::domain and name the file. One thread only.
class FolderCopy {
 public:
  // What is done of what there is to do, in bytes of files read and written. Called often; false stops the work, which
  // then fails with isStopped().
  using Progress = std::function<bool(qint64 done, qint64 all)>;

  // Absolute paths.
  FolderCopy(const QString& source, const QString& target);

  // Makes the folder `target`, where nothing may be yet, and copies everything into it; synced and checked. False, with
  // an error, when that fails, and then a part of it is there.
  bool make(const Progress& progress, Error* error);
  [[nodiscard]] bool isStopped() const { return m_isStopped; }

  // Does in the copy what was done in the source since the last call: new and changed files are copied, synced and
  // checked, and what is gone goes. A file that was changed in the copy as well stays as it is there, see conflicts().
  bool bringUpToDate(Error* error);
  // How many files the last call found changed.
  [[nodiscard]] qsizetype changes() const { return m_changes; }
  // Files that were changed on both sides, as paths within the folder.
  [[nodiscard]] const QList<QByteArray>& conflicts() const { return m_conflicts; }

  // Where the copy is from now on: it was renamed.
  void setTarget(const QString& target);

 private:
  struct Item {
    FileStamp source;
    FileStamp copy;
    QByteArray digest;
  };

  bool copyItem(const std::string& path, const FileStamp& stamp, Error* error);
  bool copyFile(const std::string& path, Item& item, Error* error);
  bool copyLink(const std::string& path, Item& item, Error* error);
  bool writeContents(int from, int to, const std::string& path, Item& item, Error* error);
  bool syncAll(Error* error);
  bool check(const std::string& path, const Item& item, Error* error);
  bool removeWhatIsGone(const FolderFiles& found, Error* error);
  bool removeItem(const std::string& path, const Item& item, Error* error);
  [[nodiscard]] bool isAsCopied(const std::string& path, const Item* item) const;
  bool advance(qint64 bytes, Error* error);

  std::string m_source;
  std::string m_target;
  std::map<std::string, Item> m_items;
  Progress m_progress;
  qint64 m_done{0};
  qint64 m_all{0};
  bool m_isStopped{false};
  // For a few files, while others wait, all that other programs have written lately should not go to the disk, too.
  bool m_syncsEach{false};
  qsizetype m_changes{0};
  QList<QByteArray> m_conflicts;
};

}  // namespace quillo
