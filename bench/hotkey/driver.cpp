// Presses a hot key with Super and Shift held, and measures until a window is mapped and until the screen shows it.
//   bench_hotkey_driver COUNT X Y CODE...      CODE: evdev codes of the keys, taken in turn
// Prints a line for each: CODE MAPPED PAINTED, in microseconds from the press. X and Y are a pixel in the window.
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <linux/input-event-codes.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto longestWait = 5s;
constexpr auto pause = 100us;  // between two looks at the screen

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
std::unique_ptr<T, Free> owned(T* reply) {
  return std::unique_ptr<T, Free>(reply);
}

class Desktop {
 public:
  Desktop() : m_connection(xcb_connect(nullptr, nullptr)) {
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
  }
  ~Desktop() { xcb_disconnect(m_connection); }

  [[nodiscard]] bool isConnected() const { return xcb_connection_has_error(m_connection) == 0; }

  void key(int evdev, bool down) {
    xcb_test_fake_input(m_connection, down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, static_cast<uint8_t>(evdev + 8),
                        XCB_CURRENT_TIME, m_root, 0, 0, 0);
    xcb_flush(m_connection);
  }

  // Whether a window was mapped since the last look.
  bool sawMap() {
    bool seen = false;
    while (const auto event = owned(xcb_poll_for_event(m_connection)))
      if ((event->response_type & 0x7f) == XCB_MAP_NOTIFY) seen = true;
    return seen;
  }

  [[nodiscard]] uint32_t pixel(int x, int y) const {
    const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, static_cast<int16_t>(x),
                                      static_cast<int16_t>(y), 1, 1, ~0U);
    const auto image = owned(xcb_get_image_reply(m_connection, cookie, nullptr));
    if (!image || xcb_get_image_data_length(image.get()) < 4) return 0;
    const uint8_t* bytes = xcb_get_image_data(image.get());
    return bytes[0] | static_cast<uint32_t>(bytes[1]) << 8 | static_cast<uint32_t>(bytes[2]) << 16;
  }

 private:
  xcb_connection_t* m_connection;
  xcb_window_t m_root{0};
};

template <typename Condition>
std::optional<Clock::time_point> until(Condition condition) {
  const auto end = Clock::now() + longestWait;
  while (!condition()) {
    if (Clock::now() > end) return std::nullopt;
    std::this_thread::sleep_for(pause);
  }
  return Clock::now();
}

void tap(Desktop& desktop, int code) {
  desktop.key(code, true);
  desktop.key(code, false);
}

long microseconds(Clock::duration duration) {
  return static_cast<long>(std::chrono::duration_cast<std::chrono::microseconds>(duration).count());
}

// One turn: open, measure, close. False when something did not happen.
bool measure(Desktop& desktop, int code, int x, int y) {
  const uint32_t background = desktop.pixel(x, y);
  desktop.sawMap();
  const auto start = Clock::now();
  desktop.key(code, true);
  std::optional<Clock::time_point> mapped;
  const auto painted = until([&] {
    if (desktop.sawMap() && !mapped) mapped = Clock::now();
    return desktop.pixel(x, y) != background;
  });
  desktop.key(code, false);
  if (!painted) return false;
  if (!mapped) mapped = until([&] { return desktop.sawMap(); });
  if (!mapped) return false;
  std::printf("%d %ld %ld\n", code, microseconds(*mapped - start), microseconds(*painted - start));
  std::this_thread::sleep_for(60ms);
  tap(desktop, code);
  const bool closed = until([&] { return desktop.pixel(x, y) == background; }).has_value();
  std::this_thread::sleep_for(40ms);
  return closed;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) return 2;
  const int count = std::atoi(argv[1]);
  const int x = std::atoi(argv[2]);
  const int y = std::atoi(argv[3]);
  Desktop desktop;
  if (!desktop.isConnected()) return 1;
  desktop.key(KEY_LEFTMETA, true);
  desktop.key(KEY_LEFTSHIFT, true);
  bool done = true;
  for (int i = 0; i < count && done; ++i)
    for (int word = 4; word < argc && done; ++word) done = measure(desktop, std::atoi(argv[word]), x, y);
  desktop.key(KEY_LEFTSHIFT, false);
  desktop.key(KEY_LEFTMETA, false);
  if (!done) std::fprintf(stderr, "a window did not come or go\n");
  return done ? 0 : 1;
}
