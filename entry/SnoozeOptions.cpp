#include "entry/SnoozeOptions.h"

#include "foundation/DateComponents.h"

namespace quillo {

using namespace Qt::StringLiterals;

SnoozeOptions snoozeOptions(quint64 calendarUnit) {
  const SnoozeOptions::Option tenMinutes{u"10 Mins"_s, 600};
  const SnoozeOptions::Option hour{u"1 Hour"_s, 3600};
  const SnoozeOptions::Option day{u"1 Day"_s, 86400};
  switch (static_cast<CalendarUnit>(calendarUnit)) {
    case CalendarUnit::Minute:
      // One choice; the title moves over to it.
      return {{84, 13}, std::nullopt, tenMinutes};
    case CalendarUnit::Hour:
      return {{13, 13}, tenMinutes, hour};
    default:
      return {{13, 13}, hour, day};
  }
}

}  // namespace quillo
