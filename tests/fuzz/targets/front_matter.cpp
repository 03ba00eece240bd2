#include "FuzzTarget.h"
#include "exchange/FrontMatter.h"
#include "exchange/MarkdownFolderWriter.h"
#include "exchange/MarkdownHtml.h"
#include "qlcore/StorableValues.h"

using namespace quillo;

namespace {

// What was read, written as a file of our own, reads the same.
void checkAgain(const FrontMatter& matter, const QString& text) {
  const auto date = matter.moment ? zonedDate(*matter.moment, matter.timeZone) : std::nullopt;
  if (!date) return;
  IndexedEntry entry;
  entry.uuid = QStringLiteral("0D6F6A0E-5C4B-4B7B-9C0B-3F0F6B1B2A11");
  entry.creationDate = date->date;
  entry.timeZone = date->timeZone;
  entry.text = text;
  for (const QString& tag : matter.tags) entry.tags << storableText(tag);
  NoteFault fault;
  const auto again = readNote(QString::fromUtf8(MarkdownFolderWriter::fileOf(entry)), &fault);
  require(again && again->frontMatter, "a file of ours can be read");
  require(again->text == text, "the text is kept");
  const auto dateAgain =
      again->frontMatter->moment ? zonedDate(*again->frontMatter->moment, entry.timeZone) : std::nullopt;
  require(dateAgain && dateAgain->date == date->date, "the date is kept");
}

}  // namespace

// The input as a note to import, and its text as one to export.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  NoteFault fault;
  const auto note = readNote(QString::fromUtf8(inputBytes(data, size)), &fault);
  if (!note) {
    require(fault.line > 0 && !fault.reason.isEmpty(), "a refusal has a reason and a place");
    return 0;
  }
  const QString text = storableText(note->text);
  if (note->frontMatter) checkAgain(*note->frontMatter, text);
  require(!htmlOfMarkdown(text).contains("<script"), "a page runs nothing");
  return 0;
}
