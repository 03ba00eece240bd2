#pragma once

#include "exchange/ImportSource.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <span>

namespace quillo {

// A format that entries can be imported from.
struct ImportFormat {
  const char* name;   // for the command line, and to remember it by
  const char* title;  // for windows
  const char* description;
  bool takesFile;
  bool takesFolder;
  const char* patterns;  // of the names of its files, with spaces between; those of a folder's files, too
  std::unique_ptr<ImportSource> (*open)(const QString& path, bool makesTagsOfHashtags);

  [[nodiscard]] QStringList namePatterns() const {
    return QString::fromLatin1(patterns).split(u' ', Qt::SkipEmptyParts);
  }
};

[[nodiscard]] std::span<const ImportFormat> importFormats();
// Null where there is none of that name.
[[nodiscard]] const ImportFormat* importFormatNamed(const QString& name);

// The format that the file or folder is of, by its name and what it begins with. Null where that is not plain. Reads
// some kilobytes, and of a folder some hundred names.
[[nodiscard]] const ImportFormat* guessImportFormat(const QString& path);

}  // namespace quillo
