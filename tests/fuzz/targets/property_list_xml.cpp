#include "PropertyListLaws.h"

using namespace quillo;

// By the public function, so that byte order marks and declared encodings have their part.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Error error;
  const auto value = PropertyListSerialization::propertyListWithData(inputBytes(data, size), nullptr, &error);
  requireLawsOfReading(value, error);
  return 0;
}
