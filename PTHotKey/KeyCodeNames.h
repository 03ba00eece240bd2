#pragma once

#include "foundation/Bundle.h"
#include "foundation/PropertyListValue.h"

#include <optional>
#include <utility>

namespace quillo {

// The bundle's property list "PTKeyCodes": names of keys that no keyboard layout names. Main thread only.
class KeyCodeNames {
 public:
  explicit KeyCodeNames(Bundle bundle) : m_bundle(std::move(bundle)) {}

  // Read once; empty, and tried again at the next call, while it cannot be read.
  [[nodiscard]] PropertyListDictionary dictionary();

 private:
  Bundle m_bundle;
  std::optional<PropertyListDictionary> m_dictionary;
};

}  // namespace quillo
