#include "ImportLaws.h"
#include "exchange/CsvSource.h"
#include "foundation/Utf8.h"

using namespace quillo;

// The input as a table to import.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const QByteArray bytes = inputBytes(data, size);
  if (firstInvalidUtf8Byte(bytes) >= 0) return 0;
  checkImport(bytes, [&](const ImportTaker& take) { CsvSource::read(bytes, QStringLiteral("t.csv"), true, take); });
  return 0;
}
