// How long the entry window takes to show, from the call to the first painted frame, and from the save button to the
// bytes on disk, each beside its floor: an empty window of the same flags and size, and a bare write, sync and rename
// of the same bytes. The first showing, for which much is read and made, is measured in processes of their own. Needs a
// display: run it in scripts/desktop/desktop, with --compositor and without, from a folder that is on a disk.
//
//   bench_EntryWindowBench [ROUNDS]
//   bench_EntryWindowBench --first window|floor      milliseconds until the first frame

#include "config/QuilloConfig.h"
#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/session/Alerts.h"
#include "entry/session/EntryDraft.h"
#include "entry/session/OpenPanel.h"
#include "entry/spelling/SpellChecker.h"
#include "foundation/NotificationCenter.h"
#include "platform/linux/desktop/Display.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "qlcore/services/LocationService.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPlainTextEdit>
#include <QProcess>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

struct NoAlerts : Alerts {
  void beginSheet(const Alert& alert, QWidget* window, std::function<void(int)>) override { runAlert(alert, window); }
  int runAlert(const Alert& alert, QWidget*) override {
    std::fprintf(stderr, "%s\n", qPrintable(alert.message));
    std::exit(1);
  }
};

struct NoPanel : OpenPanel {
  void beginSheet(const QString&, const QString&, QWidget*, std::function<void(const QString&)>) override {}
};

double median(std::vector<double> milliseconds) {
  std::sort(milliseconds.begin(), milliseconds.end());
  return milliseconds[milliseconds.size() / 2];
}

void report(const char* what, const std::vector<double>& ours, const std::vector<double>& floor) {
  std::printf("%-32s %8.2f ms   floor %8.2f ms   ratio of medians %5.2f\n", what, median(ours), median(floor),
              median(ours) / median(floor));
}

// Milliseconds from `show`, which answers what it shows, until the turn of the event loop after that widget's first
// painting, when the frame has gone to the screen.
class FirstFrame : public QObject {
 public:
  double of(const std::function<QWidget&()>& show) {
    m_painted = false;
    QElapsedTimer timer;
    timer.start();
    QWidget& widget = show();
    widget.installEventFilter(this);
    while (!m_painted) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const double milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    widget.removeEventFilter(this);
    return milliseconds;
  }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint)
      QMetaObject::invokeMethod(
          this, [this] { m_painted = true; }, Qt::QueuedConnection);
    return false;
  }

 private:
  bool m_painted{false};
};

void settle() {
  QElapsedTimer timer;
  timer.start();
  while (timer.elapsed() < 30) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

class EmptyWindow : public QWidget {
 public:
  explicit EmptyWindow(const QSize& size)
      : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedSize(size);
  }
  void open() {
    show();
    raise();
    activateWindow();
  }
};

// Of both, in turn; each measures itself.
void measureFirstShowings() {
  constexpr int processes = 11;
  std::vector<double> shown, emptyShown;
  for (int i = 0; i < processes; ++i)
    for (const auto& [which, times] : {std::pair(u"window"_s, &shown), std::pair(u"floor"_s, &emptyShown)}) {
      QProcess process;
      process.start(QCoreApplication::applicationFilePath(), {u"--first"_s, which});
      if (!process.waitForFinished() || process.exitCode() != 0) std::exit(1);
      times->push_back(process.readAllStandardOutput().toDouble());
    }
  report("first show to first frame", shown, emptyShown);
}

