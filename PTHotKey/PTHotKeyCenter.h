#pragma once

#include "PTHotKey/PTHotKey.h"

#include <QHash>
#include <QList>

#include <memory>

namespace quillo {

// An event of the application framework, for programs that receive hot keys as such.
struct FrameworkEvent {
  static constexpr int systemDefined = 14;
  static constexpr int hotKeyPressed = 6;
  static constexpr int hotKeyReleased = 9;

  int type{0};
  int subtype{0};
  qint64 data1{0};  // the claim
};

// The registry of the program's hot keys: claims their combinations with the platform, keeps them under numbers that
// are never used again, and calls the right one when its combination is pressed. Main thread only.
class PTHotKeyCenter {
 public:
  using HotKeyPointer = std::shared_ptr<PTHotKey>;

  // "PTHk": marks the events that belong to this registry.
  static constexpr quint32 signature = 0x5054486B;

  // Made on first use, lives as long as the process. Without a platform it refuses every combination.
  static PTHotKeyCenter& sharedCenter();

  // Told of a registered hot key that the platform lets work, or no longer, some time after it was registered.
  using StateObserver = std::function<void(PTHotKey& hotKey, HotKeyState state, const QString& reason)>;

  explicit PTHotKeyCenter(HotKeys* platform = nullptr) { setPlatform(platform); }
  PTHotKeyCenter(const PTHotKeyCenter&) = delete;
  PTHotKeyCenter& operator=(const PTHotKeyCenter&) = delete;

  // Must outlive its use. Hot keys that are registered are forgotten; numbers go on.
  void setPlatform(HotKeys* platform);
  void setStateObserver(StateObserver observer) { m_stateObserver = std::move(observer); }

  // True for a combination that cannot be a hot key, too: an empty shortcut counts as success, and is not in the
  // registry afterwards: a user without a shortcut must not be told of a failure. False when the platform refuses; the
  // number is used up all the same. A hot key that is registered is unregistered first and gets a fresh number.
  bool registerHotKey(const HotKeyPointer& hotKey);
  // Nothing when it is not registered.
  void unregisterHotKey(const HotKeyPointer& hotKey);

  // In no particular order.
  [[nodiscard]] QList<HotKeyPointer> allHotKeys() const { return m_hotKeys.values(); }
  // Null for no identifier.
  [[nodiscard]] HotKeyPointer hotKeyWithIdentifier(const std::optional<PropertyListValue>& identifier) const;
  [[nodiscard]] HotKeyPointer hotKeyForCarbonHotKey(HotKeyRef ref) const;
  // By the number alone.
  [[nodiscard]] HotKeyPointer hotKeyForCarbonHotKeyID(HotKeyID id) const;

  // Why the platform refused the last registration; 0 when it did not.
  [[nodiscard]] OSStatus lastStatus() const { return m_lastStatus; }

  // What the platform's handler does with an event. One that is not of the kind it was installed for is a programming
  // error: it is logged and dropped.
  OSStatus sendCarbonEvent(const HotKeyEvent& event);
  // The same for events of the application framework. Nothing in this program sends any.
  void sendEvent(const FrameworkEvent& event);

 private:
  void updateEventHandler();
  void hotKeyDown(const HotKeyPointer& hotKey);
  void hotKeyUp(const HotKeyPointer& hotKey);

  HotKeys* m_platform{nullptr};
  StateObserver m_stateObserver;
  QHash<quint32, HotKeyPointer> m_hotKeys;
  bool m_eventHandlerInstalled{false};
  quint32 m_hotKeyCount{0};
  OSStatus m_lastStatus{0};
};

}  // namespace quillo
