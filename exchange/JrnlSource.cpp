#include "exchange/JrnlSource.h"

#include "exchange/JsonEntryReader.h"
#include "exchange/SourceFiles.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <optional>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Before the bracket that tells JSON from text.
constexpr qsizetype longestSpace = 1024;

// Nothing where it has not the form of an entry.
std::optional<JrnlEntry> entryOf(const QJsonObject& object, int line) {
  const QJsonValue title = object[u"title"_s];
  const QJsonValue body = object[u"body"_s];
  if ((!title.isString() && !body.isString()) || !object[u"date"_s].isString()) return std::nullopt;
  const QString time = object[u"time"_s].toString();
  JrnlEntry entry{line,
                  object[u"date"_s].toString() + (time.isEmpty() ? QString() : u' ' + time),
                  title.toString(),
                  body.toString(),
                  {},
                  object[u"starred"_s].toBool()};
  // With the sign, which can be chosen.
  for (const auto& value : object[u"tags"_s].toArray()) {
    const QString tag = value.toString();
    const bool hasSign = tag.size() > 1 && !tag[0].isLetterOrNumber() && !tag[0].isSurrogate();
    entry.tags << (hasSign ? tag.mid(1) : tag);
  }
  return entry;
}

}  // namespace

bool JrnlSource::readText(const QByteArray& utf8, const QString& path, JrnlEntries& entries, const ImportTaker& take) {
  return forEachJrnlEntry(utf8, [&](const JrnlEntry& entry) {
    if (entry.moment.isEmpty())
      return take(ImportProblem{{path, entry.line},
                                u"no entry begins here; one begins with a line such as [2020-06-28 18:22] Title"_s});
    return take(entries.itemOf(entry, path));
  });
}

bool JrnlSource::readJson(QIODevice& device, const QString& path, JrnlEntries& entries, const ImportTaker& take) {
  JsonEntryReader reader(device);
  const auto takeObject = [&](const QJsonObject& object, int line) {
    const auto entry = entryOf(object, line);
    return entry ? take(entries.itemOf(*entry, path))
                 : take(ImportProblem{{path, line}, u"an entry with title, body, date and time is expected here"_s});
  };
  bool isAlone = true;
  // Ends with the device.
  while (true) {
    const JsonEntryReader::Step step = reader.next();
    if (step == JsonEntryReader::Step::Broken) return take(ImportProblem{{path, reader.faultLine()}, reader.fault()});
    // A file may be one entry: then it is the head of a list that is not there.
    if (step == JsonEntryReader::Step::End)
      return !isAlone || !reader.head().contains(u"date"_s) || takeObject(reader.head(), 1);
    isAlone = false;
    if (!takeObject(QJsonDocument::fromJson(reader.bytes()).object(), reader.line())) return false;
  }
}

void JrnlSource::forEach(const ImportTaker& take) {
  JrnlEntries entries(m_makesTags);
  const auto takeFile = [&](const QFileInfo& file) {
    const QString path = file.filePath();
    ImportProblem problem;
    auto bytes = utf8OfFile(path, &problem);
    if (!bytes) return take(problem);
    if (!bytes->first(std::min(bytes->size(), longestSpace)).trimmed().startsWith('{'))
      return readText(*bytes, path, entries, take);
    QBuffer device(&*bytes);
    device.open(QIODevice::ReadOnly);
    return readJson(device, path, entries, take);
  };
  const QFileInfo info(m_path);
  if (!info.isDir()) {
    takeFile(info);
    return;
  }
  const SourceFolder folder([](const QFileInfo& file) {
    const QString ending = file.suffix().toLower();
    return ending == u"txt" || ending == u"json" || ending == u"md";
  });
  folder.forEachFile(m_path, takeFile, take);
}

}  // namespace quillo
