#include "exchange/SourceFiles.h"

#include "foundation/FileContents.h"
#include "foundation/Utf8.h"

#include <QDir>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int deepestFolder = 64;

}  // namespace

std::optional<QByteArray> utf8OfFile(const QString& path, ImportProblem* problem) {
  Error error;
  auto bytes = contentsOfFile(path, &error);
  const auto refuse = [&](int line, const QString& reason) {
    *problem = {{path, line}, reason};
    return std::nullopt;
  };
  if (!bytes) return refuse(0, error.localizedDescription);
  if (const qsizetype at = firstInvalidUtf8Byte(*bytes); at >= 0)
    return refuse(1 + static_cast<int>(std::count(bytes->begin(), bytes->begin() + at, '\n')),
                  u"it is no UTF-8 text"_s);
  if (bytes->startsWith("\xEF\xBB\xBF")) bytes->remove(0, 3);
  return bytes;
}

bool SourceFolder::forEachFile(const QString& path, const TakeFile& takeFile, const ImportTaker& take) const {
  return goThrough(path, 0, takeFile, take);
}

// Ends at the deepest folder; links, which alone could lead back up, are not followed.
bool SourceFolder::goThrough(const QString& path, int depth, const TakeFile& takeFile, const ImportTaker& take) const {
  if (!QFileInfo(path).isReadable()) return take(ImportProblem{{path, 0}, u"the folder cannot be read"_s});
  const auto items = QDir(path).entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
  return std::all_of(items.begin(), items.end(), [&](const QFileInfo& item) {
    const ImportPlace place{item.filePath(), 0};
    if (item.isSymLink()) return take(ImportPassedBy{place, u"it is a link, which is not followed"_s});
    if (!item.isDir()) return !m_isWanted(item) || takeFile(item);
    if (depth >= deepestFolder) return take(ImportProblem{place, u"there are too many folders within each other"_s});
    return goThrough(item.filePath(), depth + 1, takeFile, take);
  });
}

}  // namespace quillo
