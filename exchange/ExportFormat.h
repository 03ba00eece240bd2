#pragma once

#include "exchange/EntryWriter.h"
#include "exchange/ExportFolder.h"

#include <QString>

#include <memory>
#include <span>

namespace quillo {

// A format that entries can be exported in.
struct ExportFormat {
  const char* name;
  const char* description;
  bool wantsFields;  // ExportedEntry::fields
  bool wantsMonths;  // ExportOverview::months
  // One of them: a document, or a folder of files.
  std::unique_ptr<EntryWriter> (*makeDocument)(ByteSink sink);
  std::unique_ptr<EntryWriter> (*makeFolder)(std::unique_ptr<ExportFolder> folder);

  [[nodiscard]] bool isFolder() const { return makeFolder != nullptr; }
};

[[nodiscard]] std::span<const ExportFormat> exportFormats();
// Null where there is none of that name.
[[nodiscard]] const ExportFormat* exportFormatNamed(const QString& name);

}  // namespace quillo
