#include "config/Keys.h"
#include "qlcore/JournalMove.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/conflicts/JournalConflicts.h"
#include "qlcore/conflicts/JournalRepair.h"
#include "quilloctl/Command.h"
#include "quilloctl/JournalConflictsCommand.h"
#include "quilloctl/JournalStatistics.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <utility>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

QUrl urlOfPath(const std::string& path) {
  return QUrl::fromLocalFile(QDir::cleanPath(QDir::current().absoluteFilePath(QString::fromStdString(path))));
}

int create(Context& context, const std::string& path) {
  if (path.empty()) return failed(u"a journal's path cannot be empty"_s);
  QUrl url = urlOfPath(path);
  const QString suffix = u".quillojournal"_s;
  if (!url.path().endsWith(suffix)) url.setPath(url.path() + suffix);
  // A home that is new has no folder of documents yet. No more than that one: a path of many new folders is a slip.
  QDir().mkdir(QFileInfo(url.toLocalFile()).path());
  Error error;
  const auto package = QLJournalPackageFile::openPackage(url, /*create=*/true, &error);
  if (!package) return failed(error.localizedDescription);
  if (context.json)
    printJson(QJsonObject{{u"path"_s, url.toLocalFile()}, {u"identifier"_s, package->identifier()}});
  else
    print(url.toLocalFile());
  return Done;
}

// Makes it the one that is written to. False, with the reason said, when that is not saved.
bool configure(Context& context, const QUrl& url) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return false;
  const QString what = u"the journal's location"_s;
  // Before the bookmarks, which must not lead to a journal that was not set.
  list->setURLForKey(url, Key::journalPackageURL);
  if (!isSaved(*list, what)) return false;
  context.config.setConfiguredJournalFileURL(url);
  if (!isSaved(*list, what)) return false;
  context.post(Notice::journalPackagePathDidChange);
  return true;
}

int set(Context& context, const std::string& path) {
  if (path.empty()) return failed(u"a journal's path cannot be empty"_s);
  const QUrl url = urlOfPath(path);
  Error error;
  if (!QLJournalPackageFile::openPackage(url, /*create=*/false, &error)) return failed(error.localizedDescription);
  if (!configure(context, url)) return Failed;
  if (context.json) printJson(QJsonObject{{u"path"_s, url.toLocalFile()}});
  return Done;
}

std::optional<QUrl> configured(Context& context) {
  if (!sharedList(context)) return std::nullopt;
  auto url = context.config.configuredJournalFileURL();
  if (!url) failed(u"no journal is set; see quilloctl journal create and journal set"_s);
  return url;
}

std::atomic<bool>& wasInterrupted() {
  static std::atomic<bool> interrupted{false};
  return interrupted;
}

// On one line of the terminal, rewritten.
bool tellProgress(double done) {
  static int told = -1;
  const int percent = static_cast<int>(done * 100);
  if (::isatty(STDERR_FILENO) != 0 && std::exchange(told, percent) != percent)
    std::fprintf(stderr, percent < 100 ? "\r%d %%" : "\r     \r", percent);
  return !wasInterrupted();
}

int move(Context& context, const std::string& folder, bool keep) {
  const auto url = configured(context);
  if (!url) return Failed;
  // It clears up after itself; a second signal ends it at once.
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    action.sa_handler = [](int) { wasInterrupted() = true; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(number, &action, nullptr);
  }
  bool isReasonSaid = false;
  const JournalMove move{.journal = url->toLocalFile(),
                         .folder = urlOfPath(folder).toLocalFile(),
                         .oldJournal = keep ? JournalMove::OldJournal::Stays : JournalMove::OldJournal::ToTrash,
                         .progress = tellProgress,
                         .configure = [&](const QUrl& journal, Error*) {
                           isReasonSaid = !configure(context, journal);
                           return !isReasonSaid;
                         }};
  const auto result = move.run();
  if (result.outcome == JournalMove::Outcome::Stopped) return failed(u"stopped; the journal is where it was"_s);
  if (result.outcome == JournalMove::Outcome::Failed)
    return isReasonSaid ? Failed : failed(result.error.localizedDescription);
  const QString path = result.journal.toLocalFile();
  if (result.error.code != 0)
    return failed(
        u"the journal is at %1 now, but the old one stays: %2"_s.arg(path, result.error.localizedDescription));
  if (context.json)
    printJson(QJsonObject{{u"path"_s, path}});
  else
    print(path);
  return Done;
}

