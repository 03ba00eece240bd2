#pragma once

#include "platform/HotKeys.h"
#include "platform/linux/X11Modifiers.h"
#include "platform/linux/desktop/RawKeyReleases.h"

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QTimer>

#include <optional>
#include <vector>

struct xcb_connection_t;
struct xcb_key_press_event_t;

namespace quillo {

// Claims combinations as passive key grabs on the root window of an X server, over Qt's own connection. The
// grabs cover every state of Caps, Num and Scroll Lock, and follow the keyboard map when it changes.
//
// While another program has grabbed the whole keyboard, as its open menus and screen locks do, X gives it every key
// and no grab works. Menus of this program are no obstacle. Needs a QGuiApplication.
class X11HotKeys final : public QObject, public HotKeys, public QAbstractNativeEventFilter {
 public:
  // Whether the program shows its windows through an X server.
  [[nodiscard]] static bool isAvailable();

  X11HotKeys();
  ~X11HotKeys() override;

  OSStatus registerHotKey(quint32 keyCode, quint32 modifiers, HotKeyID id, HotKeyRef* ref) override;
  OSStatus unregisterHotKey(HotKeyRef ref) override;
  void installEventHandler(Handler handler) override;
  [[nodiscard]] HotKeyState state(HotKeyRef ref) const override;
  void observeStates(StateObserver observer) override;

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

 private:
  using Milliseconds = quint32;  // of the server's clock, which wraps around

  // The key as it goes down and up, and what the keyboard repeats meanwhile.
  struct KeyMotion {
    bool isDown{false};
    Milliseconds since{0};
    Milliseconds last{0};  // the last event of the key
    bool releaseIsPending{false};

    // Whether a press is a new one, and not a repetition.
    bool press(Milliseconds time);
    void release(Milliseconds time);
  };
  struct Claim {
    HotKeyRef ref{0};
    HotKeyID id;
    quint32 keyCode{0};
    quint32 modifiers{0};
    quint8 keycode{0};  // the server's
    quint16 mask{0};
    bool isGrabbed{false};
    KeyMotion motion;
  };

  // What only claims need: programs without any start without it.
  void prepare();
  [[nodiscard]] Claim* find(HotKeyRef ref);
  OSStatus grab(Claim& claim);
  void ungrab(Claim& claim);
  void readModifiers();
  void keyboardMapChanged();
  // Whether the event is to be kept from Qt.
  bool keyPressed(const xcb_key_press_event_t& key);
  void keyReleased(quint8 keycode, Milliseconds time);
  void listenForReleases();
  void deliver(const Claim& claim, quint32 kind) const;

  xcb_connection_t* m_connection{nullptr};  // Qt's; null without an X server
  quint32 m_root{0};
  quint8 m_firstXkbEvent{0};                 // 0 without the extension
  std::optional<RawKeyReleases> m_releases;  // from the first claim on
  X11Modifiers m_modifiers;
  std::vector<Claim> m_claims;
  HotKeyRef m_lastRef{0};
  QTimer m_mapSettled;
  Handler m_handler;
  StateObserver m_observer;
};

}  // namespace quillo
