// Prints a line for each icon that a tray takes in: PID NANOSECONDS, of the monotonic clock. It costs nobody anything
// while it waits, as looking for the icon again and again would.
#include <xcb/xcb.h>

#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

namespace {

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
std::unique_ptr<T, Free> owned(T* reply) {
  return std::unique_ptr<T, Free>(reply);
}

long long now() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

xcb_atom_t atom(xcb_connection_t* connection, const char* name) {
  const auto cookie = xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name);
  const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

// The first number of a property, where the window has it.
std::optional<uint32_t> number(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property) {
  const auto cookie = xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 1);
  const auto reply = owned(xcb_get_property_reply(connection, cookie, nullptr));
  if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4) return std::nullopt;
  uint32_t value = 0;
  std::memcpy(&value, xcb_get_property_value(reply.get()), sizeof value);
  return value;
}

}  // namespace

int main() {
  xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
  if (xcb_connection_has_error(connection) != 0) return 1;
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  const xcb_atom_t embedding = atom(connection, "_XEMBED_INFO");
  const xcb_atom_t process = atom(connection, "_NET_WM_PID");
  const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &mask);
  xcb_flush(connection);
  std::puts("ready");
  std::fflush(stdout);
  while (const auto event = owned(xcb_wait_for_event(connection))) {
    if ((event->response_type & 0x7f) != XCB_REPARENT_NOTIFY) continue;
    const long long moment = now();
    xcb_reparent_notify_event_t moved;
    std::memcpy(&moved, event.get(), sizeof moved);
    // Window managers take windows in, too, but those do not offer themselves for embedding.
    if (moved.parent == root || !number(connection, moved.window, embedding)) continue;
    std::printf("%u %lld\n", number(connection, moved.window, process).value_or(0), moment);
    std::fflush(stdout);
  }
  xcb_disconnect(connection);
  return 0;
}
