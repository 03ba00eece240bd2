#pragma once

#include <QString>
#include <QtGlobal>

#include <functional>
#include <variant>

namespace quillo {

// A status of the platform; 0 is success.
using OSStatus = qint32;

namespace HotKeyStatus {
inline constexpr OSStatus done = 0;
// Another program has claimed the combination.
inline constexpr OSStatus alreadyClaimed = -9878;
// The keyboard has no such key or modifiers.
inline constexpr OSStatus invalid = -9879;
// This desktop lets no program claim keys.
inline constexpr OSStatus unsupported = -50;
}  // namespace HotKeyStatus

// Bits of a combination's modifiers, as combinations are stored.
namespace HotKeyModifier {
inline constexpr quint32 command = 0x0100;
inline constexpr quint32 shift = 0x0200;
inline constexpr quint32 option = 0x0800;
inline constexpr quint32 control = 0x1000;
}  // namespace HotKeyModifier

// Names a hot key in the events of its presses. The platform carries it and does not look at it.
struct HotKeyID {
  quint32 signature{0};
  quint32 number{0};

  bool operator==(const HotKeyID&) const = default;
};

// Stands for a claimed combination; 0 is none. Numbers are not used twice.
using HotKeyRef = quint64;

struct HotKeyEvent {
  static constexpr quint32 keyboardClass = 0x6B657962;  // "keyb"
  static constexpr quint32 pressed = 5;
  static constexpr quint32 released = 6;

  quint32 eventClass{keyboardClass};
  quint32 kind{pressed};
  // Which hot key, or the status that stands for why that cannot be read.
  std::variant<HotKeyID, OSStatus> directObject;
};

// How far a claim has come. Where the desktop asks the user first, it is pending until there is an answer.
enum class HotKeyState { Pending, Active, Refused, Unsupported };

// Claims key combinations that work while another program has the keyboard. Main thread only.
class HotKeys {
 public:
  using Handler = std::function<OSStatus(const HotKeyEvent&)>;
  // `reason` completes "The shortcut is not available: "; it is empty unless the claim has failed.
  using StateObserver = std::function<void(HotKeyRef, HotKeyState, const QString& reason)>;

  virtual ~HotKeys() = default;

  // Claims a virtual key code with modifiers. On success `*ref` stands for the claim, which is active or pending. On
  // failure nothing stays claimed.
  virtual OSStatus registerHotKey(quint32 keyCode, quint32 modifiers, HotKeyID id, HotKeyRef* ref) = 0;
  // Takes effect at once: not even a press that is on its way is delivered afterwards.
  virtual OSStatus unregisterHotKey(HotKeyRef ref) = 0;
  // Where the presses and releases go, from the event loop. A key that is held is one press.
  virtual void installEventHandler(Handler handler) = 0;

  // Refused for a claim that does not exist.
  [[nodiscard]] virtual HotKeyState state(HotKeyRef ref) const = 0;
  // Called from the event loop when a claim goes to another state later than registerHotKey().
  virtual void observeStates(StateObserver observer) = 0;
};

// Completes "The shortcut is not available: " for a status of registerHotKey().
[[nodiscard]] inline QString hotKeyStatusText(OSStatus status) {
  switch (status) {
    case HotKeyStatus::alreadyClaimed:
      return QStringLiteral("another program has claimed it");
    case HotKeyStatus::invalid:
      return QStringLiteral("this keyboard has no such key or modifier");
    case HotKeyStatus::unsupported:
      return QStringLiteral("this desktop lets no program claim keys");
    default:
      return QStringLiteral("the platform's status is %1").arg(status);
  }
}

}  // namespace quillo
