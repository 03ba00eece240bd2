#pragma once

#include "exchange/JrnlEntry.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>

namespace quillo {

// What the diary program jrnl keeps and exports (jrnl.sh, "Formats" and "Journal Types"): its text, as one file or a
// folder with one a day, or JSON.
class JrnlSource final : public ImportSource {
 public:
  JrnlSource(const QString& path, bool makesTagsOfHashtags) : m_path(path), m_makesTags(makesTagsOfHashtags) {}
  void forEach(const ImportTaker& take) override;

  // Of one file, until `take` answers false; so do these then. The device is open and at its beginning.
  static bool readText(const QByteArray& utf8, const QString& path, JrnlEntries& entries, const ImportTaker& take);
  static bool readJson(QIODevice& device, const QString& path, JrnlEntries& entries, const ImportTaker& take);

 private:
  QString m_path;
  bool m_makesTags;
};

}  // namespace quillo
