#include "exchange/WrittenMoment.h"

#include "foundation/Calendar.h"
#include "foundation/TimeZone.h"

#include <QDateTime>
#include <QRegularExpression>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int secondsPerHour = 3600;
constexpr int secondsPerMinute = 60;

// Groups: year, month, day, hour, minute, second; an absent one is empty.
std::optional<WrittenMoment> momentOf(const QRegularExpressionMatch& match) {
  const auto number = [&match](QStringView group) { return match.captured(group).toInt(); };
  WrittenMoment moment{QDate(number(u"year"), number(u"month"), number(u"day")), std::nullopt, std::nullopt};
  if (!moment.day.isValid()) return std::nullopt;
  if (match.capturedLength(u"hour") == 0) return moment;
  const QTime time(number(u"hour"), number(u"minute"), number(u"second"));
  if (!time.isValid()) return std::nullopt;
  moment.time = time;
  return moment;
}

std::optional<int> offsetOf(const QString& sign, int hours, int minutes) {
  constexpr int furthest = 18;
  if (hours > furthest || minutes > 59) return std::nullopt;
  const int offset = hours * secondsPerHour + minutes * secondsPerMinute;
  return sign == u"-" ? -offset : offset;
}

int offsetIn(const TimeZone& zone, Date date) {
  return zone.secondsFromUTC(static_cast<qint64>(date.timeIntervalSince1970()));
}

// The user's zone where it is that far from UTC then, else one that always is: there are such of whole hours.
QString zoneWithOffset(int offset, Date date) {
  const TimeZone own = TimeZone::systemTimeZone();
  if (offsetIn(own, date) == offset) return own.name();
  if (offset == 0) return u"Etc/UTC"_s;
  // Their names count to the west.
  const QString name = u"Etc/GMT%1%2"_s.arg(QChar(offset > 0 ? u'-' : u'+')).arg(qAbs(offset) / secondsPerHour);
  return offset % secondsPerHour == 0 && TimeZone::timeZoneWithName(name) ? name : own.name();
}

}  // namespace

std::optional<WrittenMoment> WrittenMoment::fromText(const QString& text) {
  static const QRegularExpression pattern(
      u"^(?<year>\\d{4})-(?<month>\\d{1,2})-(?<day>\\d{1,2})"
      "(?:(?:[Tt]|\\s{1,9})(?<hour>\\d{1,2}):(?<minute>\\d{2})(?::(?<second>\\d{2})(?:\\.\\d{1,9})?)?"
      "\\s{0,9}(?:(?<utc>[Zz])|(?<sign>[+-])(?<east>\\d{1,2})(?::?(?<more>\\d{2}))?)?)?$"_s);
  const auto match = pattern.match(text.trimmed());
  auto moment = match.hasMatch() ? momentOf(match) : std::nullopt;
  if (!moment) return std::nullopt;
  if (match.capturedLength(u"utc") > 0) moment->offset = 0;
  if (match.capturedLength(u"sign") == 0) return moment;
  moment->offset = offsetOf(match.captured(u"sign"), match.captured(u"east").toInt(), match.captured(u"more").toInt());
  return moment->offset ? moment : std::nullopt;
}

std::optional<WrittenMoment> WrittenMoment::inFileName(const QString& name) {
  static const QRegularExpression pattern(
      u"(?<!\\d)(?<year>\\d{4})(?<dash>[-_.]?)(?<month>\\d{2})\\k<dash>(?<day>\\d{2})"
      "(?:[ T_-]{1,3}(?<hour>[01]\\d|2[0-3])[:.hH_-]?(?<minute>[0-5]\\d)(?:[:._-]?(?<second>[0-5]\\d))?(?!\\d))?(?!\\d)"_s);
  auto matches = pattern.globalMatch(name);
  // Bounded by the length of the name.
  while (matches.hasNext())
    if (const auto moment = momentOf(matches.next())) return moment;
  return std::nullopt;
}

std::optional<ZonedDate> zonedDate(const WrittenMoment& moment, const QString& zoneName) {
  const auto told = TimeZone::timeZoneWithName(zoneName);
  const QTime time = moment.time.value_or(QTime(12, 0));
  if (!moment.offset) {
    const Calendar calendar(told.value_or(TimeZone::systemTimeZone()));
    const auto date = calendar.dateOfReading(moment.day, time);
    return date ? std::optional(ZonedDate{*date, calendar.timeZone().name()}) : std::nullopt;
  }
  const QDateTime reading(moment.day, time, Qt::UTC);
  const Date date = Date::since1970(static_cast<double>(reading.toSecsSinceEpoch() - *moment.offset));
  if (!date.toDateTime().isValid()) return std::nullopt;
  return ZonedDate{date, told ? zoneName : zoneWithOffset(*moment.offset, date)};
}

}  // namespace quillo
