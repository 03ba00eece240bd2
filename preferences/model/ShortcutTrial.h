#pragma once

#include "PTHotKey/PTKeyCombo.h"
#include "platform/HotKeys.h"

#include <QString>

#include <functional>

namespace quillo {

// Asks the platform whether a combination could be claimed, by claiming it for as long as that takes. Nothing stays
// claimed. Main thread only.
class ShortcutTrial {
 public:
  // The platform must outlive the object. Null is one that cannot be asked: every combination is then free.
  explicit ShortcutTrial(HotKeys* platform);
  ~ShortcutTrial();
  ShortcutTrial(const ShortcutTrial&) = delete;
  ShortcutTrial& operator=(const ShortcutTrial&) = delete;

  // Empty for a combination that is free, else what completes "The shortcut is not available: ".
  using Answer = std::function<void(const QString& problem)>;
  // Answers at once where the platform knows at once, else from the event loop. Drops a question before it.
  void ask(const PTKeyCombo& combo, Answer answer);
  void cancel();
  [[nodiscard]] bool isAsking() const { return m_claim != 0; }

 private:
  void stateDidChange(HotKeyRef claim, HotKeyState state, const QString& reason);

  HotKeys* m_platform;
  HotKeyRef m_claim{0};
  Answer m_answer;
};

}  // namespace quillo
