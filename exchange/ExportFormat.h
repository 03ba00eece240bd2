#pragma once

#include "exchange/EntryWriter.h"
#include "exchange/ExportFolder.h"

#include <QString>

#include <functional>
#include <memory>
#include <span>

namespace quillo {

// A format that entries can be exported in.
struct ExportFormat {
  const char* name;
  const char* title;  // as people call it
  const char* description;
  const char* suffix;  // of the file's name; of a folder none
  bool wantsFields;    // ExportedEntry::fields
  bool wantsMonths;    // ExportOverview::months
  // One of them: a document, or a folder of files. None where it is drawn, which is not this library's to do: see
  // ExportDestination.
  std::unique_ptr<EntryWriter> (*makeDocument)(ByteSink sink);
  std::unique_ptr<EntryWriter> (*makeFolder)(std::unique_ptr<ExportFolder> folder);

  [[nodiscard]] bool isFolder() const { return makeFolder != nullptr; }
  [[nodiscard]] bool isDrawn() const { return !makeDocument && !makeFolder; }
};

// Makes the writer of a document whose bytes go to `sink`.
using DocumentMaker = std::function<std::unique_ptr<EntryWriter>(ByteSink sink)>;

[[nodiscard]] std::span<const ExportFormat> exportFormats();
// Null where there is none of that name.
[[nodiscard]] const ExportFormat* exportFormatNamed(const QString& name);

}  // namespace quillo
