#pragma once

#include "config/Keys.h"
#include "config/PersistentPropertyList.h"

namespace quillo {

// The size of the text that is read and written in the journal, in points.
namespace TextSize {
inline constexpr int usual = 16;
inline constexpr int smallest = 9;
inline constexpr int largest = 40;

// The setting's, where it is one that can be read; a null list has none.
[[nodiscard]] inline int ofSettings(const PersistentPropertyList* list) {
  const qint64 points = list ? list->integerForKey(Key::fontSize) : 0;
  return points >= smallest && points <= largest ? static_cast<int>(points) : usual;
}
}  // namespace TextSize

}  // namespace quillo
