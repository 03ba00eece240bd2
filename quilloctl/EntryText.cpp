#include "quilloctl/EntryText.h"

#include "foundation/PropertyListJson.h"
#include "foundation/TimeZone.h"
#include "qlcore/QLJournalEntryFile.h"
#include "quilloctl/Streams.h"
#include "quilloctl/Terminal.h"

#include <QDateTime>
#include <QJsonArray>

#include <algorithm>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

// With the offset of the entry's own zone: "2014-03-10T21:00:00+01:00".
QString timeOfEntry(Date date, const IndexedEntry& entry) {
  const auto zone = TimeZone::timeZoneWithName(entry.timeZone);
  const QDateTime utc = date.toDateTime();
  if (!zone || !utc.isValid()) return date.toISO8601();
  const QString text = utc.toOffsetFromUtc(zone->secondsFromUTC(utc.toSecsSinceEpoch())).toString(Qt::ISODate);
  // There is none for years of more than four digits.
  return text.isEmpty() ? date.toISO8601() : text;
}

QString beginning(const QString& entryText) {
  constexpr qsizetype shown = 60;
  const QString text = entryText.left(4 * shown).simplified();
  return text.size() > shown ? text.left(shown - 1) + u'…' : text;
}

QString placeName(const IndexedEntry& entry) {
  return entry.location ? entry.location->placeName : QString();
}

StyledLine headLine(const IndexedEntry& entry) {
  StyledLine line;
  line.add(entry.uuid, Style::Identifier).gap(2).add(timeOfEntry(entry.creationDate, entry), Style::Time);
  if (const QString place = placeName(entry); !place.isEmpty()) line.gap(2).add(place);
  if (!entry.tags.isEmpty()) line.gap(2).add(u'#' + entry.tags.join(u" #"_s), Style::Tag);
  return line;
}

// The part of the text from `start` to `end`, with what matched standing out.
void addMatches(StyledLine& line, const IndexedEntry& entry, qsizetype start, qsizetype end) {
  const auto part = [&entry](qsizetype from, qsizetype to) { return entry.text.mid(from, to - from); };
  for (const TextRange& match : entry.matches) {
    const qsizetype matchStart = std::clamp(match.location, start, end);
    const qsizetype matchEnd = std::clamp(match.location + match.length, matchStart, end);
    line.add(part(start, matchStart)).add(part(matchStart, matchEnd), Style::Match);
    start = matchEnd;
  }
  line.add(part(start, end));
}

}  // namespace

IndexedEntry shownEntry(const QLJournalEntryFile& entry) {
  IndexedEntry shown;
  shown.uuid = entry.uuid();
  shown.creationDate = entry.creationDate();
  shown.modificationDate = entry.modificationDate();
  shown.timeZone = entry.timeZone();
  shown.text = entry.string();
  shown.tags = entry.tags();
  shown.location = entry.location();
  shown.weather = entry.weather();
  return shown;
}

QJsonObject json(const IndexedEntry& entry) {
  QJsonObject object{{u"uuid"_s, entry.uuid},
                     {u"text"_s, entry.text},
                     {u"tags"_s, QJsonArray::fromStringList(entry.tags)},
                     {u"creationDate"_s, entry.creationDate.toISO8601()},
                     {u"modificationDate"_s, entry.modificationDate.toISO8601()},
                     {u"timeZone"_s, entry.timeZone}};
  if (entry.location) object[u"location"_s] = jsonFromPropertyList(entry.location->toPropertyList());
  if (entry.weather) object[u"weather"_s] = jsonFromPropertyList(entry.weather->toPropertyList());
  return object;
}

QJsonObject jsonWithMatches(const IndexedEntry& entry) {
  QJsonObject object = json(entry);
  QJsonArray matches;
  for (const TextRange& match : entry.matches)
    matches << QJsonObject{{u"start"_s, match.location}, {u"length"_s, match.length}};
  object[u"matches"_s] = matches;
  object[u"excerpt"_s] = entry.text.mid(entry.excerpt.location, entry.excerpt.length);
  return object;
}

void printLine(const IndexedEntry& entry) {
  StyledLine line;
  line.add(entry.uuid, Style::Identifier).gap(2).add(timeOfEntry(entry.creationDate, entry), Style::Time);
  print(line.gap(2).add(beginning(entry.text)));
}

void printFound(const IndexedEntry& entry) {
  print(headLine(entry));
  const qsizetype start = std::clamp<qsizetype>(entry.excerpt.location, 0, entry.text.size());
  const qsizetype end = std::clamp<qsizetype>(start + entry.excerpt.length, start, entry.text.size());
  StyledLine line;
  line.gap(4).add(start > 0 ? u"…"_s : QString());
  addMatches(line, entry, start, end);
  print(line.add(end < entry.text.size() ? u"…"_s : QString()));
}

void printIndented(const IndexedEntry& entry) {
  print(headLine(entry));
  print(QString());
  for (const QString& paragraph : entry.text.split(u'\n')) print(u"    "_s + paragraph);
  print(QString());
}

void printWhole(const IndexedEntry& entry) {
  print(u"uuid:     "_s + entry.uuid);
  print(u"created:  "_s + timeOfEntry(entry.creationDate, entry) + u' ' + entry.timeZone);
  print(u"modified: "_s + timeOfEntry(entry.modificationDate, entry));
  if (!entry.tags.isEmpty()) print(u"tags:     "_s + entry.tags.join(u", "_s));
  if (const QString place = placeName(entry); !place.isEmpty()) print(u"place:    "_s + place);
  print(QString());
  print(entry.text);
}

}  // namespace quillo::ctl
