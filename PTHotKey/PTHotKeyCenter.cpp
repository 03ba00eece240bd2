#include "PTHotKey/PTHotKeyCenter.h"

#include "foundation/AssertionHandler.h"

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr OSStatus noError = 0;

void fail(int line, QLatin1StringView description) {
  handleFailureInMethod("-[PTHotKeyCenter sendCarbonEvent:]"_L1, "PTHotKeyCenter.cpp"_L1, line, description);
}

}  // namespace

PTHotKeyCenter& PTHotKeyCenter::sharedCenter() {
  static PTHotKeyCenter center;
  return center;
}

void PTHotKeyCenter::setPlatform(HotKeys* platform) {
  for (const auto& hotKey : std::as_const(m_hotKeys)) {
    hotKey->setCarbonHotKeyID(0);
    hotKey->setCarbonEventHotKeyRef(0);
  }
  m_hotKeys.clear();
  m_eventHandlerInstalled = false;
  m_platform = platform;
  if (!m_platform) return;
  m_platform->observeStates([this](HotKeyRef ref, HotKeyState state, const QString& reason) {
    const HotKeyPointer hotKey = hotKeyForCarbonHotKey(ref);
    // A copy, as the observer may set another.
    if (const StateObserver observer = m_stateObserver; observer && hotKey) observer(*hotKey, state, reason);
  });
}

bool PTHotKeyCenter::registerHotKey(const HotKeyPointer& hotKey) {
  if (allHotKeys().contains(hotKey)) unregisterHotKey(hotKey);
  m_lastStatus = noError;
  const PTKeyCombo& combo = *hotKey->keyCombo();
  if (!combo.isValidHotKeyCombo()) return true;

  // Counted before the platform answers, and not given back.
  ++m_hotKeyCount;
  HotKeyRef ref = 0;
  m_lastStatus =
      m_platform ? m_platform->registerHotKey(static_cast<quint32>(combo.keyCode()),
                                              static_cast<quint32>(combo.modifiers()), {signature, m_hotKeyCount}, &ref)
                 : HotKeyStatus::unsupported;
  if (m_lastStatus != noError) return false;
  hotKey->setCarbonHotKeyID(m_hotKeyCount);
  hotKey->setCarbonEventHotKeyRef(ref);
  m_hotKeys.insert(m_hotKeyCount, hotKey);
  updateEventHandler();
  return true;
}

void PTHotKeyCenter::unregisterHotKey(const HotKeyPointer& hotKey) {
  if (!allHotKeys().contains(hotKey) || hotKey->carbonEventHotKeyRef() == 0) return;
  if (m_platform) m_platform->unregisterHotKey(hotKey->carbonEventHotKeyRef());
  m_hotKeys.remove(static_cast<quint32>(hotKey->carbonHotKeyID()));
  hotKey->setCarbonHotKeyID(0);
  hotKey->setCarbonEventHotKeyRef(0);
  updateEventHandler();
}

PTHotKeyCenter::HotKeyPointer PTHotKeyCenter::hotKeyWithIdentifier(
    const std::optional<PropertyListValue>& identifier) const {
  if (!identifier) return nullptr;
  for (const auto& hotKey : m_hotKeys)
    if (hotKey->identifier() == identifier) return hotKey;
  return nullptr;
}

PTHotKeyCenter::HotKeyPointer PTHotKeyCenter::hotKeyForCarbonHotKey(HotKeyRef ref) const {
  for (const auto& hotKey : m_hotKeys)
    if (hotKey->carbonEventHotKeyRef() == ref) return hotKey;
  return nullptr;
}

PTHotKeyCenter::HotKeyPointer PTHotKeyCenter::hotKeyForCarbonHotKeyID(HotKeyID id) const {
  return m_hotKeys.value(id.number);
}

void PTHotKeyCenter::updateEventHandler() {
  // Never taken out again, not even with the last hot key: the next one finds it installed.
  if (m_hotKeys.isEmpty() || m_eventHandlerInstalled) return;
  m_platform->installEventHandler([this](const HotKeyEvent& event) { return sendCarbonEvent(event); });
  m_eventHandlerInstalled = true;
}

OSStatus PTHotKeyCenter::sendCarbonEvent(const HotKeyEvent& event) {
  if (event.eventClass != HotKeyEvent::keyboardClass) {
    fail(__LINE__, "Unknown event class"_L1);
    return noError;
  }
  if (const auto* status = std::get_if<OSStatus>(&event.directObject)) return *status;
  const HotKeyID id = std::get<HotKeyID>(event.directObject);
  if (id.signature != signature || id.number == 0) {
    fail(__LINE__, "Invalid hot key id"_L1);
    return noError;
  }
  const HotKeyPointer hotKey = hotKeyForCarbonHotKeyID(id);
  switch (event.kind) {
    case HotKeyEvent::pressed:
      hotKeyDown(hotKey);
      break;
    case HotKeyEvent::released:
      hotKeyUp(hotKey);
      break;
    default:
      fail(__LINE__, "Unknown event kind"_L1);
  }
  return noError;
}

void PTHotKeyCenter::sendEvent(const FrameworkEvent& event) {
  if (event.type != FrameworkEvent::systemDefined || event.data1 == 0) return;
  const HotKeyPointer hotKey = hotKeyForCarbonHotKey(static_cast<HotKeyRef>(event.data1));
  if (event.subtype == FrameworkEvent::hotKeyPressed) hotKeyDown(hotKey);
  if (event.subtype == FrameworkEvent::hotKeyReleased) hotKeyUp(hotKey);
}

void PTHotKeyCenter::hotKeyDown(const HotKeyPointer& hotKey) {
  // None when it was unregistered while the event was on its way.
  if (hotKey) hotKey->invoke();
}

void PTHotKeyCenter::hotKeyUp(const HotKeyPointer&) {
  // Releases are ignored on purpose.
}

}  // namespace quillo
