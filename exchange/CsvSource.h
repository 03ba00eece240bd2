#pragma once

#include "exchange/ImportSource.h"

#include <QHash>
#include <QString>
#include <QStringList>

namespace quillo {

// A table whose first line names its columns: text and date, and perhaps title, time, timezone, tags, place, latitude,
// longitude, id. Others are passed by. A row without an identifier of its own gets one that is made of the file's path
// and the row's date.
class CsvSource final : public ImportSource {
 public:
  CsvSource(const QString& path, bool makesTagsOfHashtags) : m_path(path), m_makesTags(makesTagsOfHashtags) {}
  void forEach(const ImportTaker& take) override;

 private:
  QString m_path;
  bool m_makesTags;
};

}  // namespace quillo
