#pragma once

#include "platform/HotKeys.h"

#include <QList>

#include <map>

namespace quillo {

// Claims whatever it is not told to refuse; a test presses the keys.
struct FakeHotKeys : HotKeys {
  struct Claim {
    quint32 keyCode;
    quint32 modifiers;
    HotKeyID id;
    bool operator==(const Claim&) const = default;
  };

  OSStatus registerHotKey(quint32 keyCode, quint32 modifiers, HotKeyID id, HotKeyRef* ref) override {
    if (refusal != HotKeyStatus::done) return refusal;
    *ref = ++lastRef;
    claims[lastRef] = {keyCode, modifiers, id};
    return HotKeyStatus::done;
  }
  OSStatus unregisterHotKey(HotKeyRef ref) override {
    claims.erase(ref);
    return unregisterStatus;
  }
  void installEventHandler(Handler handler) override {
    ++handlersInstalled;
    eventHandler = std::move(handler);
  }
  HotKeyState state(HotKeyRef ref) const override { return claims.contains(ref) ? initialState : HotKeyState::Refused; }
  void observeStates(StateObserver observer) override { stateObserver = std::move(observer); }

  // A combination that nobody has claimed does nothing.
  void press(quint32 keyCode, quint32 modifiers, quint32 kind = HotKeyEvent::pressed) {
    for (const auto& [ref, claim] : claims)
      if (claim.keyCode == keyCode && claim.modifiers == modifiers) {
        const HotKeyEvent event{.kind = kind, .directObject = claim.id};
        eventHandler(event);
        return;
      }
  }

  std::map<HotKeyRef, Claim> claims;
  HotKeyRef lastRef{100};
  OSStatus refusal{HotKeyStatus::done};
  HotKeyState initialState{HotKeyState::Active};
  OSStatus unregisterStatus{HotKeyStatus::done};
  int handlersInstalled{0};
  Handler eventHandler;
  StateObserver stateObserver;
};

}  // namespace quillo
