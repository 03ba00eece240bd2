#include "FuzzTarget.h"
#include "PTHotKey/PTKeyCombo.h"
#include "SmallKeyboard.h"
#include "foundation/PropertyListSerialization.h"

using namespace quillo;

// The input as a property list, the form a combination is stored in. Whatever it says, the combination has a name, and
// storing it again changes nothing more.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  plugInSmallKeyboard();
  const auto value = PropertyListSerialization::propertyListWithData(inputBytes(data, size));
  if (!value) return 0;
  const auto combo = PTKeyCombo::keyComboWithPlistRepresentation(value->dictionary());
  require(!combo->description().isEmpty(), "every combination has a description");
  require(combo->isClearCombo() == combo->keyCodeString().isEmpty(), "every key has a name");
  require(combo->keyCode() >= PTKeyCombo::noKey, "no key is below -1");
  (void)combo->modifierMask();
  const auto again = PTKeyCombo::keyComboWithPlistRepresentation(combo->plistRepresentation());
  require(again->isEqual(*combo), "storing a stored combination keeps it");
  return 0;
}
