#pragma once

#include <QByteArrayView>

namespace quillo {

// The place of the first byte that begins no character, or -1 where all of it is UTF-8.
[[nodiscard]] qsizetype firstInvalidUtf8Byte(QByteArrayView bytes);

}  // namespace quillo
