// Reading and writing property lists, ours and libplist's. Reading includes giving back what was read.
#include "../SampleLists.h"
#include "Contenders.h"
#include "foundation/PropertyListSerialization.h"

#include <plist/plist.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>

namespace quillo {

namespace {

using namespace std::string_literals;

constexpr qsizetype largeSize = qsizetype{10} << 20;

void check(bool good, const std::string& what) {
  if (good) return;
  std::cerr << "bench_contenders: " << what << '\n';
  std::exit(1);
}

// As many entries as make ten MiB of that form.
PropertyListValue large(PropertyListFormat format) {
  constexpr int some = 10000;
  const auto sample = PropertyListSerialization::dataWithPropertyList(sampleEntries(some), format);
  check(sample.has_value(), "the sample cannot be written");
  return sampleEntries(static_cast<int>(largeSize * some / sample->size()));
}

plist_t readByLibplist(const QByteArray& file, bool isXML) {
  plist_t list = nullptr;
  const auto size = static_cast<uint32_t>(file.size());
  isXML ? plist_from_xml(file.constData(), size, &list) : plist_from_bin(file.constData(), size, &list);
  return list;
}

void writeByLibplist(plist_t list, bool isXML) {
  char* bytes = nullptr;
  uint32_t size = 0;
  isXML ? plist_to_xml(list, &bytes, &size) : plist_to_bin(list, &bytes, &size);
  check(bytes != nullptr, "libplist did not write");
  isXML ? plist_to_xml_free(bytes) : plist_to_bin_free(bytes);
}

void add(Contenders& contenders, const std::string& directory, const std::string& size, const PropertyListValue& value,
         PropertyListFormat format) {
  const bool isXML = format == PropertyListFormat::XML;
  const std::string name = size + (isXML ? "/xml" : "/binary");
  const QByteArray file = PropertyListSerialization::dataWithPropertyList(value, format).value_or(QByteArray());
  const std::shared_ptr<void> theirs(readByLibplist(file, isXML), plist_free);
  check(!file.isEmpty() && theirs, name + " cannot be prepared");
  std::ofstream(directory + "/" + size + (isXML ? ".xml" : ".binary"), std::ios::binary)
      .write(file.constData(), file.size());

  contenders["read/" + name + "/ours"] = [=] {
    check(PropertyListSerialization::propertyListWithData(file).has_value(), name + " was not read");
  };
  contenders["read/" + name + "/libplist"] = [=] {
    const plist_t list = readByLibplist(file, isXML);
    check(list != nullptr, name + " was not read by libplist");
    plist_free(list);
  };
  contenders["write/" + name + "/ours"] = [=] {
    check(PropertyListSerialization::dataWithPropertyList(value, format).has_value(), name + " was not written");
  };
  contenders["write/" + name + "/libplist"] = [=] { writeByLibplist(theirs.get(), isXML); };
}

}  // namespace

void addLists(Contenders& contenders, const std::string& directory) {
  for (const PropertyListFormat format : {PropertyListFormat::XML, PropertyListFormat::Binary}) {
    add(contenders, directory, "small", sampleSettings(), format);
    add(contenders, directory, "large", large(format), format);
  }
}

}  // namespace quillo