double bareSave(const QString& folder, const QByteArray& bytes) {
  const QByteArray temporary = QFile::encodeName(folder + u"/bare.tmp"_s);
  const QByteArray path = QFile::encodeName(folder + u"/bare.plist"_s);
  QElapsedTimer timer;
  timer.start();
  const int file = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const bool written =
      file >= 0 && ::write(file, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size() &&
      ::fsync(file) == 0 && ::close(file) == 0 && ::rename(temporary.constData(), path.constData()) == 0;
  const int directory = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
  if (!written || ::fsync(directory) != 0) std::exit(1);
  ::close(directory);
  return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  const QStringList words = QCoreApplication::arguments();
  FirstFrame frame;
  if (words.size() == 3 && words[2] == u"floor"_s) {
    settle();
    std::unique_ptr<EmptyWindow> empty;
    std::printf("%.3f\n", frame.of([&]() -> QWidget& {
      empty = std::make_unique<EmptyWindow>(AgentEntryWindow::frameSize.toSize());
      empty->open();
      return *empty;
    }));
    return 0;
  }
  const int rounds = words.size() == 2 ? std::max(1, words[1].toInt()) : 100;

  const QTemporaryDir home(QDir::currentPath() + u"/entry-window-XXXXXX"_s);
  UserDirectories::moveTo(home.path());
  UserDefaults defaults(home.filePath(u"config"_s), u"bench"_s);
  QuilloConfig config(UserDirectories::current(), defaults, [](const char*) { return QString(); });
  const QUrl journal = QUrl::fromLocalFile(home.filePath(u"J.quillojournal"_s));
  const auto package = QLJournalPackageFile::openPackage(journal, true, nullptr);
  QLJournalPackageFile::setDefaultPackageURLProvider([&journal] { return std::optional(journal); });
  config.setConfiguredJournalFileURL(journal);

  NoAlerts alerts;
  NoPanel panel;
  EntryDraft draft(EntryDraft::defaultPath());
  SpellChecker spellChecker(SpellChecker::standardSources(UserDirectories::current()));
  const auto controller = std::make_shared<AgentEntryWindowController>(
      AgentEntryWindowServices{.config = config,
                               .alerts = alerts,
                               .openPanel = panel,
                               .draft = draft,
                               .text = {.defaults = defaults,
                                        .localCenter = NotificationCenter::localCenter(),
                                        .spellChecker = spellChecker},
                               .usageTracker = &QLMixpanelTracker::sharedInstance,
                               .notices = NotificationCenter::localCenter(),
                               .journalFile = &QLJournalPackageFile::defaultPackage,
                               .emptyJournalEntry = &QLJournalEntryFile::emptyJournalEntry,
                               .desktop = {.isComposited = compositorIsRunning, .keepOutOfTaskBar = keepOutOfTaskBar}},
      nullptr);
  const auto show = [&]() -> QWidget& {
    controller->showWindowInMode(EntryWindowModeStandard);
    return controller->window();
  };
  if (words.size() == 3) {
    settle();
    std::printf("%.3f\n", frame.of(show));
    return 0;
  }
  measureFirstShowings();
  AgentEntryWindow& window = controller->window();
  EmptyWindow empty(window.size());

  std::vector<double> shown, emptyShown, saved, bareSaved;
  for (int i = 0; i < rounds; ++i) {
    shown.push_back(frame.of(show));
    settle();
    window.findChild<QPlainTextEdit*>(u"textView"_s)
        ->insertPlainText(u"Walked the long way home along the river. #evening"_s);
    QElapsedTimer timer;
    timer.start();
    // What the button does first; once it returns, the entry is on disk.
    controller->saveActiveEntry(/*force=*/false);
    saved.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    window.findChild<QAbstractButton*>(u"saveButton"_s)->click();
    settle();
    emptyShown.push_back(frame.of([&]() -> QWidget& {
      empty.open();
      return empty;
    }));
    settle();
    empty.hide();
    settle();
    QFile entry(QDir(package->entriesFolder()).entryInfoList(QDir::Files).value(0).filePath());
    if (!entry.open(QIODevice::ReadOnly)) return 1;
    bareSaved.push_back(bareSave(package->entriesFolder(), entry.readAll()));
    QFile::remove(package->entriesFolder() + u"/bare.plist"_s);
  }
  report("show to first frame", shown, emptyShown);
  report("save button to bytes on disk", saved, bareSaved);
  return 0;
}
