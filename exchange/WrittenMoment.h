#pragma once

#include "foundation/Date.h"

#include <QDate>
#include <QString>
#include <QTime>

#include <optional>

namespace quillo {

// A moment as files tell it: a day, perhaps a time of the day, perhaps how far that is from UTC.
struct WrittenMoment {
  QDate day;
  std::optional<QTime> time;
  std::optional<int> offset;  // in seconds

  // "2026-11-24", "2026-11-24 18:42:10", "2026-11-24T18:42+01:00", "2026-11-24 18:42:10.5 Z".
  [[nodiscard]] static std::optional<WrittenMoment> fromText(const QString& text);
  // The first that a file's name holds: "2026-11-24 1842 Words.md", "Diary 2026_11_24.txt", "20261124-184210.md".
  [[nodiscard]] static std::optional<WrittenMoment> inFileName(const QString& name);
};

// A moment and the name of the zone that it was told in.
struct ZonedDate {
  Date date;  // to the second
  QString timeZone;
};

// `zoneName` is the zone that is told beside the moment, if any. Without one it is the user's, or one that is as far
// from UTC as the moment says; a day without a time is its noon. Nothing outside the years 1 to 9999.
[[nodiscard]] std::optional<ZonedDate> zonedDate(const WrittenMoment& moment, const QString& zoneName);

}  // namespace quillo
