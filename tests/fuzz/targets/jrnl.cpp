#include "ImportLaws.h"
#include "exchange/JrnlSource.h"
#include "foundation/Utf8.h"

#include <QBuffer>

using namespace quillo;

// The input as a text of jrnl to import, and as its JSON.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  QByteArray bytes = inputBytes(data, size);
  if (firstInvalidUtf8Byte(bytes) >= 0) return 0;
  checkImport(bytes, [&](const ImportTaker& take) {
    JrnlEntries entries(/*makesTagsOfHashtags=*/true);
    JrnlSource::readText(bytes, QStringLiteral("jrnl.txt"), entries, take);
  });
  checkImport(bytes, [&](const ImportTaker& take) {
    JrnlEntries entries(/*makesTagsOfHashtags=*/true);
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    JrnlSource::readJson(device, QStringLiteral("jrnl.json"), entries, take);
  });
  return 0;
}
