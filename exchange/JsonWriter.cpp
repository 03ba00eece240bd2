#include "exchange/JsonWriter.h"

#include "exchange/EntryJson.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// A mark of the byte order is written as its number: many readers, ours among them, take it out of a text's beginning.
QByteArray lineOf(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact).replace("\xEF\xBB\xBF", "\\ufeff");
}

}  // namespace

bool JsonWriter::begin(const ExportOverview& overview, Error* error) {
  QByteArray head = lineOf(
      {{u"format"_s, QString(EntryJson::formatName)},
       {u"version"_s, EntryJson::currentVersion},
       {u"exported"_s, overview.time.toISO8601()},
       {u"journal"_s, QJsonObject{{u"identifier"_s, overview.journalIdentifier}, {u"name"_s, overview.journalName}}}});
  head.chop(1);
  return m_sink(head + ",\n\"entries\":[", error);
}

bool JsonWriter::add(const ExportedEntry& exported, Error* error) {
  const QByteArray line = lineOf(EntryJson::fromFields(exported.entry.uuid, exported.fields));
  const QByteArray before = m_isEmpty ? "\n" : ",\n";
  m_isEmpty = false;
  return m_sink(before + line, error);
}

bool JsonWriter::end(Error* error) {
  return m_sink("\n]}\n", error);
}

}  // namespace quillo
