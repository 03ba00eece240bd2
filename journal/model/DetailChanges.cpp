#include "journal/model/DetailChanges.h"

#include "foundation/Calendar.h"
#include "journal/model/ClockTime.h"
#include "qlcore/EntryTime.h"
#include "qlcore/Hashtags.h"

#include <QRegularExpression>
#include <QTimeZone>

#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr double secondsThatAreNow = 3600;

QDateTime readingOf(const EntryDetails& details) {
  return localTime(details.creationDate, details.timeZone);
}

// In the user's own zone where the system does not know that one, as localTime() has it.
std::optional<Date> dateOfReading(QDate day, QTime time, const QString& zone) {
  return Calendar::withTimeZoneName(zone).value_or(Calendar::currentCalendar()).dateOfReading(day, time);
}

bool isSamePlace(const EntryDetails& a, const EntryDetails& b) {
  if (!a.location || !b.location) return !a.location && !b.location;
  return a.location->latitude == b.location->latitude && a.location->longitude == b.location->longitude;
}

QString tagChangeText(const QStringList& before, const QStringList& after, const QString& text) {
  const QStringList written = hashtags(text);
  for (const QString& tag : before)
    if (!after.contains(tag) && written.contains(tag, Qt::CaseInsensitive))
      return u"\u201C%1\u201D is no tag any more; #%1 still stands in the text."_s.arg(tag);
  return u"Tags changed"_s;
}

// As people look for it.
QString plain(const QString& zone) {
  QString text = zone.toCaseFolded();
  return text.replace(u'_', u' ');
}

}  // namespace

EntryDetails withReading(const EntryDetails& details, QDate day, QTime time) {
  EntryDetails changed = details;
  changed.creationDate = dateOfReading(day, time, details.timeZone).value_or(details.creationDate);
  return changed;
}

EntryDetails withZone(const EntryDetails& details, const QString& zone) {
  const QDateTime reading = readingOf(details);
  EntryDetails changed = details;
  changed.timeZone = zone;
  return withReading(changed, reading.date(), reading.time());
}

EntryDetails withoutStaleWeather(const EntryDetails& before, const EntryDetails& after) {
  EntryDetails changed = after;
  if (!isSamePlace(before, after) || readingOf(before).date() != readingOf(after).date()) changed.weather.reset();
  return changed;
}

bool isOfNow(const EntryDetails& details, Date now) {
  return std::abs(now.timeIntervalSince(details.creationDate)) <= secondsThatAreNow;
}

QString changeText(const EntryDetails& before, const EntryDetails& after, const QString& text, const QLocale& locale) {
  const QDateTime reading = readingOf(after);
  if (before.timeZone != after.timeZone)
    return u"%1, in the zone %2"_s.arg(clockTime(reading.time(), locale), after.timeZone);
  if (readingOf(before) != reading)
    return u"Moved to %1, %2"_s.arg(locale.toString(reading.date(), u"d MMMM yyyy"_s),
                                    clockTime(reading.time(), locale));
  if (before.tags != after.tags) return tagChangeText(before.tags, after.tags, text);
  if (before.location == after.location) return {};
  if (!after.location) return u"Place removed"_s;
  return isSamePlace(before, after) ? u"Place renamed"_s : u"Place changed"_s;
}

QStringList tagsOfLine(const QString& line) {
  static const QRegularExpression between(u",|\\s+(?=#)"_s);
  QStringList tags;
  const QStringList parts = line.split(between);
  for (const QString& part : parts) {
    QString tag = part.simplified();
    while (tag.startsWith(u'#')) tag = tag.sliced(1).trimmed();
    if (!tag.isEmpty() && !tags.contains(tag, Qt::CaseInsensitive)) tags << tag;
  }
  return tags;
}

QString lineOfTags(const QStringList& tags) {
  return tags.join(u", "_s);
}

QStringList zonesNamed(const QString& text, qsizetype most) {
  const QString sought = plain(text.simplified());
  QStringList first;
  QStringList others;
  const QList<QByteArray> all = QTimeZone::availableTimeZoneIds();
  for (const QByteArray& identifier : all) {
    const QString zone = QString::fromLatin1(identifier);
    // Zones of an offset alone are those of ships.
    if (!zone.contains(u'/') && zone != u"UTC") continue;
    const QString name = plain(zone);
    if (name.startsWith(sought) || name.section(u'/', -1).startsWith(sought))
      first << zone;
    else if (name.contains(sought))
      others << zone;
  }
  first.sort();
  others.sort();
  return (first + others).mid(0, most);
}

}  // namespace quillo
