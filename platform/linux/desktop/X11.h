#pragma once

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QRect>

#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

struct xcb_connection_t;

// Questions to the X server, over Qt's own connection. All of them answer nothing where there is none.
namespace quillo::X11 {

using Window = unsigned int;

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};
// Takes over what the server replied.
template <typename T>
std::unique_ptr<T, Free> owned(T* reply) {
  return std::unique_ptr<T, Free>(reply);
}

// Null without an X server.
[[nodiscard]] xcb_connection_t* connection();
// Of the first screen, the only one that today's servers have.
[[nodiscard]] Window rootWindow();
// Of the names that the program uses, which are listed beside it; 0 for others.
[[nodiscard]] unsigned int atom(const QByteArray& name);
// The window that speaks for the tray that embeds icons; 0 where there is no such tray.
[[nodiscard]] Window trayOwner();
// Whether this event of the server's says that a tray has come. `event`: as native event filters get it.
[[nodiscard]] bool announcesTray(const void* event);
// In pixels of the screen; nothing for a window that is gone.
[[nodiscard]] std::optional<QRect> rectOf(Window window);
// The bars along the edges of the screen, in its pixels.
[[nodiscard]] QList<QRect> panels();
// What the screen shows there.
[[nodiscard]] std::vector<QRgb> pixelsOf(const QList<QRect>& rects);

}  // namespace quillo::X11
