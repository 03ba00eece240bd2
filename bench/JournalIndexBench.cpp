// How long the index of a large journal takes: made anew, with nothing changed, with one entry changed, and answering.
//   bench_JournalIndexBench make FOLDER [COUNT]    makes FOLDER/Sample.quillojournal (100,000 entries)
//   bench_JournalIndexBench measure FOLDER         measures on it; the index goes into FOLDER/cache
//   bench_JournalIndexBench processor FOLDER       the same in processor time
//   bench_JournalIndexBench questions FOLDER       the questions alone in processor time, of the index that was
//   measured bench_JournalIndexBench ask FOLDER QUESTION    one question, as a process of its own that only asks
// Beside each figure stands what the least work takes: all files read, or looked at one by one.

#include "SampleJournal.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/index/JournalSearchIndex.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

// Whether processor time is measured, of all threads and of programs that were started, in place of time: for a machine
// that does other work too.
bool isProcessorTime = false;

double now() {
  if (!isProcessorTime) {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  }
  double sum = 0;
  for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    ::getrusage(who, &usage);
    for (const timeval& part : {usage.ru_utime, usage.ru_stime})
      sum += static_cast<double>(part.tv_sec) * 1e3 + static_cast<double>(part.tv_usec) / 1e3;
  }
  return sum;
}

double milliseconds(const std::function<void()>& work) {
  const double start = now();
  work();
  return now() - start;
}

double best(int times, const std::function<void()>& work) {
  double least = milliseconds(work);
  for (int i = 1; i < times; ++i) least = std::min(least, milliseconds(work));
  return least;
}

long peakMegabytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

std::shared_ptr<QLJournalPackageFile> openPackage(const QString& folder, bool make) {
  const QString path = folder + u"/Sample.quillojournal"_s;
  return QLJournalPackageFile::openPackage(QUrl::fromLocalFile(path), make, nullptr);
}

// As a shell does it: the names, then all of them to cat.
void readAll(const QString& entries) {
  QProcess::execute(u"sh"_s, {u"-c"_s, u"cd \"$0\" && ls -f | grep plist | xargs cat >/dev/null"_s, entries});
}

void lookAtAll(const QString& entries) {
  const QStringList names = QDir(entries).entryList(QDir::Files, QDir::NoSort);
  const int folder = ::open(QFile::encodeName(entries).constData(), O_RDONLY | O_DIRECTORY);
  struct stat status {};
  const auto look = [&] {
    for (const QString& name : names) ::fstatat(folder, name.toLatin1().constData(), &status, 0);
  };
  std::printf("stat of every file, names known:    %8.1f ms\n", best(3, look));
  ::close(folder);
}

QStringList questions() {
  QStringList list;
  for (int i = 0; i < 40; ++i) list << sampleWord(i);
  for (int i = 0; i < 30; ++i) list << sampleWord(100 + i * 211);
  for (int i = 0; i < 25; ++i) list << sampleWord(i * 3) + u' ' + sampleWord(i * 40 + 5);
  for (const QString& start : u"a b c d e s t th wh re mo se ta wa ha in an be ca sh tare mosen lun"_s.split(u' '))
    list << start;
  for (int i = 0; i < 20; ++i) list << u'"' + sampleWord(i) + u' ' + sampleWord(i + 3) + u'"';
  for (int i = 1; i < 20; ++i) list << u"tag:tag%1"_s.arg(i) << u"%1 #tag%2"_s.arg(sampleWord(i), QString::number(i));
  for (int year = 2015; year < 2024; ++year)
    list << u"on:%1"_s.arg(year) << u"the since:%1-03"_s.arg(year) << u"before:%1-06-15 coffee"_s.arg(year);
  list << u"place:oslo"_s << u"place:\"new york\" the"_s << u"the -and"_s << u"-coffee"_s << u"港"_s << u"天気"_s
       << u"날씨가"_s << u"zurich"_s << u"on:this-day"_s << u""_s;
  return list;
}

void measureQuestions(JournalSearchIndex& index, JournalQuestion::Order order, const char* name) {
  std::vector<std::pair<double, QString>> times;
  for (const QString& typed : questions()) {
    auto question = JournalQuestion::parse(typed, QDate(2024, 5, 5));
    if (!question) continue;
    question->order = order;
    JournalAnswer answer;
    const auto ask = [&] { answer = index.ask(*question); };
    ask();
    const double time = best(3, ask);
    times.emplace_back(time, typed + u" (%1)"_s.arg(answer.total));
  }
  std::sort(times.begin(), times.end());
  std::printf("%zu questions, %s: median %.2f, 95th of 100 %.2f, worst %.2f ms\n", times.size(), name,
              times[times.size() / 2].first, times[times.size() * 95 / 100].first, times.back().first);
  for (size_t i = 1; i <= 8; ++i)
    std::printf("    %7.2f ms  %s\n", times[times.size() - i].first, qUtf8Printable(times[times.size() - i].second));
}

