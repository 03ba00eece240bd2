#include "PropertyListLaws.h"
#include "foundation/PropertyListCoding.h"

using namespace quillo;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Error error;
  const auto value = PropertyListCoding::readBinary(inputBytes(data, size), &error);
  requireLawsOfReading(value, error);
  return 0;
}
