#include "preferences/model/ShortcutTrial.h"

#include <utility>

namespace quillo {

namespace {

// Of the events of our claim, which nobody takes.
constexpr HotKeyID trialID{0x54726961, 1};  // "Tria"

}  // namespace

ShortcutTrial::ShortcutTrial(HotKeys* platform) : m_platform(platform) {
  if (!m_platform) return;
  m_platform->observeStates(
      [this](HotKeyRef claim, HotKeyState state, const QString& reason) { stateDidChange(claim, state, reason); });
}

ShortcutTrial::~ShortcutTrial() {
  cancel();
  if (m_platform) m_platform->observeStates({});
}

void ShortcutTrial::ask(const PTKeyCombo& combo, Answer answer) {
  cancel();
  if (!m_platform) return answer({});
  HotKeyRef claim = 0;
  const OSStatus status = m_platform->registerHotKey(static_cast<quint32>(combo.keyCode()),
                                                     static_cast<quint32>(combo.modifiers()), trialID, &claim);
  if (status != HotKeyStatus::done) return answer(hotKeyStatusText(status));
  m_claim = claim;
  m_answer = std::move(answer);
  // Else the platform says later how it ended.
  if (const HotKeyState state = m_platform->state(claim); state != HotKeyState::Pending)
    stateDidChange(claim, state, {});
}

void ShortcutTrial::cancel() {
  m_answer = {};
  if (const HotKeyRef claim = std::exchange(m_claim, 0)) m_platform->unregisterHotKey(claim);
}

void ShortcutTrial::stateDidChange(HotKeyRef claim, HotKeyState state, const QString& reason) {
  if (claim != m_claim || state == HotKeyState::Pending) return;
  const Answer answer = std::move(m_answer);
  cancel();
  if (state == HotKeyState::Active) return answer({});
  answer(reason.isEmpty() ? hotKeyStatusText(state == HotKeyState::Unsupported ? HotKeyStatus::unsupported
                                                                               : HotKeyStatus::alreadyClaimed)
                          : reason.simplified());
}

}  // namespace quillo
