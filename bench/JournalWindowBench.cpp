// How long the journal's window takes in a large journal: from a key press in the search to the painted result, and for
// each frame while the list is scrolled from its newest entry to its oldest.
//   bench_JournalWindowBench FOLDER      FOLDER: made by bench_JournalIndexBench; settings and index go into
//   FOLDER/home
// Needs a display. The index is made before anything is measured.

#include "SampleJournal.h"
#include "config/QuilloConfig.h"
#include "entry/panels/OpenPanelSheet.h"
#include "entry/session/EntryDraft.h"
#include "entry/spelling/SpellChecker.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "foundation/UserDirectories.h"
#include "journal/JournalWindow.h"
#include "journal/model/IndexedJournalReader.h"
#include "journal/views/SearchField.h"
#include "journal/views/TimelineView.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "qlcore/index/JournalSearchIndex.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <vector>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

double processorTime() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Notes when the watched widget was painted.
class PaintWatch final : public QObject {
 public:
  explicit PaintWatch(QWidget& widget) {
    widget.installEventFilter(this);
    startTimer(10);  // so that waiting ends
  }

  void begin() {
    m_first.reset();
    m_last.reset();
    m_clock.start();
    m_processorBegin = processorTime();
  }
  // Waits for an event, for some milliseconds at most, and lets the event loop deal with what there is.
  void processEvents() {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    // The filter sees a painting before it is done; it is when the loop comes back.
    if (std::exchange(m_isPainting, false)) {
      m_last = Times{elapsed(), processorTime() - m_processorBegin};
      if (!m_first) m_first = m_last;
    }
  }
  // Milliseconds since `begin()`.
  [[nodiscard]] double elapsed() const { return static_cast<double>(m_clock.nsecsElapsed()) / 1e6; }
  struct Times {
    double wall;
    double processor;  // of all threads, for a machine that does other work too
  };
  // The same at the end of the first and of the last painting; nothing where there was none.
  [[nodiscard]] const std::optional<Times>& first() const { return m_first; }
  [[nodiscard]] const std::optional<Times>& last() const { return m_last; }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    m_isPainting |= event->type() == QEvent::Paint;
    return false;
  }

 private:
  QElapsedTimer m_clock;
  std::optional<Times> m_first;
  std::optional<Times> m_last;
  double m_processorBegin{0};
  bool m_isPainting{false};
};

void print(const char* what, std::vector<double> times) {
  std::sort(times.begin(), times.end());
  std::printf("%-34s %zu: median %.1f, 95th of 100 %.1f, worst %.1f ms\n", what, times.size(), times[times.size() / 2],
              times[times.size() * 95 / 100], times.back());
}

QStringList searches() {
  QStringList list;
  for (int rank : {0, 3, 10, 40, 90, 300, 1000, 5000}) list << sampleWord(rank);
  list << sampleWord(2) + u' ' + sampleWord(30) << sampleWord(60) + u" #tag3"_s << u"place:oslo walk"_s
       << u"\"of the\" day"_s << u"coffee -home"_s << u"zurich"_s;
  return list;
}

void measureSearch(JournalWindow& window) {
  auto* edit = window.view().search->findChild<QLineEdit*>();
  PaintWatch watch(*window.view().list->viewport());
  std::vector<double> first;
  std::vector<double> firstProcessor;
  std::vector<double> last;
  int unchanged = 0;
  for (const QString& search : searches()) {
    for (const QChar letter : search) {
      watch.begin();
      // Of any script, which QTest's own keys are not.
      QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(letter));
      QCoreApplication::sendEvent(edit, &press);
      // Ends: the result is there within half a second, or it is that of the key before.
      while (watch.elapsed() < 500 && (!watch.last() || watch.elapsed() - watch.last()->wall < 80))
        watch.processEvents();
      if (watch.last()) {
        first.push_back(watch.first()->wall);
        firstProcessor.push_back(watch.first()->processor);
        last.push_back(watch.last()->wall);
      } else {
        ++unchanged;
      }
    }
    edit->clear();
    QTest::qWait(150);
  }
  print("key press to painted result", first);
  print("the same, processor time", firstProcessor);
  print("until all that matches is counted", last);
  if (unchanged > 0) std::printf("    %d key presses changed nothing in the list\n", unchanged);
}

