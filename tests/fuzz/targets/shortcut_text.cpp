#include "FuzzTarget.h"
#include "PTHotKey/ShortcutText.h"
#include "SmallKeyboard.h"

using namespace quillo;

// A combination that a text gives can be a hot key, and its own description means the same combination.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  plugInSmallKeyboard();
  QString reason;
  const auto combo = keyComboFromText(QString::fromUtf8(inputBytes(data, size)), &reason);
  if (!combo) {
    require(!reason.isEmpty(), "a refusal has a reason");
    return 0;
  }
  require(combo->isValidHotKeyCombo(), "a combination can be a hot key");
  const auto again = keyComboFromText(combo->description(), &reason);
  require(again && again->modifiers() == combo->modifiers(), "a description means the same modifiers");
  require(again->keyCodeString() == combo->keyCodeString(), "a description means a key of the same name");
  return 0;
}
