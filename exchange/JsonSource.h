#pragma once

#include "exchange/ImportSource.h"

#include <QByteArray>
#include <QIODevice>

namespace quillo {

// A file that JsonWriter wrote, or a list of entries as quilloctl prints them with --json.
class JsonSource final : public ImportSource {
 public:
  explicit JsonSource(const QString& path) : m_path(path) {}
  void forEach(const ImportTaker& take) override;

  // The same of an open device.
  static void read(QIODevice& device, const QString& path, const ImportTaker& take);

 private:
  QString m_path;
};

}  // namespace quillo
