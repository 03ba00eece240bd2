#include "exchange/CsvSource.h"
#include "exchange/ImportFormat.h"
#include "exchange/JrnlEntry.h"
#include "exchange/JsonEntryReader.h"
#include "exchange/RedNotebookSource.h"
#include "foundation/Utf8.h"

#include <QBuffer>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QRegularExpression>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 longestBeginning = qint64{64} * 1024;
constexpr int mostNames = 500;

bool hasEnding(const QString& name, const ImportFormat& format) {
  return QDir::match(format.namePatterns(), name);
}

// Of what a JSON file begins with: entries of ours have identifiers, those of jrnl titles.
const char* nameOfJson(QByteArray beginning) {
  QBuffer device(&beginning);
  device.open(QIODevice::ReadOnly);
  JsonEntryReader reader(device);
  const bool hasEntry = reader.next() == JsonEntryReader::Step::Entry;
  const QJsonObject& head = reader.head();
  if (head.contains(u"format"_s)) return "json";
  const QJsonObject entry = hasEntry ? QJsonDocument::fromJson(reader.bytes()).object() : head;
  if (entry.contains(u"uuid"_s)) return "json";
  const bool isOfJrnl = entry.contains(u"title"_s) && entry.contains(u"body"_s) && entry.contains(u"date"_s);
  return isOfJrnl ? "jrnl" : nullptr;
}

// Of a file's beginning, which is text.
const char* nameOfText(const QString& name, const QByteArray& beginning) {
  const QByteArray start = beginning.trimmed();
  if (start.startsWith('{') || start.startsWith('[')) {
    if (const char* json = nameOfJson(start)) return json;
  }
  static const QRegularExpression days(u"^(?:#[^\\n]*\\n|\\s)*\\d{1,2}:(?:\\s|$)"_s);
  const QString text = QString::fromUtf8(beginning);
  if (RedNotebookSource::monthOf(name) && days.match(text).hasMatch()) return "rednotebook";
  if (hasEnding(name, *importFormatNamed(u"markdown"_s))) return "markdown";
  if (isLikeJrnl(text)) return "jrnl";
  if (CsvSource::isTable(beginning)) return "csv";
  return hasEnding(name, *importFormatNamed(u"text"_s)) ? "text" : nullptr;
}

const char* nameOfFile(const QFileInfo& info) {
  QFile file(info.filePath());
  // A pipe could be read once only, or for ever.
  if (!info.isFile() || !file.open(QIODevice::ReadOnly)) return nullptr;
  QByteArray beginning = file.read(longestBeginning);
  if (beginning.startsWith("\xEF\xBB\xBF")) beginning.remove(0, 3);
  // It may end within a character.
  constexpr qsizetype longestCharacter = 4;
  const qsizetype fault = firstInvalidUtf8Byte(beginning);
  if (beginning.isEmpty() || (fault >= 0 && fault < beginning.size() - longestCharacter)) return nullptr;
  return nameOfText(info.fileName(), beginning);
}

// The format of most of the first names; hidden ones are none.
const char* nameOfFolder(const QString& path) {
  for (const QString& name : QDir(path).entryList({u"*.txt"_s}, QDir::Files))
    if (RedNotebookSource::monthOf(name)) return nameOfFile(QFileInfo(path + u'/' + name));
  static const QRegularExpression day(u"/\\d{4}/\\d{2}/\\d{2}\\.txt$"_s);
  int markdown = 0;
  int text = 0;
  int seen = 0;
  QDirIterator files(path, QDir::Files, QDirIterator::Subdirectories);
  while (files.hasNext() && ++seen <= mostNames) {
    const QFileInfo file(files.next());
    if (day.match(file.filePath()).hasMatch()) return nameOfFile(file);
    if (hasEnding(file.fileName(), *importFormatNamed(u"markdown"_s))) ++markdown;
    if (hasEnding(file.fileName(), *importFormatNamed(u"text"_s))) ++text;
  }
  if (markdown > 0 && text > 0) return nullptr;
  if (markdown > 0) return "markdown";
  return text > 0 ? "text" : nullptr;
}

}  // namespace

const ImportFormat* guessImportFormat(const QString& path) {
  const QFileInfo info(path);
  const char* name = info.isDir() ? nameOfFolder(path) : nameOfFile(info);
  return name ? importFormatNamed(QLatin1StringView(name)) : nullptr;
}

}  // namespace quillo
