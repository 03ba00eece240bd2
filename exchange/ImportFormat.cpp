#include "exchange/ImportFormat.h"

#include "exchange/CsvSource.h"
#include "exchange/JsonSource.h"
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

constexpr std::array formats{
    ImportFormat{"json", "a file that export json wrote", json},
    ImportFormat{"markdown", "a Markdown file, or a folder of them (.md, .markdown, .mkd)", markdown},
    ImportFormat{"csv", "a table with columns text and date, in any order (see below)", csv},
    ImportFormat{"text", "a text file, or a folder of them (.txt, .text)", text},
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
