#pragma once

#include "exchange/ImportSource.h"

#include <QByteArray>
#include <QString>

namespace quillo {

// A table whose first line names its columns: text and date, and perhaps title, time, timezone, tags, place, latitude,
// longitude, id. Others are passed by. A row without an identifier of its own gets one that is made of the file's path
// and the row's date.
class CsvSource final : public ImportSource {
 public:
  CsvSource(const QString& path, bool makesTagsOfHashtags) : m_path(path), m_makesTags(makesTagsOfHashtags) {}
  void forEach(const ImportTaker& take) override;

  // The same of what the file at `path` holds, without a mark of the byte order.
  static void read(const QByteArray& utf8, const QString& path, bool makesTagsOfHashtags, const ImportTaker& take);
  // Whether the text begins with a line that names the columns which are needed.
  [[nodiscard]] static bool isTable(const QByteArray& beginning);

 private:
  QString m_path;
  bool m_makesTags;
};

}  // namespace quillo
