#include "platform/linux/desktop/X11HotKeys.h"

#include "platform/linux/VirtualKeyCodes.h"
#include "platform/linux/desktop/X11.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <memory>

namespace quillo {

using X11::owned;

namespace {

// A change of the layout comes as a burst of events.
constexpr std::chrono::milliseconds mapSettleTime{50};
// No keyboard begins to repeat before this, and no finger presses anew within the millisecond in which it let go after
// holding so long.
constexpr quint32 shortestRepeatDelay = 100;
// A keyboard repeats faster than this. A press after a longer silence is a new one even if its release was missed.
constexpr quint32 longestRepeatInterval = 1000;
// The press of a repetition is sent together with the release before it.
constexpr std::chrono::milliseconds repetitionWait{30};
constexpr quint16 highestKeycode = 255;

quint8 firstXkbEvent(xcb_connection_t* connection) {
  static constexpr char name[] = "XKEYBOARD";
  const auto reply =
      owned(xcb_query_extension_reply(connection, xcb_query_extension(connection, sizeof name - 1, name), nullptr));
  return reply && reply->present ? reply->first_event : 0;
}

}  // namespace

bool X11HotKeys::isAvailable() {
  return X11::connection() != nullptr;
}

X11HotKeys::X11HotKeys() : m_connection(X11::connection()) {}

void X11HotKeys::prepare() {
  if (m_releases) return;
  m_releases.emplace(m_connection);
  m_root = X11::rootWindow();
  m_firstXkbEvent = firstXkbEvent(m_connection);
  m_mapSettled.setSingleShot(true);
  m_mapSettled.setInterval(mapSettleTime);
  connect(&m_mapSettled, &QTimer::timeout, this, &X11HotKeys::keyboardMapChanged);
  qGuiApp->installNativeEventFilter(this);
}

X11HotKeys::~X11HotKeys() {
  // Without an application there is no connection any more either.
  if (!qGuiApp || !m_releases) return;
  for (Claim& claim : m_claims) ungrab(claim);
  m_releases->listen(false);
  xcb_flush(m_connection);
}

OSStatus X11HotKeys::registerHotKey(quint32 keyCode, quint32 modifiers, HotKeyID id, HotKeyRef* ref) {
  if (!m_connection || xcb_connection_has_error(m_connection)) return HotKeyStatus::unsupported;
  prepare();
  if (m_claims.empty()) readModifiers();
  Claim claim;
  claim.id = id;
  claim.keyCode = keyCode;
  claim.modifiers = modifiers;
  const OSStatus status = grab(claim);
  if (status != HotKeyStatus::done) return status;
  claim.ref = ++m_lastRef;
  *ref = claim.ref;
  m_claims.push_back(claim);
  return HotKeyStatus::done;
}

OSStatus X11HotKeys::unregisterHotKey(HotKeyRef ref) {
  const auto claim = std::find_if(m_claims.begin(), m_claims.end(), [ref](const Claim& c) { return c.ref == ref; });
  if (claim == m_claims.end()) return HotKeyStatus::invalid;
  ungrab(*claim);
  xcb_flush(m_connection);
  m_claims.erase(claim);
  listenForReleases();
  return HotKeyStatus::done;
}

void X11HotKeys::installEventHandler(Handler handler) {
  m_handler = std::move(handler);
}

HotKeyState X11HotKeys::state(HotKeyRef ref) const {
  const bool isGrabbed = std::any_of(m_claims.begin(), m_claims.end(),
                                     [ref](const Claim& claim) { return claim.ref == ref && claim.isGrabbed; });
  return isGrabbed ? HotKeyState::Active : HotKeyState::Refused;
}

void X11HotKeys::observeStates(StateObserver observer) {
  m_observer = std::move(observer);
}

X11HotKeys::Claim* X11HotKeys::find(HotKeyRef ref) {
  const auto claim = std::find_if(m_claims.begin(), m_claims.end(), [ref](const Claim& c) { return c.ref == ref; });
  return claim == m_claims.end() ? nullptr : &*claim;
}

OSStatus X11HotKeys::grab(Claim& claim) {
  const auto evdev = evdevCodeOfVirtualKey(claim.keyCode);
  const auto mask = x11Mask(claim.modifiers, m_modifiers);
  if (!evdev || *evdev + keycodeOffset > highestKeycode || !mask) return HotKeyStatus::invalid;
  claim.keycode = static_cast<quint8>(*evdev + keycodeOffset);
  claim.mask = *mask;
  // The server lets a program claim twice, and would take both away with the first that goes.
  for (const Claim& other : m_claims)
    if (other.ref != claim.ref && other.isGrabbed && other.keycode == claim.keycode && other.mask == claim.mask)
      return HotKeyStatus::alreadyClaimed;

  std::vector<xcb_void_cookie_t> requests;
  for (const quint16 locks : lockVariants(m_modifiers))
    requests.push_back(xcb_grab_key_checked(m_connection, /*owner_events=*/0, m_root,
                                            static_cast<quint16>(claim.mask | locks), claim.keycode,
                                            XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
  claim.isGrabbed = true;
  OSStatus status = HotKeyStatus::done;
  for (const auto request : requests)
    if (const auto error = owned(xcb_request_check(m_connection, request)))
      status = error->error_code == XCB_ACCESS ? HotKeyStatus::alreadyClaimed : HotKeyStatus::invalid;
  // Some of the variants may have been free.
  if (status != HotKeyStatus::done) ungrab(claim);
  return status;
}

void X11HotKeys::ungrab(Claim& claim) {
  if (!std::exchange(claim.isGrabbed, false)) return;
  for (const quint16 locks : lockVariants(m_modifiers))
    xcb_ungrab_key(m_connection, claim.keycode, m_root, static_cast<quint16>(claim.mask | locks));
}

void X11HotKeys::readModifiers() {
  const auto* setup = xcb_get_setup(m_connection);
  const auto first = setup->min_keycode;
  const auto count = static_cast<quint8>(setup->max_keycode - first + 1);
  const auto mappingRequest = xcb_get_modifier_mapping(m_connection);
  const auto keysymsRequest = xcb_get_keyboard_mapping(m_connection, first, count);
  const auto mapping = owned(xcb_get_modifier_mapping_reply(m_connection, mappingRequest, nullptr));
  const auto keysyms = owned(xcb_get_keyboard_mapping_reply(m_connection, keysymsRequest, nullptr));
  if (!mapping || !keysyms) return;
  const std::span<const quint8> keycodes(xcb_get_modifier_mapping_keycodes(mapping.get()),
                                         static_cast<size_t>(xcb_get_modifier_mapping_keycodes_length(mapping.get())));
  const std::span<const xcb_keysym_t> symbols(
      xcb_get_keyboard_mapping_keysyms(keysyms.get()),
      static_cast<size_t>(xcb_get_keyboard_mapping_keysyms_length(keysyms.get())));
  const size_t width = keysyms->keysyms_per_keycode;
  m_modifiers = x11ModifiersOfMapping(keycodes, [&](quint8 keycode, quint32 keysym) {
    const size_t begin = keycode < first ? symbols.size() : (keycode - first) * width;
    if (begin + width > symbols.size()) return false;
    const auto row = symbols.subspan(begin, width);
    return std::find(row.begin(), row.end(), keysym) != row.end();
  });
}

void X11HotKeys::keyboardMapChanged() {
  if (m_claims.empty() || xcb_connection_has_error(m_connection)) return;
  const X11Modifiers before = m_modifiers;
  readModifiers();
  const X11Modifiers now = m_modifiers;
  const bool changed = now != before;
  if (changed) {
    // Taken away as they were claimed.
    m_modifiers = before;
    for (Claim& claim : m_claims) {
      claim.motion = {};
      if (claim.isGrabbed) ungrab(claim);
    }
    m_modifiers = now;
    listenForReleases();
  }
  // The observer may unregister what it hears of, so it is told when all is done.
  struct Change {
    HotKeyRef ref;
    OSStatus status;
  };
  std::vector<Change> changes;
  for (Claim& claim : m_claims) {
    if (claim.isGrabbed) continue;
    const OSStatus status = grab(claim);
    changes.push_back({claim.ref, status});
  }
  for (const Change& change : changes) {
    const bool active = change.status == HotKeyStatus::done;
    if (m_observer && find(change.ref))
      m_observer(change.ref, active ? HotKeyState::Active : HotKeyState::Refused,
                 active ? QString() : hotKeyStatusText(change.status));
  }
}

bool X11HotKeys::KeyMotion::press(Milliseconds time) {
  const Milliseconds silence = time - last;
  const bool repeats =
      isDown ? silence < longestRepeatInterval : last != 0 && silence == 0 && time - since >= shortestRepeatDelay;
  // The release before a repetition was none.
  if (repeats)
    releaseIsPending = false;
  else
    since = time;
  isDown = true;
  last = time;
  return !repeats;
}

void X11HotKeys::KeyMotion::release(Milliseconds time) {
  isDown = false;
  releaseIsPending = true;
  last = time;
}

bool X11HotKeys::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (m_claims.empty() || eventType != "xcb_generic_event_t") return false;
  const auto* event = static_cast<const xcb_generic_event_t*>(message);
  const quint8 type = event->response_type & 0x7f;
  if (type == XCB_MAPPING_NOTIFY || (m_firstXkbEvent != 0 && type == m_firstXkbEvent)) {
    // The kind of an extension's event stands where others have details. Every key moves the state (2): no change.
    constexpr quint8 xkbStateNotify = 2;
    if (type == XCB_MAPPING_NOTIFY || event->pad0 < xkbStateNotify) m_mapSettled.start();
    return false;
  }
  const auto* key = static_cast<const xcb_key_press_event_t*>(message);
  if (type == XCB_KEY_PRESS) return keyPressed(*key);
  if (type == XCB_KEY_RELEASE)
    keyReleased(key->detail, key->time);
  else if (const auto release = m_releases->releaseIn(message))
    keyReleased(release->keycode, release->time);
  return false;
}

bool X11HotKeys::keyPressed(const xcb_key_press_event_t& key) {
  const auto claim = std::find_if(m_claims.begin(), m_claims.end(), [&](const Claim& c) {
    return c.isGrabbed && c.keycode == key.detail && c.mask == withoutLocks(key.state, m_modifiers);
  });
  if (claim == m_claims.end()) return false;
  if (claim->motion.press(key.time)) {
    // A menu of ours that had the keyboard may close because of the press, and the release would go elsewhere.
    listenForReleases();
    // After Qt has handled the event, and only if the claim is still there then.
    const bool withRelease = std::exchange(claim->motion.releaseIsPending, false);
    QMetaObject::invokeMethod(
        this,
        [this, ref = claim->ref, withRelease] {
          if (const Claim* still = withRelease ? find(ref) : nullptr) deliver(*still, HotKeyEvent::released);
          if (const Claim* still = find(ref)) deliver(*still, HotKeyEvent::pressed);
        },
        Qt::QueuedConnection);
  }
  // What the grab delivers to the root window goes on to Qt, which learns from it when the user last did
  // something: a window may then take the keyboard. What came to a menu of ours must not reach it.
  return key.event != m_root;
}

// By then the modifiers may be up. A release that is heard twice is one.
void X11HotKeys::keyReleased(quint8 keycode, Milliseconds time) {
  for (Claim& claim : m_claims) {
    if (!claim.isGrabbed || claim.keycode != keycode || !claim.motion.isDown) continue;
    claim.motion.release(time);
    // Told once no repetition has followed it, or with the next press.
    QTimer::singleShot(repetitionWait, this, [this, ref = claim.ref, time] {
      Claim* still = find(ref);
      if (still && still->motion.last == time && std::exchange(still->motion.releaseIsPending, false)) {
        listenForReleases();
        deliver(*still, HotKeyEvent::released);
      }
    });
  }
}

void X11HotKeys::listenForReleases() {
  if (!m_releases) return;
  m_releases->listen(std::any_of(m_claims.begin(), m_claims.end(), [](const Claim& c) { return c.motion.isDown; }));
}

void X11HotKeys::deliver(const Claim& claim, quint32 kind) const {
  // A copy, as the handler may set another.
  if (const Handler handler = m_handler) handler({.kind = kind, .directObject = claim.id});
}

}  // namespace quillo
