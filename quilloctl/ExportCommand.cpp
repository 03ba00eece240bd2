#include "config/Keys.h"
#include "exchange/ExportDestination.h"
#include "exchange/JournalExport.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/Command.h"
#include "quilloctl/FormatNames.h"
#include "quilloctl/Interruption.h"
#include "quilloctl/JournalIndex.h"
#include "quilloctl/PageDrawing.h"
#include "quilloctl/Pager.h"
#include "quilloctl/ProgressLine.h"

#include <QDir>
#include <QFile>
#include <QJsonObject>

#include <unistd.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

struct ExportWords {
  std::string format;
  std::vector<std::string> query;
  std::string output;
  bool isReplacing{false};
  bool isStrict{false};
  bool isNewestFirst{false};

  [[nodiscard]] bool isToStandardOutput() const { return output.empty() || output == "-"; }
  [[nodiscard]] QString path() const {
    return QDir::cleanPath(QDir::current().absoluteFilePath(QFile::decodeName(QByteArray::fromStdString(output))));
  }
};

std::unique_ptr<EntryWriter> writerToStandardOutput(const ExportFormat& format, const DocumentMaker& draw) {
  const ByteSink sink = [](const QByteArray& bytes, Error*) {
    printPart(bytes);
    return true;
  };
  return format.isDrawn() ? draw(sink) : format.makeDocument(sink);
}

std::optional<ExportDestination> open(const ExportFormat& format, const ExportWords& words, const DocumentMaker& draw) {
  Error error;
  auto destination = ExportDestination::open(format, words.path(), words.isReplacing, draw, &error);
  if (destination) return destination;
  const bool isThere = error.code == ErrorCode::fileWriteFileExists;
  failed(error.localizedDescription + (isThere ? u"; --force writes over it"_s : QString()));
  return std::nullopt;
}

// Every damaged entry has its line; what follows says what became of the others.
int finished(const Context& context, const ExportWords& words, const JournalExport::Result& result) {
  if (!words.isToStandardOutput() && context.json)
    printJson(QJsonObject{{u"path"_s, words.path()}, {u"entries"_s, result.entries}, {u"damaged"_s, result.damaged}});
  if (!words.isToStandardOutput() && !context.json) print(words.path() + u": "_s + entriesInWords(result.entries));
  if (result.isDisturbed) failed(u"entries were added or deleted meanwhile, which the export may lack"_s);
  if (result.damaged == 0) return Done;
  failed(u"%1 damaged, not in the export"_s.arg(result.damaged));
  return result.entries > 0 ? Done : Failed;
}

int exportEntries(Context& context, const ExportWords& words, const PageDrawing& drawing) {
  QStringList typed;
  for (const std::string& word : words.query) typed << QString::fromStdString(word);
  QString problem;
  const auto question = JournalQuestion::parse(typed.join(u' '), QDate::currentDate(), &problem);
  if (!question) return failed(problem);
  const ExportFormat& format = *exportFormatNamed(QString::fromStdString(words.format));
  if (format.isDrawn() && !drawing.isReady())
    return failed(u"%1 cannot be made, since a part of Quillo is missing: %2"_s.arg(QString::fromLatin1(format.title),
                                                                                    PageDrawing::path()));
  const auto package = openJournal(context);
  const auto index = package ? indexOfJournal(*package) : nullptr;
  if (!index) return Failed;
  const PersistentPropertyList* list = context.config.groupProperties();
  const DocumentMaker draw = drawing.documentMaker(list && list->boolForKey(Key::useFahrenheitTempScale));
  std::unique_ptr<EntryWriter> toOutput;
  std::optional<ExportDestination> destination;
  if (words.isToStandardOutput()) {
    toOutput = writerToStandardOutput(format, draw);
  } else {
    destination = open(format, words, draw);
    if (!destination) return Failed;
  }

  JournalExport::Options options{.question = *question,
                                 .wantsFields = format.wantsFields,
                                 .wantsMonths = format.wantsMonths,
                                 .isStrict = words.isStrict};
  options.question.order =
      words.isNewestFirst ? JournalQuestion::Order::NewestFirst : JournalQuestion::Order::OldestFirst;
  if (words.isToStandardOutput()) Pager::begin();
  JournalExport run(*package, *index);
  run.onDamage([](const QString& reason) { failed(reason); });
  const Interruption interruption;
  run.stopWhen([] { return outputIsGone() || Interruption::isAsked(); });
  JournalExport::Result result;
  {
    ProgressLine line("Exporting");
    run.onProgress([&line](qint64 done, qint64 total) { line.show(done, total); });
    result = run.run(options, destination ? destination->writer() : *toOutput);
  }
  // A reader that wants no more is no failure; finishOutput() says what else there is to say of the output.
  if (result.error && outputIsGone()) return Done;
  Error error;
  if (!result.error && destination && !destination->finish(&error)) result.error = error;
  if (result.error) return failed(result.error->localizedDescription);
  return finished(context, words, result);
}

}  // namespace

void addExportCommand(CLI::App& program, Action& action, PageDrawing& drawing) {
  const auto words = std::make_shared<ExportWords>();
  CLI::App* exporter = program.add_subcommand("export", "Write entries into a file or folder, in another format");
  exporter->add_option("FORMAT", words->format, "One of those below")->required()->check(isFormat(exportFormats()));
  exporter->add_option("QUERY", words->query, "Those that entry search finds with it; all of them without one");
  exporter
      ->add_option("-o,--output", words->output,
                   "The file, or the folder of markdown-folder; - or nothing is the standard output")
      ->type_name("PATH")
      ->check(notEmpty("a path is expected"));
  exporter->add_flag("--force", words->isReplacing,
                     "Write over what is there: a file as a whole, in a folder the files of the same names");
  exporter->add_flag("--strict", words->isStrict, "Export nothing where an entry of the journal is damaged");
  exporter->add_flag("--newest-first", words->isNewestFirst, "The newest entry first, in place of the oldest");
  exporter->footer(listOfFormats(exportFormats()) +
                   "\n\nA file or folder appears when all of it is written. Damaged entries are left out and told of "
                   "on the\nerror stream; that alone is a failure only where nothing else came, or with --strict.");
  exporter->parse_complete_callback([words] {
    const ExportFormat* format = exportFormatNamed(QString::fromStdString(words->format));
    if (format && format->isFolder() && words->isToStandardOutput())
      throw CLI::ValidationError("-o", "a folder is needed for " + words->format);
    if (format && format->isDrawn() && words->isToStandardOutput() && ::isatty(STDOUT_FILENO) == 1)
      throw CLI::ValidationError("-o", "a file is needed for " + words->format + ", which no terminal shows");
  });
  exporter->callback([&action, &drawing, words] {
    drawing.setWanted(exportFormatNamed(QString::fromStdString(words->format))->isDrawn());
    action = [&drawing, words](Context& context) { return exportEntries(context, *words, drawing); };
  });
}

}  // namespace quillo::ctl
