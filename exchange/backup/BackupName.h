#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace quillo {

// The name of a backup's file: NAME-2026-11-26-081530.quillojournal.tar.zst, the journal's name and when it was begun,
// by the clock of the person. Sorted by name they are in the order of time, but for the hour that comes twice in
// autumn.
struct BackupName {
  QString journal;  // a very long one is cut off
  QDateTime begun;  // local time
  int number{1};    // of several of the same second; "-2" behind the time is the second one

  [[nodiscard]] QString fileName() const;
  // The name while it is being written, which no reader takes for a backup's.
  [[nodiscard]] QString temporaryName() const;

  // Nothing for the name of another file.
  [[nodiscard]] static std::optional<BackupName> of(const QString& fileName);
  [[nodiscard]] static bool isTemporary(const QString& fileName);
};

}  // namespace quillo
