#pragma once

namespace quillo {

// Whether there is an X server or a Wayland compositor to show anything on. The toolkit would end the process.
[[nodiscard]] bool displayIsReachable();

// Whether somebody draws translucent windows as such. Always so in a Wayland session.
[[nodiscard]] bool compositorIsRunning();

}  // namespace quillo
