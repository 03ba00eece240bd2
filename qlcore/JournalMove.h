#pragma once

#include "foundation/Error.h"

#include <QString>
#include <QUrl>

#include <functional>

namespace quillo {

// Moving a journal to another folder, on any file system, while other programs go on writing into it.
//
// It is copied under a hidden name in the new folder and checked there, takes up what was saved meanwhile under the
// lock of its entries, and gets its name. Then the caller is asked to configure it; up to that moment the old journal
// is whole and the configured one, whatever happens: a full disk, a file that cannot be read, a kill. A moment later,
// when every program has heard of the change, the old one's last changes are brought over and it goes to the Trash.
// What a killed move left behind is removed when the next one begins in the same folder.
struct JournalMove {
  enum class OldJournal { ToTrash, Stays };
  enum class Outcome { Moved, Stopped, Failed };

  QString journal;  // the path of the journal, a folder NAME.quillojournal
  QString folder;   // the path of the folder that it moves into, which must be there; it keeps its name
  OldJournal oldJournal{OldJournal::ToTrash};

  // What is done, from 0 to 1; called often. False stops the move.
  std::function<bool(double done)> progress{};
  // Makes the journal there the configured one and tells other programs. False, with an error, where that cannot be:
  // then the new one is taken away again.
  std::function<bool(const QUrl& journal, Error* error)> configure{};
  // How long other programs may take to hear of it. A save that had begun before waits for the lock for half a second.
  int millisecondsToHear{1000};

  struct Result {
    Outcome outcome{Outcome::Failed};
    // Of a move that failed: why. Of one that was made: why the old journal stays though it was to go, or may have
    // changes of the last moment that the new one lacks.
    Error error;
    QUrl journal;  // where it is now; empty unless it was moved
  };
  // Blocks as long as it takes: not for the main thread.
  [[nodiscard]] Result run() const;

 private:
  class Work;
};

}  // namespace quillo
