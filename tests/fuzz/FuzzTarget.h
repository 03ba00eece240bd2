#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What a fuzzer calls with every input it makes up, and the replay with every file of the corpus. Answers 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace quillo {

inline QByteArray inputBytes(const uint8_t* data, size_t size) {
  return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

// Ends the program where something that holds for every input does not, which counts as a finding.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace quillo
