#pragma once

#include "exchange/ImportSource.h"

#include <QFileInfo>
#include <QString>
#include <QStringList>

namespace quillo {

// Files of text, each an entry: one, or those of a folder and its folders with the endings that are wanted. Hidden ones
// are left alone, and links inside a folder are not followed. Date, zone, tags, place and weather are those of the
// front matter; else the date is that in the file's name, else that of the file. An entry without an identifier of its
// own gets one that is made of the file's path, and so the same each time.
class TextFilesSource final : public ImportSource {
 public:
  struct Options {
    QStringList endings;         // ".md"
    bool makesTagsOfHashtags{};  // where the front matter does not come from an export of ours
  };
  TextFilesSource(const QString& path, Options options) : m_path(path), m_options(std::move(options)) {}
  void forEach(const ImportTaker& take) override;

 private:
  [[nodiscard]] bool isWanted(const QString& name) const;
  [[nodiscard]] ImportItem itemOf(const QFileInfo& info) const;
  [[nodiscard]] ImportItem entryOf(const QFileInfo& info, const QString& file) const;

  QString m_path;
  Options m_options;
};

}  // namespace quillo
