#include "exchange/EntryHeading.h"

#include "qlcore/EntryTime.h"

#include <QLocale>

namespace quillo::EntryHeading {

using namespace Qt::StringLiterals;

namespace {

// Exports are read by programs, too, and by people elsewhere: the same on every machine.
const QLocale& language() {
  static const QLocale english(QLocale::English, QLocale::UnitedKingdom);
  return english;
}

}  // namespace

QDateTime clockTime(Date date, const QString& timeZone) {
  QDateTime utc = date.toDateTime();
  if (!utc.isValid()) return utc;
  constexpr int minute = 60;
  const int offset = localTime(date, timeZone).offsetFromUtc();
  const QDateTime local = utc.toOffsetFromUtc(offset / minute * minute);
  const int year = local.date().year();
  return year >= 1 && year <= 9999 ? local : utc;
}

QString isoTime(Date date, const QString& timeZone) {
  return clockTime(date, timeZone).toString(Qt::ISODate);
}

QString day(const QDateTime& time) {
  return language().toString(time.date(), u"dddd, d MMMM yyyy"_s);
}

QString month(QDate day) {
  return language().toString(day, u"MMMM yyyy"_s);
}

QString place(const IndexedEntry& entry) {
  if (!entry.location) return {};
  if (!entry.location->placeName.isEmpty()) return entry.location->placeName.simplified();
  return number(entry.location->latitude) + u", "_s + number(entry.location->longitude);
}

QString weather(const IndexedEntry& entry) {
  if (!entry.weather) return {};
  const QString degrees = QString::number(entry.weather->temperature, 'f', 1) + u" °C"_s;
  const QString words = entry.weather->text.simplified();
  return words.isEmpty() ? degrees : degrees + u", "_s + words;
}

QString number(double value) {
  return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

}  // namespace quillo::EntryHeading
