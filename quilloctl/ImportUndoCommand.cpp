#include "quilloctl/ImportUndoCommand.h"

#include "exchange/ImportUndo.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/Interruption.h"
#include "quilloctl/ProgressLine.h"
#include "quilloctl/Streams.h"

#include <QDateTime>
#include <QJsonObject>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

// "The import of /home/me/Notes on 2024-06-30: 10 entries moved to the Trash, 2 put back".
QString summary(const ImportUndo::LastImport& import, const ImportUndo::Counts& counts, bool isTrial) {
  QStringList parts;
  const auto add = [&parts](qint64 count, const QString& what) {
    if (count > 0) parts << entriesInWords(count) + what;
  };
  add(counts.removed, isTrial ? u" to be moved to the Trash"_s : u" moved to the Trash"_s);
  add(counts.putBack, isTrial ? u" to be put back as before"_s : u" put back as before"_s);
  add(counts.changed, u" changed since, as they are"_s);
  add(counts.gone, u" deleted since"_s);
  return u"The import of %1 on %2: %3"_s.arg(
      import.source, import.date.toDateTime().toLocalTime().date().toString(Qt::ISODate),
      parts.isEmpty() ? u"nothing of it is there any more"_s : parts.join(u", "_s));
}

void printCounts(const Context& context, const ImportUndo::LastImport& import, const ImportUndo::Counts& counts,
                 bool isTrial) {
  if (!context.json) return print(summary(import, counts, isTrial));
  printJson(QJsonObject{{u"source"_s, import.source},
                        {u"format"_s, import.format},
                        {u"date"_s, import.date.toISO8601()},
                        {u"dryRun"_s, isTrial},
                        {u"removed"_s, counts.removed},
                        {u"putBack"_s, counts.putBack},
                        {u"changed"_s, counts.changed},
                        {u"gone"_s, counts.gone}});
}

std::optional<ImportUndo::Counts> takeBack(const QLJournalPackageFile& package, bool isTrial, Error* error) {
  const Interruption interruption;
  ProgressLine line("Taking back");
  ImportUndo::Listener listener;
  listener.kept = [](const QString& uuid, const QString& reason) { failed(uuid + u" stays, "_s + reason); };
  listener.isStopped = Interruption::isAsked;
  listener.progress = [&line](qint64 done, qint64 total) {
    constexpr qint64 step = 50;
    if (done % step == 0) line.show(done, total);
  };
  ImportUndo undo(package);
  return isTrial ? undo.look(listener, error) : undo.run(listener, error);
}

}  // namespace

int takeImportBack(Context& context, bool isTrial) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  const auto last = ImportUndo::lastImport(*package);
  Error error;
  const auto counts = takeBack(*package, isTrial, &error);
  if (!counts || !last) return failed(error.localizedDescription);
  printCounts(context, *last, *counts, isTrial);
  return Done;
}

}  // namespace quillo::ctl
