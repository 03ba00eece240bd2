#pragma once

#include "exchange/ExportFormat.h"
#include "qlcore/QLWeather.h"

#include <QLocale>
#include <QPageLayout>
#include <QString>

#include <functional>
#include <memory>

class QPdfWriter;

namespace quillo {

class EntryPages;

// Entries as the pages of a PDF document, which goes out piece by piece as the pages fill. Any thread, one alone.
class PdfEntryWriter final : public EntryWriter {
 public:
  struct Options {
    QLocale locale;
    std::function<QString(const QLWeather&)> weatherText;  // called where the writer is
    QPageLayout layout{usualLayout()};
    int fontSize{11};  // in points
  };

  PdfEntryWriter(ByteSink sink, Options options);
  ~PdfEntryWriter() override;

  bool begin(const ExportOverview& overview, Error* error) override;
  bool add(const ExportedEntry& exported, Error* error) override;
  bool end(Error* error) override;

  // The paper of the country, with three quarters of an inch around.
  [[nodiscard]] static QPageLayout usualLayout();

 private:
  class Device;
  bool isUsable(Error* error) const;

  Options m_options;
  std::unique_ptr<Device> m_device;
  std::unique_ptr<QPdfWriter> m_writer;
  std::unique_ptr<EntryPages> m_pages;
};

}  // namespace quillo
