#include "ImportLaws.h"
#include "exchange/RedNotebookMarkup.h"
#include "exchange/RedNotebookSource.h"
#include "foundation/Utf8.h"

using namespace quillo;

// The input as a month file to import, and as a text with formatting.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const QByteArray bytes = inputBytes(data, size);
  if (firstInvalidUtf8Byte(bytes) >= 0) return 0;
  checkImport(bytes, [&](const ImportTaker& take) {
    RedNotebookSource::readMonth(bytes, QStringLiteral("2024-02.txt"), QDate(2024, 2, 1), take);
  });
  const QString text = QString::fromUtf8(bytes);
  const QString markdown = markdownOfRedNotebook(text);
  require(markdown.count(u'\n') >= text.count(u'\n'), "no line is lost");
  QString words;
  for (const QChar c : text)
    if (c.isLetterOrNumber()) words += c;
  // Nothing but colours, widths of pictures and numbers of lists come and go.
  const bool isPlain = !text.contains(QLatin1StringView("color:")) && !text.contains(u'?') && !text.contains(u'+') &&
                       !text.contains(u'<') && !text.contains(u'>');
  if (!isPlain) return 0;
  QString kept;
  for (const QChar c : markdown)
    if (c.isLetterOrNumber()) kept += c;
  require(kept == words, "no word is lost");
  return 0;
}
