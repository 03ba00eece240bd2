#pragma once

#include "exchange/backup/BackupThinning.h"
#include "foundation/DateComponents.h"

#include <QDateTime>

#include <array>

namespace quillo {

class PersistentPropertyList;

// When backups are made by themselves and how many stay, as the shared settings say.
struct BackupSettings {
  bool isEnabled{false};
  CalendarUnit unit{CalendarUnit::Day};
  int interval{1};  // that many units
  int most{40};     // backups that stay; 0: all

  static constexpr std::array units{CalendarUnit::Hour, CalendarUnit::Day, CalendarUnit::Week, CalendarUnit::Month};
  static constexpr int largestInterval = 366;

  bool operator==(const BackupSettings&) const = default;

  // Whatever makes no sense reads as the default; a null list holds nothing.
  [[nodiscard]] static BackupSettings of(const PersistentPropertyList* list);

  [[nodiscard]] ThinningRule thinning() const { return {.most = most}; }
  // "every day", "every 3 hours".
  [[nodiscard]] QString inWords() const;
  // Whether it is time again. The timer calls once each unit, and not to the second: half a unit is overlooked.
  [[nodiscard]] bool isDue(const QDateTime& last, const QDateTime& now) const;
};

}  // namespace quillo
