#include "foundation/Utf8.h"

#include <unicode/utf8.h>

namespace quillo {

qsizetype firstInvalidUtf8Byte(QByteArrayView bytes) {
  const auto length = static_cast<int64_t>(bytes.size());
  for (int64_t at = 0; at < length;) {
    const int64_t start = at;
    UChar32 character = 0;
    U8_NEXT(bytes.data(), at, length, character);
    if (character < 0) return start;
  }
  return -1;
}

}  // namespace quillo
