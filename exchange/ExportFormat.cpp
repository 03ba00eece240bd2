#include "exchange/ExportFormat.h"

#include "exchange/HtmlWriter.h"
#include "exchange/JsonWriter.h"
#include "exchange/MarkdownFolderWriter.h"
#include "exchange/TextWriters.h"

#include <algorithm>
#include <array>

namespace quillo {

namespace {

template <typename Writer>
std::unique_ptr<EntryWriter> document(ByteSink sink) {
  return std::make_unique<Writer>(std::move(sink));
}

std::unique_ptr<EntryWriter> markdownFolder(std::unique_ptr<ExportFolder> folder) {
  return std::make_unique<MarkdownFolderWriter>(std::move(folder));
}

constexpr std::array formats{
    ExportFormat{"markdown", "Markdown", "one Markdown document", "md", false, false, document<MarkdownWriter>,
                 nullptr},
    ExportFormat{"markdown-folder", "Markdown, a file an entry",
                 "a folder with one Markdown file an entry, its date and tags in YAML", "", false, false, nullptr,
                 markdownFolder},
    ExportFormat{"text", "Plain text", "one document of plain text", "txt", false, false, document<TextWriter>,
                 nullptr},
    ExportFormat{"html", "Web page", "one page for a browser, with an index of months", "html", false, true,
                 document<HtmlWriter>, nullptr},
    ExportFormat{"json", "JSON", "all that the journal holds, for programs and for import", "json", true, false,
                 document<JsonWriter>, nullptr},
    ExportFormat{"pdf", "PDF", "pages to print or to send", "pdf", false, false, nullptr, nullptr},
};

}  // namespace

std::span<const ExportFormat> exportFormats() {
  return formats;
}

const ExportFormat* exportFormatNamed(const QString& name) {
  const auto found = std::find_if(formats.begin(), formats.end(),
                                  [&](const auto& one) { return name == QLatin1StringView(one.name); });
  return found == formats.end() ? nullptr : &*found;
}

}  // namespace quillo
