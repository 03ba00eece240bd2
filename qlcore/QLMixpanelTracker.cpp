#include "qlcore/QLMixpanelTracker.h"

#include "foundation/Log.h"
#include "qlcore/QLJournalEntryFile.h"

namespace quillo {

using namespace Qt::StringLiterals;

static bool& trackingEnabled() {
  static bool enabled = false;
  return enabled;
}

static QString yesNo(bool value) {
  return value ? u"yes"_s : u"no"_s;
}

QLMixpanelTracker& QLMixpanelTracker::sharedInstance() {
  static QLMixpanelTracker instance;
  return instance;
}

void QLMixpanelTracker::setTrackingEnabled(bool enabled) {
  trackingEnabled() = enabled;
}

void QLMixpanelTracker::trackEntryCreate(const QLJournalEntryFile& entry, const PropertyListDictionary& context) {
  if (!trackingEnabled()) return;
  // Key by key, so that nothing else that a caller may put into the context is written down.
  QLLogDebug(
      u"Event: entry created, %1 tags, location %2, weather %3, from agent %4, edit time %5 s, from reminder %6"_s.arg(
          QString::number(entry.tags().size()), yesNo(entry.location().has_value()), yesNo(entry.weather().has_value()),
          yesNo(context.value(QLMixpanelTrackerEntryContextFromAgentKey).boolValue()),
          QString::number(context.value(QLMixpanelTrackerEntryContextEditTimeKey).unsignedIntegerValue()),
          yesNo(context.value(QLMixpanelTrackerEntryContextFromReminderKey).boolValue())));
}

}  // namespace quillo
