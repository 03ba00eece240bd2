#pragma once

#include "exchange/ImportSource.h"

#include <QByteArray>
#include <QFileInfo>
#include <QString>

#include <functional>
#include <optional>

namespace quillo {

// The whole of a file of a source, which is UTF-8 and not longer than largestFileRead; a mark of the byte order is left
// out.
// Nothing, with the problem, where it is none.
[[nodiscard]] std::optional<QByteArray> utf8OfFile(const QString& path, ImportProblem* problem);

// Goes through the files of a folder and its folders, in the order of their names. Hidden ones are left alone; links,
// which could lead anywhere, are passed by.
class SourceFolder {
 public:
  using IsWanted = std::function<bool(const QFileInfo& file)>;
  using TakeFile = std::function<bool(const QFileInfo& file)>;

  explicit SourceFolder(IsWanted isWanted) : m_isWanted(std::move(isWanted)) {}
  // `takeFile` gets each wanted file, `take` whatever else is to be told, until one of them answers false; so does this
  // then.
  bool forEachFile(const QString& path, const TakeFile& takeFile, const ImportTaker& take) const;

 private:
  bool goThrough(const QString& path, int depth, const TakeFile& takeFile, const ImportTaker& take) const;

  IsWanted m_isWanted;
};

}  // namespace quillo
