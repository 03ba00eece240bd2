#include "exchange/CsvSource.h"

#include "exchange/CsvReader.h"
#include "exchange/SourceFiles.h"
#include "exchange/TextEntry.h"
#include "qlcore/QLJournalEntryFile.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Names of a column, the first that is there counts.
const QStringList textNames{u"text"_s, u"body"_s, u"content"_s, u"entry"_s, u"note"_s};
const QStringList dateNames{u"date"_s, u"datetime"_s, u"created"_s, u"creationdate"_s};
const QStringList placeNames{u"place"_s, u"placename"_s, u"location"_s};
const QStringList idNames{u"uuid"_s, u"id"_s};

// The rows of one table.
class Rows {
 public:
  // `place` is the whole path of the table.
  Rows(const QStringList& columns, QString place) : m_place(std::move(place)) {
    for (qsizetype i = 0; i < columns.size(); ++i) m_columns.insert(columns[i].trimmed().toLower().remove(u' '), i);
  }
  [[nodiscard]] QString missing() const {
    if (!has(textNames)) return u"there is no column \"text\""_s;
    return has(dateNames) ? QString() : u"there is no column \"date\""_s;
  }
  // Nothing, with a sentence's end in `problem`, where the row is no entry.
  std::optional<TextEntry> entryOf(const QStringList& row, QString* problem) {
    const QString time = value(row, {u"time"_s});
    const QString told = value(row, dateNames) + (time.isEmpty() ? QString() : u' ' + time);
    const auto moment = WrittenMoment::fromText(told);
    const auto date = moment ? zonedDate(*moment, value(row, {u"timezone"_s})) : std::nullopt;
    if (!date) {
      *problem = u"\"%1\" is no date; one is written as 2014-03-10 or 2014-03-10 21:00"_s.arg(told.left(60));
      return std::nullopt;
    }
    TextEntry entry{identifier(row, told), textOf(row), *date, {}, locationOf(row), std::nullopt};
    static const QRegularExpression separators(u"[,;\\s]+"_s);
    for (const QString& tag : value(row, {u"tags"_s}).split(separators, Qt::SkipEmptyParts))
      entry.tags << (tag.startsWith(u'#') && tag.size() > 1 ? tag.mid(1) : tag);
    return entry;
  }

 private:
  [[nodiscard]] bool has(const QStringList& names) const {
    return std::any_of(names.begin(), names.end(), [this](const QString& name) { return m_columns.contains(name); });
  }
  [[nodiscard]] QString value(const QStringList& row, const QStringList& names) const {
    for (const QString& name : names)
      if (m_columns.contains(name)) return row.value(m_columns.value(name)).trimmed();
    return {};
  }
  [[nodiscard]] QString textOf(const QStringList& row) const {
    const QString title = value(row, {u"title"_s});
    const QString text = value(row, textNames);
    return title.isEmpty() || text.startsWith(title) ? text : u"# "_s + title + u"\n\n"_s + text;
  }
  [[nodiscard]] std::optional<QLLocation> locationOf(const QStringList& row) const {
    bool hasNorth = false;
    bool hasEast = false;
    const QLLocation location{value(row, {u"latitude"_s}).toDouble(&hasNorth),
                              value(row, {u"longitude"_s}).toDouble(&hasEast), value(row, placeNames)};
    return hasNorth && hasEast && location.isValid() ? std::optional(location) : std::nullopt;
  }
  // Rows of the same date are told apart by their order.
  QString identifier(const QStringList& row, const QString& date) {
    const QString own = value(row, idNames);
    if (const auto uuid = QLJournalEntryFile::canonicalUUID(own)) return *uuid;
    if (!own.isEmpty()) return uuidOfPlace(m_place + u"\nid "_s + own);
    return uuidOfPlace(u"%1\n%2\n%3"_s.arg(m_place, date).arg(++m_dates[date]));
  }

  QString m_place;
  QHash<QString, qsizetype> m_columns;
  QHash<QString, int> m_dates;
};

ImportItem itemOf(Rows& rows, const CsvReader& reader, const QString& path, bool makesTags) {
  const ImportPlace place{path, reader.line()};
  QString problem;
  auto entry = rows.entryOf(reader.fields(), &problem);
  if (!entry) return ImportProblem{place, problem};
  if (entry->text.trimmed().isEmpty()) return ImportPassedBy{place, u"there is no text in it"_s};
  if (makesTags) entry->addHashtags();
  return ImportedEntry{place, entry->uuid, entry->fields(), false};
}

}  // namespace

void CsvSource::forEach(const ImportTaker& take) {
  ImportProblem unreadable;
  const auto bytes = utf8OfFile(m_path, &unreadable);
  if (!bytes) {
    take(unreadable);
    return;
  }
  read(*bytes, m_path, m_makesTags, take);
}

bool CsvSource::isTable(const QByteArray& beginning) {
  CsvReader reader(beginning.left(beginning.indexOf('\n')));
  return reader.next() && Rows(reader.fields(), {}).missing().isEmpty();
}

void CsvSource::read(const QByteArray& utf8, const QString& path, bool makesTags, const ImportTaker& take) {
  const auto problem = [&](int line, const QString& reason) { take(ImportProblem{{path, line}, reason}); };
  CsvReader reader(utf8);
  const bool hasColumns = reader.next();
  Rows rows(hasColumns ? reader.fields() : QStringList(), QFileInfo(path).canonicalFilePath());
  if (!reader.hasFault() && !rows.missing().isEmpty()) return problem(1, rows.missing());
  while (reader.next())
    if (!take(itemOf(rows, reader, path, makesTags))) return;
  if (reader.hasFault()) problem(reader.line(), u"the quotation mark of a field that begins here has no end"_s);
}

}  // namespace quillo
