#include "exchange/ExportDestination.h"

#include <utility>

namespace quillo {

std::optional<ExportDestination> ExportDestination::open(const ExportFormat& format, const QString& path,
                                                         bool isReplacing, const DocumentMaker& draw, Error* error) {
  ExportDestination destination;
  if (format.isFolder()) {
    auto folder = ExportFolder::make(path, isReplacing, error);
    if (!folder) return std::nullopt;
    destination.m_writer = format.makeFolder(std::move(folder));
    return destination;
  }
  destination.m_file = ExportFile::make(path, isReplacing, error);
  ExportFile* const file = destination.m_file.get();
  if (!file) return std::nullopt;
  const ByteSink sink = [file](const QByteArray& bytes, Error* reason) { return file->write(bytes, reason); };
  destination.m_writer = format.isDrawn() ? draw(sink) : format.makeDocument(sink);
  return destination;
}

bool ExportDestination::finish(Error* error) {
  return !m_file || m_file->finish(error);
}

}  // namespace quillo
