#include "foundation/TextRange.h"

#include <algorithm>

namespace quillo {

TextRange rangeBetweenSpaces(QStringView text, qsizetype location) {
  qsizetype start = std::clamp(location, qsizetype{0}, text.size());
  qsizetype end = start;
  // Every space and line end is a single unit, so that no surrogate pair is ever cut.
  while (start > 0 && !text[start - 1].isSpace()) --start;
  while (end < text.size() && !text[end].isSpace()) ++end;
  return TextRange::between(start, end);
}

}  // namespace quillo
