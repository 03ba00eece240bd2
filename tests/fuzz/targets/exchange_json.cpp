#include "FuzzTarget.h"
#include "exchange/EntryJson.h"
#include "exchange/JsonSource.h"
#include "exchange/TypedJson.h"
#include "qlcore/QLJournalEntryFile.h"

#include <QBuffer>

using namespace quillo;

namespace {

void check(const ImportedEntry& entry) {
  require(QLJournalEntryFile::canonicalUUID(entry.uuid) == entry.uuid, "an entry has an identifier");
  QString problem;
  const auto again = EntryJson::toFields(EntryJson::fromFields(entry.uuid, entry.fields), &problem);
  require(again.has_value(), "what was read can be written and read");
  require(typedJson(*again) == typedJson(entry.fields), "nothing is lost on the way");
}

}  // namespace

// The input as a document to import.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  QByteArray bytes = inputBytes(data, size);
  QBuffer device(&bytes);
  device.open(QIODevice::ReadOnly);
  qint64 items = 0;
  JsonSource::read(device, QStringLiteral("input"), [&](const ImportItem& item) {
    require(++items <= bytes.size() + 1, "a document has an end");
    if (const auto* entry = std::get_if<ImportedEntry>(&item)) check(*entry);
    if (const auto* problem = std::get_if<ImportProblem>(&item))
      require(!problem->reason.isEmpty() && problem->place.line <= bytes.count('\n') + 1,
              "a refusal has a reason and a place");
    return true;
  });
  return 0;
}
