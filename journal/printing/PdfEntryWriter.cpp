#include "journal/printing/PdfEntryWriter.h"

#include "journal/printing/EntryPages.h"

#include <QIODevice>
#include <QPdfWriter>

#include <optional>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

// Where the bytes of the document go. It remembers the first failure: whoever writes to it does not look.
class PdfEntryWriter::Device final : public QIODevice {
 public:
  explicit Device(ByteSink sink) : m_sink(std::move(sink)) { open(QIODevice::WriteOnly); }

  [[nodiscard]] const std::optional<Error>& error() const { return m_error; }
  [[nodiscard]] bool isSequential() const override { return true; }

 protected:
  qint64 readData(char*, qint64) override { return -1; }
  qint64 writeData(const char* bytes, qint64 count) override {
    Error error;
    if (!m_error && !m_sink(QByteArray(bytes, count), &error)) m_error = error;
    return m_error ? -1 : count;
  }

 private:
  ByteSink m_sink;
  std::optional<Error> m_error;
};

QPageLayout PdfEntryWriter::usualLayout() {
  constexpr double margin = 54;
  const bool isImperial = QLocale().measurementSystem() == QLocale::ImperialUSSystem;
  return QPageLayout(QPageSize(isImperial ? QPageSize::Letter : QPageSize::A4), QPageLayout::Portrait,
                     QMarginsF(margin, margin, margin, margin), QPageLayout::Point);
}

PdfEntryWriter::PdfEntryWriter(ByteSink sink, Options options)
    : m_options(std::move(options)), m_device(std::make_unique<Device>(std::move(sink))) {}

PdfEntryWriter::~PdfEntryWriter() = default;

bool PdfEntryWriter::begin(const ExportOverview& overview, Error* error) {
  m_writer = std::make_unique<QPdfWriter>(m_device.get());
  setUpPdf(*m_writer, m_options.layout, overview.journalName);
  m_pages = std::make_unique<EntryPages>(*m_writer, m_options.fontSize);
  return isUsable(error);
}

bool PdfEntryWriter::add(const ExportedEntry& exported, Error* error) {
  const PrintedEntry entry = printedEntry(exported.entry, m_options.locale, m_options.weatherText);
  const bool isAdded = m_pages->add(entry, [this] { return !m_device->error(); });
  return isUsable(error) &&
         (isAdded || fail(error, cocoaError(ErrorCode::fileWriteUnknown, u"no page can be begun"_s)));
}

bool PdfEntryWriter::end(Error* error) {
  const bool isFinished = m_pages->finish();
  m_pages.reset();
  // Its last bytes come when it goes.
  m_writer.reset();
  return isUsable(error) &&
         (isFinished || fail(error, cocoaError(ErrorCode::fileWriteUnknown, u"the last page cannot be ended"_s)));
}

bool PdfEntryWriter::isUsable(Error* error) const {
  if (m_device->error()) return fail(error, *m_device->error());
  const bool isDrawing = !m_pages || m_pages->isActive();
  return isDrawing || fail(error, cocoaError(ErrorCode::fileWriteUnknown, u"no page can be drawn"_s));
}

}  // namespace quillo
