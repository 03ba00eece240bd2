#pragma once

#include "foundation/FileDescriptor.h"

#include <QString>

#include <optional>

namespace quillo {

// The file of an index on disk, for the user alone, and a note beside it of how it was when it was last written to by
// us: a file that is not as the note has it was written to by somebody else, or by a program that did not come to its
// end, and its contents are not to be trusted. The database's library can tell only damage to its own structure.
class IndexFile {
 public:
  explicit IndexFile(const QString& path) : m_path(path) {}

  [[nodiscard]] const QString& path() const { return m_path; }
  [[nodiscard]] QString folder() const;

  // Makes the folder. False where that cannot be.
  [[nodiscard]] bool makeFolder() const;
  // Makes an empty file where there is none. False where that cannot be, or something else is in its place.
  [[nodiscard]] bool make() const;
  [[nodiscard]] bool isEmpty() const;
  // Removes the file and all that belongs to it. Who has it open keeps what was there.
  void discard() const;

  // Whether it is as we left it. The caller holds the folder's lock. What was found sound is remembered, and
  // isAsRemembered() then costs one look at the file.
  [[nodiscard]] bool isSound();
  [[nodiscard]] bool isAsRemembered() const;
  // Notes that this process is about to write to it, and that it has done so.
  void noteWriting();
  void noteWritten();

  // Bytes of the log that has not gone into the file yet.
  [[nodiscard]] qint64 logSize() const;

 private:
  struct State {
    qint64 size{-1};
    qint64 written{0};
    quint64 inode{0};

    bool operator==(const State&) const = default;
  };
  [[nodiscard]] std::optional<State> state() const;
  [[nodiscard]] QString notePath() const { return m_path + QLatin1StringView("-state"); }
  void writeNote(const QByteArray& text) const;

  QString m_path;
  State m_remembered;
};

}  // namespace quillo
