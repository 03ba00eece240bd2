#pragma once

#include "foundation/PropertyListValue.h"

namespace quillo {

class QLJournalEntryFile;

// What is told of a finished entry.
inline constexpr QLatin1StringView QLMixpanelTrackerEntryContextFromAgentKey{"fromAgent"};        // boolean
inline constexpr QLatin1StringView QLMixpanelTrackerEntryContextEditTimeKey{"editTime"};          // whole seconds
inline constexpr QLatin1StringView QLMixpanelTrackerEntryContextFromReminderKey{"fromReminder"};  // boolean

// Usage events. They go into the log, at debug level, and nowhere else: nothing leaves the machine, and the words of
// an entry are never part of an event.
class QLMixpanelTracker {
 public:
  static QLMixpanelTracker& sharedInstance();
  static void setTrackingEnabled(bool enabled);

  void trackEntryCreate(const QLJournalEntryFile& entry, const PropertyListDictionary& context);

 private:
  QLMixpanelTracker() = default;
};

}  // namespace quillo
