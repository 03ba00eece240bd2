#include "reminders/SystemNotices.h"

#include "config/Keys.h"
#include "foundation/NotificationCenter.h"
#include "platform/SystemEvents.h"

namespace quillo {

void postSystemNotices(SystemEvents& events, NotificationCenter& local, NotificationCenter& workspace) {
  events.setReceiver([&local, &workspace](SystemEvent event) {
    switch (event) {
      case SystemEvent::ClockDidChange:
        return local.postNotification(Notice::systemClockDidChange);
      case SystemEvent::TimeZoneDidChange:
        return local.postNotification(Notice::systemTimeZoneDidChange);
      case SystemEvent::DidWake:
        return workspace.postNotification(Notice::workspaceDidWake);
    }
  });
}

}  // namespace quillo
