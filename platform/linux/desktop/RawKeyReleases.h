#pragma once

#include <QtGlobal>

#include <optional>

struct xcb_connection_t;

namespace quillo {

// Hears keys go up wherever the keyboard's events go: what a grab does not deliver goes to the window that has the
// keyboard, which may be another program's. Listens only while it is told to, since it would otherwise wake the program
// with every key that is typed anywhere.
class RawKeyReleases {
 public:
  struct Release {
    quint8 keycode;
    quint32 time;  // of the server's clock, in milliseconds
  };

  // The connection must outlive this object; null is allowed. Where the server lacks the extension nothing is heard.
  explicit RawKeyReleases(xcb_connection_t* connection);

  // Takes effect before whatever is requested over the connection afterwards.
  void listen(bool on);
  // The release that an event of the connection tells of. `event`: as native event filters get it.
  [[nodiscard]] std::optional<Release> releaseIn(const void* event) const;

 private:
  xcb_connection_t* m_connection;
  quint32 m_root{0};
  quint8 m_extensionOpcode{0};  // 0 without the extension
  bool m_isListening{false};
};

}  // namespace quillo
