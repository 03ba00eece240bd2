#include "exchange/ImportFormat.h"

#include "exchange/CsvSource.h"
#include "exchange/JrnlSource.h"
#include "exchange/JsonSource.h"
#include "exchange/RedNotebookSource.h"
#include "exchange/TextFilesSource.h"

#include <algorithm>
#include <array>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<ImportSource> json(const QString& path, bool) {
  return std::make_unique<JsonSource>(path);
}

std::unique_ptr<ImportSource> markdown(const QString& path, bool makesTags) {
  return std::make_unique<TextFilesSource>(path,
                                           TextFilesSource::Options{{u".md"_s, u".markdown"_s, u".mkd"_s}, makesTags});
}

std::unique_ptr<ImportSource> text(const QString& path, bool makesTags) {
  return std::make_unique<TextFilesSource>(path, TextFilesSource::Options{{u".txt"_s, u".text"_s}, makesTags});
}

std::unique_ptr<ImportSource> csv(const QString& path, bool makesTags) {
  return std::make_unique<CsvSource>(path, makesTags);
}

std::unique_ptr<ImportSource> jrnl(const QString& path, bool makesTags) {
  return std::make_unique<JrnlSource>(path, makesTags);
}

std::unique_ptr<ImportSource> redNotebook(const QString& path, bool) {
  return std::make_unique<RedNotebookSource>(path);
}

constexpr std::array formats{
    ImportFormat{"json", "Quillo's JSON", "a file that export json wrote", true, false, "*.json", json},
    ImportFormat{"markdown", "Markdown", "a Markdown file, or a folder of them (.md, .markdown, .mkd)", true, true,
                 "*.md *.markdown *.mkd", markdown},
    ImportFormat{"text", "Plain text", "a text file, or a folder of them (.txt, .text)", true, true, "*.txt *.text",
                 text},
    ImportFormat{"csv", "Table (CSV)", "a table with columns text and date, in any order (see below)", true, false,
                 "*.csv *.tsv", csv},
    ImportFormat{"jrnl", "jrnl", "a text file or folder of jrnl, or what its format json writes", true, true,
                 "*.txt *.json", jrnl},
    ImportFormat{"rednotebook", "RedNotebook", "a folder of RedNotebook with month files (2014-03.txt), or one of them",
                 true, true, "[0-9][0-9][0-9][0-9]-[0-9][0-9].txt", redNotebook},
};

}  // namespace

std::span<const ImportFormat> importFormats() {
  return formats;
}

const ImportFormat* importFormatNamed(const QString& name) {
  const auto found = std::find_if(formats.begin(), formats.end(),
                                  [&](const auto& one) { return name == QLatin1StringView(one.name); });
  return found == formats.end() ? nullptr : &*found;
}

}  // namespace quillo
