#pragma once

namespace quillo {

class NotificationCenter;
class SystemEvents;

// Posts the system's events as notifications from now on: those of the clock and the time zone to `local`, waking to
// `workspace`. Both centres must outlive the events.
void postSystemNotices(SystemEvents& events, NotificationCenter& local, NotificationCenter& workspace);

}  // namespace quillo
