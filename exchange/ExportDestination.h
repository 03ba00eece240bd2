#pragma once

#include "exchange/ExportFile.h"
#include "exchange/ExportFormat.h"

#include <QString>

#include <memory>
#include <optional>

namespace quillo {

// The file or folder that an export goes to, and the writer that knows it. It appears when finish() says so; until
// then, and where it goes before, nothing is there that was not there already.
class ExportDestination {
 public:
  // Nothing, with an error, where it cannot be made, or where there is something and `isReplacing` is false. `draw` is
  // for formats that are drawn, and may be empty for the others.
  [[nodiscard]] static std::optional<ExportDestination> open(const ExportFormat& format, const QString& path,
                                                             bool isReplacing, const DocumentMaker& draw, Error* error);

  [[nodiscard]] EntryWriter& writer() { return *m_writer; }
  // To be called when the writer has ended well.
  bool finish(Error* error);

 private:
  std::unique_ptr<ExportFile> m_file;
  std::unique_ptr<EntryWriter> m_writer;
};

}  // namespace quillo
