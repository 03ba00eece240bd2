#include "FuzzTarget.h"
#include "foundation/FileContents.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "tests/support/TestHome.h"

#include <QUrl>

using namespace quillo;

namespace {

const QString uuid = QStringLiteral("0D6F6A0E-5C4B-4B7B-9C0B-3F0F6B1B2A11");

struct Journal {
  TestHome home;
  std::shared_ptr<QLJournalPackageFile> package{QLJournalPackageFile::openPackage(
      QUrl::fromLocalFile(home.path(QStringLiteral("Fuzzed.quillojournal"))), /*create=*/true, nullptr)};
  QString entryPath{package->entriesFolder() + u'/' + QLJournalEntryFile::fileName(uuid)};
};

}  // namespace

// The input as the file of an entry. What can be read can be changed, saved and read back with nothing lost.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Journal journal;
  Error error;
  require(writeFileInPlace(journal.entryPath, inputBytes(data, size), &error), "the input can be stored");
  const auto entry = QLJournalEntryFile::entryWithUUID(*journal.package, uuid, &error);
  if (!entry) {
    require(!error.localizedDescription.isEmpty(), "a refusal has a reason");
    return 0;
  }
  entry->setString(entry->string() + u'.');
  require(entry->saveToJournal(journal.package.get(), &error), "an entry that was read can be saved");
  const auto again = QLJournalEntryFile::entryWithUUID(*journal.package, uuid, &error);
  require(again != nullptr, "a saved entry can be read");
  require(again->string() == entry->string(), "the text is kept");
  require(again->tags() == entry->tags(), "the tags are kept");
  require(again->location() == entry->location(), "the location is kept");
  require(again->timeZone() == entry->timeZone(), "the time zone is kept");
  require(again->weather().has_value() == entry->weather().has_value(), "the weather is kept");
  return 0;
}