void measureScrolling(JournalWindow& window) {
  constexpr int frames = 900;
  constexpr double frame = 1000.0 / 60;
  TimelineView& list = *window.view().list;
  QScrollBar& bar = *list.verticalScrollBar();
  const auto isLoading = [&list] {
    const int first = list.rowAt({5, 30});
    return first >= 0 && !list.entryAt(first);
  };
  std::vector<double> times;
  int empty = 0;
  QElapsedTimer clock;
  for (int i = 0; i <= frames; ++i) {
    clock.start();
    bar.setValue(static_cast<int>(static_cast<qint64>(bar.maximum()) * i / frames));
    QCoreApplication::processEvents();
    times.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e6);
    // The rest of the frame's time, in which rows that were asked for arrive.
    while (static_cast<double>(clock.nsecsElapsed()) / 1e6 < frame) {
      const qint64 before = clock.nsecsElapsed();
      QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
      times.back() = std::max(times.back(), static_cast<double>(clock.nsecsElapsed() - before) / 1e6);
      QTest::qSleep(1);
    }
    empty += isLoading();
  }
  print("longest work within a frame", times);
  std::printf("    %d of %d frames ended before their rows had been read\n", empty, frames + 1);
}

long anonymousMegabytes() {
  QFile status(u"/proc/self/status"_s);
  if (!status.open(QIODevice::ReadOnly)) return 0;
  for (const QByteArray& line : status.readAll().split('\n'))
    if (line.startsWith("RssAnon:")) return line.simplified().split(' ').value(1).toLong() / 1024;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const QStringList words = QCoreApplication::arguments();
  if (words.size() != 2) return 2;
  const QString home = QDir(words[1]).absoluteFilePath(u"home"_s);
  QDir().mkpath(home);
  UserDirectories::moveTo(home);
  const QUrl journal = QUrl::fromLocalFile(QDir(words[1]).absoluteFilePath(u"Sample.quillojournal"_s));

  QuilloConfig& config = QuilloConfig::sharedConfig();
  UserDefaults& defaults = UserDefaults::standardUserDefaults();
  NotificationCenter center;
  SpellChecker speller{{}};
  EntryDraft draft(home + u"/Draft.plist"_s);
  OpenPanelSheet panel;
  JournalLibrary library({.location = [&journal] { return std::optional(journal); },
                          .makeReader = [](const QLJournalPackageFile& of) -> std::unique_ptr<JournalReader> {
                            return std::make_unique<IndexedJournalReader>(of);
                          }});
  library.reopen();
  if (!library.package()) return 1;
  JournalSearchIndex(*library.package()).bringUpToDate();
  JournalWindow window({.library = library,
                        .editor = {.session = {.config = config,
                                               .draft = draft,
                                               .usageTracker = &QLMixpanelTracker::sharedInstance,
                                               .journalFile = [&library] { return library.package(); },
                                               .emptyJournalEntry = [] { return QLJournalEntryFile::newEntry(); },
                                               .deletesEmptiedEntries = false},
                                   .place = {.config = config},
                                   .text = {.defaults = defaults, .localCenter = center, .spellChecker = speller}},
                        .defaults = defaults,
                        .weatherText = [](const QLWeather&) { return u"mild"_s; },
                        .fontSize = [] { return 16; },
                        .setFontSize = [](int) {},
                        .setUp = [] {},
                        .createJournal = [] {},
                        .chooseJournal = [](QWidget&) {},
                        .showFolder = [](const QString&) {},
                        .openURL = [](const QUrl&) {},
                        .showAbout = [] {},
                        .exchange = {.openPanel = panel, .pdf = {}, .makesTagsOfHashtags = {}, .showFile = {}}});
  window.resize(1200, 760);
  window.show();
  if (!QTest::qWaitForWindowExposed(&window)) return 1;
  if (!QTest::qWaitFor([&window] { return window.view().list->rows().rowCount() > 0; })) return 1;
  QTest::qWait(3000);  // all files are compared with the index
  std::printf("%d entries\n", window.view().list->rows().rowCount());
  measureSearch(window);
  measureScrolling(window);
  std::printf("anonymous memory in the end        %ld MiB\n", anonymousMegabytes());
  return 0;
}
