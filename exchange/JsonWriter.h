#pragma once

#include "exchange/EntryWriter.h"

namespace quillo {

// All that the entries' files hold, one entry a line, for programs; docs/json-export.md describes it.
class JsonWriter final : public EntryWriter {
 public:
  explicit JsonWriter(ByteSink sink) : m_sink(std::move(sink)) {}
  bool begin(const ExportOverview& overview, Error* error) override;
  bool add(const ExportedEntry& exported, Error* error) override;
  bool end(Error* error) override;

 private:
  ByteSink m_sink;
  bool m_isEmpty{true};
};

}  // namespace quillo
