#include "platform/linux/desktop/RawKeyReleases.h"

#include "platform/linux/desktop/X11.h"

#include <xcb/xcb.h>
// The header names a field "explicit".
#define explicit explicit_
#include <xcb/xinput.h>
#undef explicit

#include <utility>

namespace quillo {

using X11::owned;

RawKeyReleases::RawKeyReleases(xcb_connection_t* connection) : m_connection(connection) {
  if (!connection) return;
  const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_input_id);
  if (!extension || !extension->present) return;
  // Raw events reach listeners during other programs' grabs from version 2.1 on.
  const auto version =
      owned(xcb_input_xi_query_version_reply(connection, xcb_input_xi_query_version(connection, 2, 2), nullptr));
  if (!version || version->major_version < 2) return;
  m_extensionOpcode = extension->major_opcode;
  m_root = X11::rootWindow();
}

void RawKeyReleases::listen(bool on) {
  if (m_extensionOpcode == 0 || std::exchange(m_isListening, on) == on) return;
  const struct {
    xcb_input_event_mask_t head;
    uint32_t mask;
  } selection = {{XCB_INPUT_DEVICE_ALL_MASTER, 1}, on ? uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE} : 0};
  xcb_input_xi_select_events(m_connection, m_root, 1, &selection.head);
  xcb_flush(m_connection);
}

std::optional<RawKeyReleases::Release> RawKeyReleases::releaseIn(const void* event) const {
  const auto* generic = static_cast<const xcb_ge_generic_event_t*>(event);
  if (!m_isListening || (generic->response_type & 0x7f) != XCB_GE_GENERIC || generic->extension != m_extensionOpcode ||
      generic->event_type != XCB_INPUT_RAW_KEY_RELEASE)
    return {};
  const auto* raw = static_cast<const xcb_input_raw_key_release_event_t*>(event);
  return Release{static_cast<quint8>(raw->detail), raw->time};
}

}  // namespace quillo
