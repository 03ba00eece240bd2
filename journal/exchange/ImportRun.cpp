#include "journal/exchange/ImportRun.h"

#include "qlcore/QLJournalPackageFile.h"

#include <QFileInfo>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostProblems = 500;

// The path below the source, which is known.
QString inWords(const ImportPlace& place, const QString& source, const QString& reason) {
  QString where = place.text();
  const QString folder = QFileInfo(source).isDir() ? source : QFileInfo(source).path();
  if (where.startsWith(folder + u'/')) where.remove(0, folder.size() + 1);
  return where + u" \u2013 "_s + reason;
}

}  // namespace

ImportPreview previewImport(const ImportOrder& order, BackgroundWork::Monitor& monitor) {
  ImportPreview preview;
  Error error;
  const auto package = QLJournalPackageFile::openPackage(order.journal, /*create=*/false, &error);
  if (!package) {
    preview.error = error;
    return preview;
  }
  const auto source = order.format->open(order.path, order.makesTagsOfHashtags);
  const JournalImport import(*package, order.isReplacing);
  JournalImport::Listener listener;
  listener.isStopped = [&] { return monitor.isStopped(); };
  listener.progress = [&](qint64 done) { monitor.progressed(u"Reading"_s, done, 0); };
  listener.problem = [&](const ImportProblem& problem) {
    if (preview.problems.size() < mostProblems) preview.problems << inWords(problem.place, order.path, problem.reason);
  };
  preview.counts = import.look(*source, listener);
  preview.isStopped = monitor.isStopped();
  return preview;
}

ImportOutcome runImport(const ImportOrder& order, qint64 total, BackgroundWork::Monitor& monitor) {
  ImportOutcome outcome;
  Error error;
  const auto package = QLJournalPackageFile::openPackage(order.journal, /*create=*/false, &error);
  std::optional<JournalImport::Counts> counts;
  if (package) {
    const auto source = order.format->open(order.path, order.makesTagsOfHashtags);
    JournalImport import(*package, order.isReplacing, {order.path, QString::fromLatin1(order.format->name)});
    JournalImport::Listener listener;
    listener.isStopped = [&] { return monitor.isStopped(); };
    listener.progress = [&](qint64 done) { monitor.progressed(u"Importing"_s, done, std::max(done, total)); };
    counts = import.write(*source, listener, &error);
  }
  outcome.isStopped = monitor.isStopped();
  if (counts)
    outcome.counts = *counts;
  else
    outcome.error = error;
  return outcome;
}

ImportUndoOutcome undoLastImport(const QUrl& journal, BackgroundWork::Monitor& monitor) {
  ImportUndoOutcome outcome;
  Error error;
  const auto package = QLJournalPackageFile::openPackage(journal, /*create=*/false, &error);
  const ImportUndo::Listener listener{
      .progress = [&](qint64 done, qint64 total) { monitor.progressed(u"Taking the import back"_s, done, total); },
      .isStopped = [&] { return monitor.isStopped(); }};
  const auto counts = package ? ImportUndo(*package).run(listener, &error) : std::nullopt;
  outcome.isStopped = !counts && monitor.isStopped();
  if (counts)
    outcome.counts = *counts;
  else
    outcome.error = error;
  return outcome;
}

}  // namespace quillo
