#pragma once

#include <QString>

namespace quillo {

// Fills the folder of entries at `path` with `count` entries of about 600 bytes of text: words as frequent as those of
// a language are, tags, places, dates over ten years; some with accents, some in Chinese, Japanese and Korean. The same
// for the same `seed`. False where a file could not be written.
bool makeSampleEntries(const QString& path, int count, unsigned seed);

// The `rank`-th most frequent word of it, from 0.
[[nodiscard]] QString sampleWord(int rank);

}  // namespace quillo
