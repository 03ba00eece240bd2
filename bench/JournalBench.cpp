// What a save costs (two syncs and a rename: the disk decides) and how long an index of a large journal takes.

#include "qlcore/Hashtags.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

constexpr int manyEntries = 10'000;

const QString& text() {
  static const QString words = u"Walked along the #harbour with Anna, then #coffee. "_s.repeated(10);
  return words;
}

std::shared_ptr<QLJournalPackageFile> makePackage(const QString& path) {
  return QLJournalPackageFile::openPackage(QUrl::fromLocalFile(path), /*create=*/true, nullptr);
}

void saveEntry(benchmark::State& state) {
  // Beside the program: the folder for temporary files may be in memory, where syncing costs nothing.
  const QTemporaryDir directory(QDir::currentPath() + u"/journal-XXXXXX"_s);
  const auto package = makePackage(directory.filePath(u"Bench.quillojournal"_s));
  const auto entry = QLJournalEntryFile::newEntry();
  entry->setString(text());
  entry->setTags(hashtags(text()));
  entry->setLocation(QLLocation{59.9139, 10.7522, u"Oslo, Norway"_s});
  entry->setWeather(QLWeather{3.5, u"rain"_s, u"Rain"_s, {}, u"MET Norway"_s});
  for (auto _ : state)
    if (!entry->saveToJournal(package.get(), nullptr)) state.SkipWithError("not saved");
}
BENCHMARK(saveEntry)->Unit(benchmark::kMillisecond)->UseRealTime();

void indexOfManyEntries(benchmark::State& state) {
  const QTemporaryDir directory;
  const auto package = makePackage(directory.filePath(u"Bench.quillojournal"_s));
  const auto first = QLJournalEntryFile::newEntry();
  first->setString(text());
  first->setTags(hashtags(text()));
  if (!first->saveToJournal(package.get(), nullptr)) return state.SkipWithError("not saved");
  // Copies: saving as many would sync as many times.
  const QString source = first->fileURLForEntryProperties()->toLocalFile();
  for (int i = 1; i < manyEntries; ++i)
    QFile::copy(source,
                package->entriesFolder() + u'/' + QLJournalEntryFile::fileName(QLJournalEntryFile::newEntry()->uuid()));
  for (auto _ : state) {
    const QLJournalIndex index(package);
    if (index.entries().size() != manyEntries) state.SkipWithError("entries are missing");
  }
}
BENCHMARK(indexOfManyEntries)->Unit(benchmark::kMillisecond);

void hashtagsOfAMegabyte(benchmark::State& state) {
  const QString large = text().repeated(1'000'000 / static_cast<int>(text().size()));
  for (auto _ : state) benchmark::DoNotOptimize(hashtags(large));
}
BENCHMARK(hashtagsOfAMegabyte)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
