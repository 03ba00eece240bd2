#include "exchange/ImportFormat.h"
#include "exchange/JournalImport.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/Command.h"
#include "quilloctl/EntryEditing.h"
#include "quilloctl/FormatNames.h"
#include "quilloctl/ImportUndoCommand.h"
#include "quilloctl/Interruption.h"
#include "quilloctl/ProgressLine.h"
#include "quilloctl/Streams.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>

#include <memory>
#include <string>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

struct ImportWords {
  std::string format;  // may be left out
  std::string source;
  bool isTrial{false};
  bool isReplacing{false};
  bool goesOn{false};
  bool isUndo{false};

  [[nodiscard]] QString path() const {
    return QDir::cleanPath(QDir::current().absoluteFilePath(QFile::decodeName(QByteArray::fromStdString(source))));
  }
};

QJsonValue dateJson(const std::optional<Date>& date) {
  return date ? QJsonValue(date->toISO8601()) : QJsonValue(QJsonValue::Null);
}

// "12 entries from 2019-03-01 to 2024-06-30: 10 new, 2 already there".
QString summary(const JournalImport::Counts& counts, bool isTrial) {
  QString text = entriesInWords(counts.entries());
  if (counts.first && counts.last)
    text += u" from %1 to %2"_s.arg(counts.first->toISO8601().left(10), counts.last->toISO8601().left(10));
  QStringList parts;
  const auto add = [&parts](qint64 count, const QString& what) {
    if (count > 0) parts << QString::number(count) + what;
  };
  add(counts.added, isTrial ? u" to be added"_s : u" added"_s);
  add(counts.replaced, isTrial ? u" to be replaced"_s : u" replaced"_s);
  add(counts.same, u" there already"_s);
  add(counts.differing, u" there already and different, which stay as they are (--replace takes the source's)"_s);
  add(counts.problems, u" that cannot be read"_s);
  return parts.isEmpty() ? text : text + u": "_s + parts.join(u", "_s);
}

void printCounts(const Context& context, const ImportWords& words, const ImportFormat& format,
                 const JournalImport::Counts& counts) {
  if (!context.json) return print(summary(counts, words.isTrial));
  printJson(QJsonObject{{u"source"_s, words.path()},
                        {u"format"_s, QString::fromLatin1(format.name)},
                        {u"dryRun"_s, words.isTrial},
                        {u"added"_s, counts.added},
                        {u"replaced"_s, counts.replaced},
                        {u"same"_s, counts.same},
                        {u"differing"_s, counts.differing},
                        {u"unreadable"_s, counts.problems},
                        {u"passedBy"_s, counts.passedBy},
                        {u"first"_s, dateJson(counts.first)},
                        {u"last"_s, dateJson(counts.last)}});
}

// A source with nothing but faults has as many as it has lines.
JournalImport::Listener tellingListener() {
  constexpr int most = 100;
  const auto told = std::make_shared<int>(0);
  const auto tell = [told](const ImportPlace& place, const QString& reason) {
    if (++*told <= most) failed(place.text() + u": "_s + reason);
    if (*told == most + 1) failed(u"there is more of that kind"_s);
  };
  return {.problem = [tell](const ImportProblem& problem) { tell(problem.place, problem.reason); },
          .passedBy = [tell](const ImportPassedBy& item) { tell(item.place, u"passed by, "_s + item.reason); },
          .progress = {},
          .isStopped = Interruption::isAsked,
          .tookBack = {}};
}

JournalImport::Counts look(const JournalImport& import, ImportSource& source) {
  JournalImport::Listener listener = tellingListener();
  ProgressLine line("Looking");
  listener.progress = [&line](qint64 done) {
    constexpr qint64 step = 200;
    if (done % step == 0) line.show(done, done);
  };
  return import.look(source, listener);
}

std::optional<JournalImport::Counts> write(JournalImport& import, ImportSource& source, qint64 total) {
  Error error;
  std::optional<JournalImport::Counts> counts;
  {
    ProgressLine line("Importing");
    JournalImport::Listener listener;
    listener.isStopped = Interruption::isAsked;
    listener.tookBack = [](const ImportUndo::LastImport& killed) {
      failed(u"the import of %1, which was cut off after %2, was taken back"_s.arg(
          killed.source, entriesInWords(killed.added + killed.replaced)));
    };
    listener.progress = [&](qint64 done) {
      constexpr qint64 step = 20;
      if (done % step == 0) line.show(done, std::max(total, done));
    };
    counts = import.write(source, listener, &error);
  }
  if (!counts) failed(u"nothing was imported - "_s + error.localizedDescription);
  return counts;
}

