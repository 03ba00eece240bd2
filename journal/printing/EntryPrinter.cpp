#include "journal/printing/EntryPrinter.h"

#include "journal/printing/EntryPages.h"

#include <QFileInfo>
#include <QPdfWriter>
#include <QPrinter>
#include <QSaveFile>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

EntryPrinter::Outcome fill(QPagedPaintDevice& device, int fontSize, const PageRange& range,
                           const EntryPrinter::NextEntry& next, const EntryPrinter::Progress& progress) {
  using Outcome = EntryPrinter::Outcome;
  EntryPages pages(device, fontSize, range);
  if (!pages.isActive()) return Outcome::Failed;
  int entries = 0;
  bool isCancelled = false;
  const auto goesOn = [&] {
    isCancelled = progress && !progress(entries, pages.pageCount());
    return !isCancelled;
  };
  while (const std::optional<PrintedEntry> entry = next()) {
    if (!pages.add(*entry, goesOn)) return isCancelled ? Outcome::Cancelled : Outcome::Failed;
    ++entries;
    if (!goesOn()) return Outcome::Cancelled;
  }
  return pages.finish() ? Outcome::Printed : Outcome::Failed;
}

EntryPrinter::Outcome failed(Error* error, const QString& text) {
  fail(error, cocoaError(ErrorCode::fileWriteUnknown, text));
  return EntryPrinter::Outcome::Failed;
}

}  // namespace

EntryPrinter::EntryPrinter(NextEntry next, Progress progress)
    : m_next(std::move(next)), m_progress(std::move(progress)) {}

EntryPrinter::Outcome EntryPrinter::print(QPrinter& printer, Error* error) {
  if (printer.printRange() == QPrinter::PageRange && printer.fromPage() > 0) {
    m_range.first = printer.fromPage();
    if (printer.toPage() > 0) m_range.last = printer.toPage();
  }
  if (printer.outputFormat() == QPrinter::PdfFormat && !printer.outputFileName().isEmpty())
    return writePdf(printer.outputFileName(), printer.pageLayout(), error);
  const Outcome outcome = fill(printer, m_fontSize, m_range, m_next, m_progress);
  if (outcome != Outcome::Printed) printer.abort();
  if (outcome == Outcome::Failed) {
    const QString name = printer.printerName();
    return failed(error, name.isEmpty() ? u"There is no printer."_s : u"The printer %1 cannot be used."_s.arg(name));
  }
  return outcome;
}

EntryPrinter::Outcome EntryPrinter::writePdf(const QString& path, const QPageLayout& layout, Error* error) {
  // A device would be replaced by a file.
  if (const QFileInfo old(path); old.exists() && !old.isFile()) return failed(error, path + u": Not a regular file"_s);
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return failed(error, path + u": "_s + file.errorString());
  file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
  Outcome outcome = Outcome::Failed;
  {
    QPdfWriter writer(&file);
    setUpPdf(writer, layout, QFileInfo(path).completeBaseName());
    outcome = fill(writer, m_fontSize, m_range, m_next, m_progress);
  }
  // Whatever is not committed is removed.
  if (outcome == Outcome::Printed && file.error() == QFileDevice::NoError && file.commit()) return outcome;
  if (outcome == Outcome::Cancelled) return outcome;
  return failed(error, path + u": "_s + file.errorString());
}

}  // namespace quillo
