#pragma once

#include "exchange/EntryWriter.h"

namespace quillo {

// Plain text, to read and to print.
class TextWriter final : public EntryWriter {
 public:
  explicit TextWriter(ByteSink sink) : m_sink(std::move(sink)) {}
  bool begin(const ExportOverview& overview, Error* error) override;
  bool add(const ExportedEntry& exported, Error* error) override;
  bool end(Error* error) override;

 private:
  ByteSink m_sink;
  bool m_isEmpty{true};
};

// One Markdown document, a heading an entry.
class MarkdownWriter final : public EntryWriter {
 public:
  explicit MarkdownWriter(ByteSink sink) : m_sink(std::move(sink)) {}
  bool begin(const ExportOverview& overview, Error* error) override;
  bool add(const ExportedEntry& exported, Error* error) override;
  bool end(Error* error) override;

 private:
  ByteSink m_sink;
};

}  // namespace quillo
