// entry_saver JOURNAL UUID: rewrites the entry until it is killed, and prints the number of each save once it is done.

#include "../SavedText.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"

#include <cstdio>

using namespace quillo;

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  Error error;
  const auto package = QLJournalPackageFile::openPackage(QUrl::fromLocalFile(QString::fromLocal8Bit(argv[1])),
                                                         /*create=*/false, &error);
  const auto entry =
      package ? QLJournalEntryFile::entryWithUUID(*package, QString::fromLatin1(argv[2]), &error) : nullptr;
  // The limit is only for a parent that has died.
  for (int number = entry ? numberOfSavedText(entry->string()) + 1 : 0; entry && number < 100'000; ++number) {
    entry->setString(savedText(number));
    if (!entry->saveToJournal(package.get(), &error)) break;
    std::printf("%d\n", number);
    std::fflush(stdout);
  }
  std::fprintf(stderr, "%s\n", error.description().toLocal8Bit().constData());
  return 1;
}
