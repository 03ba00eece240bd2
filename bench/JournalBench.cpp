// What a save costs (two syncs and a rename: the disk decides), how fast entries are read, and how long an index of a
// large journal takes.

#include "qlcore/Hashtags.h"
#include "qlcore/JournalFolder.h"
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

// A package of that many entries, copies of one: saving as many would sync as many times. Null where it fails.
std::shared_ptr<QLJournalPackageFile> makePackageOf(int count, const QString& path) {
  auto package = makePackage(path);
  const auto first = QLJournalEntryFile::newEntry();
  first->setString(text());
  first->setTags(hashtags(text()));
  if (!first->saveToJournal(package.get(), nullptr)) return nullptr;
  const QString source = first->fileURLForEntryProperties()->toLocalFile();
  for (int i = 1; i < count; ++i)
    QFile::copy(source,
                package->entriesFolder() + u'/' + QLJournalEntryFile::fileName(QLJournalEntryFile::newEntry()->uuid()));
  return package;
}

void indexOfManyEntries(benchmark::State& state) {
  const QTemporaryDir directory;
  const auto package = makePackageOf(manyEntries, directory.filePath(u"Bench.quillojournal"_s));
  if (!package) return state.SkipWithError("not saved");
  for (auto _ : state) {
    const QLJournalIndex index(package);
    if (index.entries().size() != manyEntries) state.SkipWithError("entries are missing");
  }
}
BENCHMARK(indexOfManyEntries)->Unit(benchmark::kMillisecond);

// What an index asks for: each entry of a folder. The figure is entries a second.
void readEntries(benchmark::State& state) {
  constexpr int count = 1000;
  const QTemporaryDir directory;
  const auto package = makePackageOf(count, directory.filePath(u"Bench.quillojournal"_s));
  const auto folder = package ? JournalFolder::open(package->entriesFolder(), nullptr) : std::nullopt;
  const QStringList names = folder ? folder->propertyListNames(nullptr).value_or(QStringList()) : QStringList();
  if (names.size() != count) return state.SkipWithError("not saved");
  for (auto _ : state)
    for (const QString& name : names)
      if (!QLJournalEntryFile::entryInFolder(*folder, name.chopped(6), nullptr)) state.SkipWithError("not read");
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * count);
}
BENCHMARK(readEntries)->Unit(benchmark::kMillisecond);

void hashtagsOfAMegabyte(benchmark::State& state) {
  const QString large = text().repeated(1'000'000 / static_cast<int>(text().size()));
  for (auto _ : state) benchmark::DoNotOptimize(hashtags(large));
}
BENCHMARK(hashtagsOfAMegabyte)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
