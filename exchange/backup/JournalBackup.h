#pragma once

#include "exchange/backup/BackupManifest.h"
#include "exchange/backup/BackupThinning.h"
#include "foundation/Error.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace quillo {

// Makes a backup of a journal: a tar archive, compressed with zstd, in a folder outside of it. Other programs go on
// writing into the journal meanwhile, and nobody waits: each file is read once, as it is at that moment.
//
// The archive is written under a hidden name, synced, read again from the disk and compared, and gets its name only
// then: a run that is killed or finds the disk full leaves nothing that could be taken for a backup.
struct JournalBackup {
  enum class Outcome { Made, Stopped, Failed };

  QString journal;  // the path of the journal, a folder NAME.quillojournal
  QString folder;   // where the archive is to be; made where only the folder above is there
  // What is removed of older backups of this journal once the new one is whole. Nothing: all stay.
  std::optional<ThinningRule> thinning{};
  // What is done, from 0 to 1; called often. False stops it.
  std::function<bool(double done)> progress{};

  struct Result {
    Outcome outcome{Outcome::Failed};
    Error error;          // of one that failed
    QString path;         // of the new archive
    qint64 size{0};       // of it, in bytes
    qint64 entries{0};    // that are in it
    QStringList leftOut;  // paths that are not in it, each with the reason
    qint64 changed{0};    // files that were changed or came while it was made: the next backup has them
    QStringList removed;  // names of older backups that were thinned out

    // Whether all that could ever be in a journal is there. Links and devices never are, which is no lack.
    bool isComplete{true};
  };
  // Blocks as long as it takes: not for the main thread.
  [[nodiscard]] Result run() const;

 private:
  class Work;
};

}  // namespace quillo