void measureQuestions(JournalSearchIndex& index) {
  measureQuestions(index, JournalQuestion::Order::NewestFirst, "newest first");
  measureQuestions(index, JournalQuestion::Order::BestFirst, "best first");
}

void measure(const QString& folder) {
  const auto package = openPackage(folder, false);
  if (!package) return;
  const QString entries = package->entriesFolder();
  const JournalSearchIndex::Options options{false, 4096, 0, folder + u"/cache"_s};
  const double cat = best(3, [&] { readAll(entries); });
  std::printf("all files read with cat:            %8.1f ms\n", cat);
  lookAtAll(entries);

  QDir(options.cacheFolder).removeRecursively();
  const double first = milliseconds([&] {
    JournalSearchIndex index(*package, options);
    const auto update = index.bringUpToDate();
    std::printf("first index: %lld entries, %s\n", static_cast<long long>(update.changed),
                index.isInMemory() ? "in memory" : "on disk");
  });
  std::printf("first index, opened and closed:     %8.1f ms, %.1f times cat; peak %ld MB\n", first, first / cat,
              peakMegabytes());

  const double unchanged = best(5, [&] { JournalSearchIndex(*package, options).bringUpToDate(); });
  std::printf("nothing changed, opened and closed: %8.1f ms\n", unchanged);
  JournalSearchIndex index(*package, options);
  std::printf("nothing changed, open:              %8.1f ms\n", best(5, [&] { index.bringUpToDate(); }));
  QFile changed(QDir(entries).absoluteFilePath(QDir(entries).entryList({u"*.plist"_s}, QDir::Files).constFirst()));
  const auto touch = [&] {
    if (!changed.open(QIODevice::ReadWrite)) return;
    const QByteArray bytes = changed.readAll();
    changed.seek(0);
    changed.write(QByteArray(bytes).replace("<key>text</key>\n\t<string>", "<key>text</key>\n\t<string>x "));
    changed.close();
  };
  std::vector<double> times;
  for (int i = 0; i < 5; ++i) {
    touch();
    times.push_back(milliseconds([&] { index.bringUpToDate(); }));
  }
  std::printf("one entry changed, open:            %8.1f ms\n", *std::min_element(times.begin(), times.end()));
  const QString name = QFileInfo(changed.fileName()).fileName();
  touch();
  std::printf("one entry changed, its name known:  %8.1f ms\n", milliseconds([&] { index.bringUpToDate({name}); }));
  int steps = 0;
  const double tidy = milliseconds([&] {
    while (index.tidyUp()) ++steps;
  });
  std::printf("tidied up in %d steps:              %8.1f ms\n", steps, tidy);

  measureQuestions(index);
  for (const auto by : {JournalCountBy::Day, JournalCountBy::Month, JournalCountBy::Tag, JournalCountBy::Place}) {
    const auto some = JournalQuestion::parse(u"the"_s, QDate(2024, 5, 5));
    std::printf("counts, kind %d: all %.1f ms, of a common word %.1f ms\n", static_cast<int>(by),
                best(3, [&] { static_cast<void>(index.counts({}, by)); }),
                best(3, [&] { static_cast<void>(index.counts(*some, by)); }));
  }
}

void ask(const QString& folder, const QString& typed) {
  const auto package = openPackage(folder, false);
  const auto question = JournalQuestion::parse(typed, QDate::currentDate());
  if (!package || !question) return;
  JournalSearchIndex index(*package, {false, 4096, 0, folder + u"/cache"_s});
  index.bringUpToDate();
  if (typed.isNull()) return measureQuestions(index);
  const JournalAnswer answer = index.ask(*question);
  std::printf("%lld found, peak %ld MB\n", static_cast<long long>(answer.total), peakMegabytes());
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  const QStringList words = QCoreApplication::arguments();
  if (words.size() < 3) {
    std::fprintf(stderr, "usage: %s make|measure|processor|questions|ask FOLDER [COUNT|QUESTION]\n", argv[0]);
    return 2;
  }
  const QString folder = QDir(words[2]).absolutePath();
  if (words[1] == u"make") {
    QDir().mkpath(folder);
    const auto package = openPackage(folder, true);
    return package && makeSampleEntries(package->entriesFolder(), words.value(3, u"100000"_s).toInt(), 1) ? 0 : 1;
  }
  isProcessorTime = words[1] != u"measure";
  if (words[1] == u"questions")
    ask(folder, QString());
  else if (words[1] == u"ask")
    ask(folder, words.value(3, u""_s));
  else
    measure(folder);
  return 0;
}
