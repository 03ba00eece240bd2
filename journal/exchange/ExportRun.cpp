#include "journal/exchange/ExportRun.h"

#include "exchange/ExportDestination.h"
#include "qlcore/QLJournalPackageFile.h"

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

JournalExport::Result failedWith(const Error& error) {
  JournalExport::Result result;
  result.error = error;
  return result;
}

}  // namespace

JournalExport::Result runExport(const ExportOrder& order, BackgroundWork::Monitor& monitor) {
  Error error;
  const auto package = QLJournalPackageFile::openPackage(order.journal, /*create=*/false, &error);
  if (!package) return failedWith(error);
  JournalSearchIndex index(*package);
  const auto update = index.bringUpToDate(monitor.stopToken(), [&](const JournalSearchIndex::Progress& progress) {
    monitor.progressed(u"Reading the journal"_s, progress.done, progress.total);
  });
  if (update.error) return failedWith(*update.error);
  auto destination = ExportDestination::open(*order.format, order.path, order.isReplacing, order.draw, &error);
  if (!destination) return failedWith(error);

  JournalExport work(*package, index);
  work.onProgress([&](qint64 done, qint64 total) { monitor.progressed(u"Writing the entries"_s, done, total); });
  work.stopWhen([&] { return monitor.isStopped(); });
  JournalExport::Options options = order.options;
  options.wantsFields = order.format->wantsFields;
  options.wantsMonths = order.format->wantsMonths;
  JournalExport::Result result = work.run(options, destination->writer());
  if (!result.error && !destination->finish(&error)) result.error = error;
  return result;
}

}  // namespace quillo