int path(Context& context) {
  const auto url = configured(context);
  if (!url) return Failed;
  if (context.json)
    printJson(url->toLocalFile());
  else
    print(url->toLocalFile());
  return Done;
}

// What `journal check` has to tell, of a journal that could be opened.
struct Condition {
  qsizetype entries{0};
  QStringList damaged;
  qsizetype conflicts{0};
  QStringList repaired;
};

// Prints it and answers the exit code.
int tell(Context& context, const QLJournalPackageFile& package, const Condition& condition) {
  const QString path = package.url().toLocalFile();
  if (context.json) {
    QJsonObject object{{u"path"_s, path},
                       {u"identifier"_s, package.identifier()},
                       {u"entries"_s, condition.entries},
                       {u"damaged"_s, QJsonArray::fromStringList(condition.damaged)},
                       {u"conflicts"_s, condition.conflicts}};
    if (!condition.repaired.isEmpty()) object.insert(u"repaired"_s, QJsonArray::fromStringList(condition.repaired));
    printJson(object);
  }
  if (!condition.damaged.isEmpty())
    return failed(u"%1 damaged: %2"_s.arg(QString::number(condition.damaged.size()), condition.damaged.join(u"; "_s)));
  if (context.json) return Done;
  print(u"%1: %2 entries, all readable"_s.arg(path).arg(condition.entries));
  if (condition.conflicts > 0)
    print(u"%1 with several versions; see quilloctl journal conflicts"_s.arg(condition.conflicts));
  return Done;
}

int check(Context& context, bool repairs) {
  const auto url = configured(context);
  if (!url) return Failed;
  Error error;
  Condition condition;
  if (repairs) {
    JournalRepair repair(url->toLocalFile());
    const bool isDone = repair.run(&error);
    condition.repaired = repair.done();
    if (!context.json)
      for (const QString& line : condition.repaired) print(line);
    if (!isDone) return failed(error.localizedDescription);
  }
  const auto package = QLJournalPackageFile::openPackage(*url, /*create=*/false, &error);
  if (!package) return failed(error.localizedDescription);
  const QLJournalIndex index(package);
  condition.entries = index.entries().size();
  for (const auto& entry : index.damagedEntries())
    condition.damaged << entry.url.toLocalFile() + u" - "_s + entry.reason;
  const auto conflicts = JournalConflicts(package->entriesFolder()).entries(&error);
  if (!conflicts) return failed(error.localizedDescription);
  condition.conflicts = conflicts->size();
  return tell(context, *package, condition);
}

}  // namespace

void addJournalCommand(CLI::App& program, Action& action) {
  const auto words = std::make_shared<std::string>();
  CLI::App* journal = program.add_subcommand("journal", "Create a journal, choose it, look after it");
  journal->require_subcommand(1);

  CLI::App* creator = journal->add_subcommand("create", "Make a new, empty journal and print its path");
  creator->add_option("PATH", *words, "NAME.quillojournal; the ending is added where it lacks")->required();
  creator->callback([&action, words] { action = [words](Context& context) { return create(context, *words); }; });

  CLI::App* setter = journal->add_subcommand("set", "Make an existing journal the one that is written to");
  setter->add_option("PATH", *words, "The journal, a folder NAME.quillojournal")->required();
  setter->callback([&action, words] { action = [words](Context& context) { return set(context, *words); }; });

  const auto keep = std::make_shared<bool>(false);
  CLI::App* mover = journal->add_subcommand("move", "Move the journal to another folder, also of another disk");
  mover->add_option("FOLDER", *words, "The folder to move it into")
      ->required()
      ->check(notEmpty("a folder is expected"));
  mover->add_flag("--keep", *keep, "Leave the old one where it is, in place of the Trash");
  mover->callback(
      [&action, words, keep] { action = [words, keep](Context& context) { return move(context, *words, *keep); }; });

  journal->add_subcommand("stats", "Print how much is written, and when")->callback([&action] {
    action = journalStatistics;
  });
  journal->add_subcommand("path", "Print the journal's path")->callback([&action] { action = path; });
  const auto repairs = std::make_shared<bool>(false);
  CLI::App* checker = journal->add_subcommand("check", "Read every entry and tell of those that are damaged");
  checker->add_flag("--repair", *repairs, "Mend what can be mended without losing a word, and print what was done");
  checker->callback([&action, repairs] { action = [repairs](Context& context) { return check(context, *repairs); }; });
  addJournalConflictsCommand(*journal, action);
}

}  // namespace quillo::ctl
