// Starts a program and measures until its window is on the screen, and until the middle of it shows text.
//   bench_first_frame FROM TO PROGRAM [ARGUMENT...]      FROM, TO: shares of the window's width, in percent, looked at
// Prints PROCESS MAPPED PAINTED, the times in microseconds from the start; the program goes on. Text counts as there
// when a tenth of the rows of pixels from a quarter of the window's height down are not of one colour.
#include <xcb/xcb.h>

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <thread>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto longestWait = 30s;
constexpr auto betweenLooks = 500us;  // between two looks at the screen
constexpr int smallestWidth = 400;

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
std::unique_ptr<T, Free> owned(T* reply) {
  return std::unique_ptr<T, Free>(reply);
}

class Screen {
 public:
  Screen() : m_connection(xcb_connect(nullptr, nullptr)) {
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(m_connection);
  }
  ~Screen() { xcb_disconnect(m_connection); }

  [[nodiscard]] bool isConnected() const { return xcb_connection_has_error(m_connection) == 0; }

  // Of the first window of a program's size that was mapped.
  std::optional<xcb_get_geometry_reply_t> mappedWindow() {
    while (const auto event = owned(xcb_poll_for_event(m_connection))) {
      if ((event->response_type & 0x7f) != XCB_MAP_NOTIFY) continue;
      const auto* map = reinterpret_cast<const xcb_map_notify_event_t*>(event.get());
      const auto size =
          owned(xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, map->window), nullptr));
      if (size && size->width >= smallestWidth) return *size;
    }
    return std::nullopt;
  }

  // Whether there is text between two shares of the window's width.
  [[nodiscard]] bool showsText(const xcb_get_geometry_reply_t& window, int from, int to) const {
    const auto width = static_cast<uint16_t>(window.width * (to - from) / 100);
    const auto height = static_cast<uint16_t>(window.height / 2);
    const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root,
                                      static_cast<int16_t>(window.x + window.width * from / 100),
                                      static_cast<int16_t>(window.y + window.height / 4), width, height, ~0U);
    const auto image = owned(xcb_get_image_reply(m_connection, cookie, nullptr));
    if (!image || xcb_get_image_data_length(image.get()) < 4 * width * height) return false;
    int rows = 0;
    for (int y = 0; y < height; ++y) {
      const uint8_t* row = xcb_get_image_data(image.get()) + static_cast<ptrdiff_t>(4) * width * y;
      // Every pixel like the one beside it: the whole row is of one colour.
      rows += std::memcmp(row, row + 4, 4 * (width - size_t{1})) != 0;
    }
    return rows >= height / 10;
  }

 private:
  xcb_connection_t* m_connection;
  xcb_window_t m_root{0};
};

long microseconds(Clock::duration duration) {
  return static_cast<long>(std::chrono::duration_cast<std::chrono::microseconds>(duration).count());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const int from = std::atoi(argv[1]);
  const int to = std::atoi(argv[2]);
  Screen screen;
  if (!screen.isConnected() || from < 0 || to <= from || to > 100) return 1;
  const auto start = Clock::now();
  pid_t process = 0;
  // It must not keep our output open for whoever reads it.
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  for (const int output : {STDOUT_FILENO, STDERR_FILENO})
    posix_spawn_file_actions_addopen(&files, output, "/dev/null", O_WRONLY, 0);
  if (posix_spawn(&process, argv[3], &files, nullptr, argv + 3, environ) != 0) return 1;
  std::optional<xcb_get_geometry_reply_t> window;
  Clock::time_point mapped;
  const auto end = start + longestWait;
  while (Clock::now() < end) {
    if (!window && (window = screen.mappedWindow())) mapped = Clock::now();
    if (window && screen.showsText(*window, from, to)) {
      std::printf("%d %ld %ld\n", process, microseconds(mapped - start), microseconds(Clock::now() - start));
      return 0;
    }
    std::this_thread::sleep_for(betweenLooks);
  }
  std::printf("%d -1 -1\n", process);
  return 1;
}
