#include "exchange/JsonSource.h"

#include "exchange/EntryJson.h"
#include "exchange/JsonEntryReader.h"
#include "qlcore/EntryFields.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Why the document cannot be taken, by what stands beside its entries; empty where it can.
QString problemOfHead(const QJsonObject& head) {
  const QJsonValue format = head[u"format"_s];
  const QJsonValue version = head[u"version"_s];
  if (!format.isUndefined() && format.toString() != EntryJson::formatName) return u"it is of another format"_s;
  if (!version.isUndefined() && version.toInt(-1) != EntryJson::currentVersion)
    return version.toDouble() > EntryJson::currentVersion ? u"it was written by a newer version of Quillo"_s
                                                          : u"its version is none that this one knows"_s;
  return {};
}

ImportItem itemOf(const QByteArray& bytes, ImportPlace place) {
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
  if (error.error != QJsonParseError::NoError) {
    const auto until = bytes.begin() + std::clamp<qsizetype>(error.offset, 0, bytes.size());
    place.line += static_cast<int>(std::count(bytes.begin(), until, '\n'));
    return ImportProblem{place, u"it is no JSON, "_s + error.errorString()};
  }
  if (!document.isObject()) return ImportProblem{place, u"an entry is expected here"_s};
  const QJsonObject object = document.object();
  QString problem;
  auto fields = EntryJson::toFields(object, &problem);
  if (!fields) return ImportProblem{place, problem};
  // Its form was looked at above.
  const QString uuid = object[EntryFields::uuid].toString().toUpper();
  return ImportedEntry{place, uuid, *std::move(fields), true};
}

}  // namespace

void JsonSource::read(QIODevice& device, const QString& path, const ImportTaker& take) {
  JsonEntryReader reader(device);
  while (true) {
    const JsonEntryReader::Step step = reader.next();
    if (const QString problem = problemOfHead(reader.head()); !problem.isEmpty()) {
      take(ImportProblem{{path, 0}, problem});
      return;
    }
    if (step == JsonEntryReader::Step::Broken) take(ImportProblem{{path, reader.faultLine()}, reader.fault()});
    if (step != JsonEntryReader::Step::Entry) return;
    if (!take(itemOf(reader.bytes(), {path, reader.line()}))) return;
  }
}

void JsonSource::forEach(const ImportTaker& take) {
  QFile file(m_path);
  // A device or a pipe could be read once only, or for ever.
  const QFileInfo info(m_path);
  if (info.exists() && !info.isFile())
    take(ImportProblem{{m_path, 0}, u"it is no file"_s});
  else if (!file.open(QIODevice::ReadOnly))
    take(ImportProblem{{m_path, 0}, file.errorString()});
  else
    read(file, m_path, take);
}

}  // namespace quillo
