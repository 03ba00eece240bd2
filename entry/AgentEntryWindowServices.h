#pragma once

#include "entry/EntryWindowDesktop.h"
#include "entry/session/JournalTags.h"
#include "entry/text/EntryTextServices.h"

#include <chrono>
#include <functional>
#include <memory>

namespace quillo {

class Alerts;
class EntryDraft;
class LocationService;
class NotificationCenter;
class OpenPanel;
class OutsideClicks;
class QLJournalEntryFile;
class QLJournalPackageFile;
class QLMixpanelTracker;
class QuilloConfig;
class WeatherService;
class Workspace;

// What the entry window's controller works with. All of it must outlive the controller; a null pointer is a desktop
// that lacks the service.
struct AgentEntryWindowServices {
  QuilloConfig& config;
  Alerts& alerts;
  OpenPanel& openPanel;
  // One for all controllers of the process: a window that takes over another's text takes over its draft.
  EntryDraft& draft;
  EntryTextServices text;
  // Called when there is a first event.
  std::function<QLMixpanelTracker&()> usageTracker;
  // Where the closing of the window is told.
  NotificationCenter& notices;
  // See EntrySessionServices.
  std::function<std::shared_ptr<QLJournalPackageFile>()> journalFile;
  std::function<std::shared_ptr<QLJournalEntryFile>()> emptyJournalEntry;
  TagSource tags{};
  Workspace* workspace{nullptr};
  OutsideClicks* outsideClicks{nullptr};
  // Called once, when a place is first wanted.
  std::function<std::unique_ptr<LocationService>()> makeLocationManager{};
  // How long the first search waits once the window is shown, where making its service takes a while; then the window's
  // first frame comes before.
  std::chrono::milliseconds firstSearchDelay{0};
  WeatherService* weather{nullptr};
  EntryWindowDesktop desktop{};
};

}  // namespace quillo
