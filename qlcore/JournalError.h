#pragma once

#include "foundation/Error.h"

#include <QLatin1StringView>

namespace quillo {

// Errors of the journal. The text is one line that names the path and the reason.
namespace JournalError {

inline constexpr QLatin1StringView domain{"com.quilloapp.journal"};

enum Code : qint64 {
  JournalFileNotFound = 1,  // there is nothing at the journal's path, or no journal is configured
  NotAPackage = 2,          // what is there is no journal
  NewerFormat = 3,          // the journal was made by a newer version
  NotReadable = 4,          // no permission, a link that is not followed, a failing disk
  WriteFailed = 5,          // for a reason that has no code of its own
  AlreadyExists = 6,        // there is something where a journal was to be made
  EntryNotFound = 7,
  EntryDamaged = 8,
  NotWritable = 9,  // no permission, or a read-only file system
  OutOfSpace = 10,  // the disk or the user's share of it is full
  NotHereYet = 11,  // there are entries without the journal's own file, which may still be on its way from elsewhere
};

[[nodiscard]] inline Error make(Code code, const QString& text) {
  return {domain, code, text, {}, {}};
}

// What a failed write, an error of the Cocoa domain, means to the journal.
[[nodiscard]] inline Error forWriting(const Error& reason, const QString& introduction = {}) {
  Code code = WriteFailed;
  if (reason.code == ErrorCode::fileWriteOutOfSpace) code = OutOfSpace;
  if (reason.code == ErrorCode::fileWriteVolumeReadOnly || reason.code == ErrorCode::fileWriteNoPermission ||
      reason.code == ErrorCode::fileReadNoPermission)
    code = NotWritable;
  return make(code, introduction + reason.localizedDescription);
}

}  // namespace JournalError
}  // namespace quillo