// Null, with the reason said, where it cannot be told from the source.
const ImportFormat* formatOf(const ImportWords& words) {
  if (!words.format.empty()) return importFormatNamed(QString::fromStdString(words.format));
  const ImportFormat* guessed = guessImportFormat(words.path());
  if (!guessed)
    failed(words.path() + u": its format cannot be told for certain; name it before the source (import --help)"_s);
  return guessed;
}

int importEntries(Context& context, const ImportWords& words) {
  const QString path = words.path();
  if (!QFileInfo::exists(path)) return failed(path + u": there is no such file or folder"_s);
  const ImportFormat* format = formatOf(words);
  const auto package = format ? openJournal(context) : nullptr;
  if (!package) return Failed;
  const auto source = format->open(path, makesTagsOfHashtags(context));
  JournalImport import(*package, words.isReplacing, {path, QString::fromLatin1(format->name)});
  const Interruption interruption;
  const JournalImport::Counts seen = look(import, *source);
  if (Interruption::isAsked()) return failed(u"stopped; nothing was imported"_s);
  const bool isRefused = seen.problems > 0 && !words.goesOn;
  if (words.isTrial) {
    printCounts(context, words, *format, seen);
    return isRefused ? Failed : Done;
  }
  if (isRefused)
    return failed(u"nothing was imported, since %1 cannot be read; --keep-going imports the other %2"_s.arg(
        entriesInWords(seen.problems), QString::number(seen.entries())));
  const auto written = write(import, *source, seen.entries());
  if (!written) return Failed;
  printCounts(context, words, *format, *written);
  return written->entries() == 0 && written->problems > 0 ? Failed : Done;
}

// Both words are there, or the source alone.
void checkWords(ImportWords& words) {
  if (words.isUndo && words.format.empty()) return;
  if (words.isUndo) throw CLI::ExcludesError("--undo", "SOURCE");
  if (words.source.empty()) {
    const bool isFormat = importFormatNamed(QString::fromStdString(words.format)) != nullptr;
    if (words.format.empty() || (isFormat && !QFileInfo::exists(QString::fromStdString(words.format))))
      throw CLI::RequiredError("SOURCE");
    std::swap(words.format, words.source);
  }
  const std::string fault = words.format.empty() ? "" : isFormat(importFormats())(words.format);
  if (!fault.empty()) throw CLI::ValidationError("FORMAT", fault);
}

}  // namespace

void addImportCommand(CLI::App& program, Action& action) {
  const auto words = std::make_shared<ImportWords>();
  CLI::App* importer = program.add_subcommand("import", "Add entries from files of another format to the journal");
  importer->add_option("FORMAT", words->format, "One of those below; may be left out where the source makes it plain");
  importer->add_option("SOURCE", words->source, "The file or folder")->check(notEmpty("a file or folder is expected"));
  importer->add_flag("--dry-run", words->isTrial, "Tell what would come, and what cannot be read; change nothing");
  CLI::Option* replaces =
      importer->add_flag("--replace", words->isReplacing,
                         "Replace entries that are there already and different; otherwise they stay as they are");
  CLI::Option* goesOn = importer->add_flag("--keep-going", words->goesOn,
                                           "Import the others where some cannot be read; otherwise none comes");
  importer
      ->add_flag("--undo", words->isUndo,
                 "Take the last import back: what it added goes to the Trash, what it replaced comes back")
      ->excludes(replaces, goesOn);
  importer->footer(
      listOfFormats(importFormats()) +
      "\n\nAll of the source is read before anything is written, and if an entry cannot be written, what came before "
      "it\nis taken back. --undo takes the last import back at any later time, and called again the one before; "
      "entries "
      "that\nwere changed since stay. Files of text may have YAML above the text between two lines \"---\", with id, "
      "date,\ntimezone, tags, location and weather, as export markdown-folder writes it. Otherwise the date is that in "
      "the\nfile's name (2014-03-10 2100 or 20140310, at noon where there is no time), else that of the file. A file "
      "is "
      "known\nagain by its id, else by its path, so that a second import makes no doubles. Links inside a folder are "
      "not\nfollowed. The columns of a table are named in its first line: text and date; time, timezone, title, tags, "
      "place,\nlatitude, longitude and id may be there.");
  importer->parse_complete_callback([words] { checkWords(*words); });
  importer->callback([&action, words] {
    action = [words](Context& context) {
      return words->isUndo ? takeImportBack(context, words->isTrial) : importEntries(context, *words);
    };
  });
}

}  // namespace quillo::ctl
