#pragma once

#include "exchange/EntryWriter.h"

#include <QDate>
#include <QSet>

namespace quillo {

// One page that needs nothing else: an index by year and month, then the entries with their Markdown drawn. It follows
// the reader's light or dark look, prints well, and neither runs nor fetches anything, whatever the entries hold.
class HtmlWriter final : public EntryWriter {
 public:
  explicit HtmlWriter(ByteSink sink) : m_sink(std::move(sink)) {}
  bool begin(const ExportOverview& overview, Error* error) override;
  bool add(const ExportedEntry& exported, Error* error) override;
  bool end(Error* error) override;

 private:
  [[nodiscard]] QString monthHeading(QDate day);

  ByteSink m_sink;
  QDate m_month;        // of the entry before, by its first day
  QSet<QDate> m_shown;  // months that the index leads to already
};

}  // namespace quillo
