#include "qlcore/index/QuestionDates.h"

#include <QStringList>

#include <algorithm>
#include <array>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

bool areDigits(QStringView text) {
  return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

std::optional<DaySpan> span(QDate first, QDate last) {
  const auto isInRange = [](QDate day) { return day.isValid() && day.year() >= 1 && day.year() <= 9999; };
  if (!isInRange(first) || !isInRange(last)) return std::nullopt;
  return DaySpan{first, last};
}

std::optional<DaySpan> month(QDate day) {
  const QDate first(day.year(), day.month(), 1);
  return span(first, first.addMonths(1).addDays(-1));
}

std::optional<DaySpan> year(QDate day) {
  return span(QDate(day.year(), 1, 1), QDate(day.year(), 12, 31));
}

std::optional<DaySpan> week(QDate day) {
  const QDate monday = day.addDays(1 - day.dayOfWeek());
  return span(monday, monday.addDays(6));
}

// 2025, 2025-03 or 2025-03-10.
std::optional<DaySpan> isoDays(const QString& text) {
  const QStringList parts = text.split(u'-');
  if (parts.size() > 3 || parts[0].size() != 4) return std::nullopt;
  for (const QString& part : parts)
    if (!areDigits(part) || part.size() > 4 || (&part != &parts[0] && part.size() > 2)) return std::nullopt;
  const int yearNumber = parts[0].toInt();
  if (parts.size() == 1) return year(QDate(yearNumber, 1, 1));
  const QDate first(yearNumber, parts[1].toInt(), parts.size() == 3 ? parts[2].toInt() : 1);
  if (!first.isValid()) return std::nullopt;
  return parts.size() == 3 ? span(first, first) : month(first);
}

std::optional<int> weekdayNumber(const QString& word) {
  static constexpr std::array names{QStringView(u"monday"),   QStringView(u"tuesday"), QStringView(u"wednesday"),
                                    QStringView(u"thursday"), QStringView(u"friday"),  QStringView(u"saturday"),
                                    QStringView(u"sunday")};
  for (size_t i = 0; i < names.size(); ++i)
    if (word == names.at(i) || (word.size() == 3 && names.at(i).startsWith(word))) return static_cast<int>(i) + 1;
  return std::nullopt;
}

QDate latestWeekday(int weekday, QDate from) {
  return from.addDays(-((from.dayOfWeek() - weekday + 7) % 7));
}

// "3 weeks ago"
std::optional<DaySpan> daysAgo(const QString& number, const QString& unit, QDate today) {
  const bool isOne = number == u"a" || number == u"an" || number == u"one";
  // More digits than any number of days in the calendar has.
  if (!isOne && (!areDigits(number) || number.size() > 7)) return std::nullopt;
  const int count = isOne ? 1 : number.toInt();
  QDate day;
  if (unit == u"day" || unit == u"days") day = today.addDays(-qint64{count});
  if (unit == u"week" || unit == u"weeks") day = today.addDays(-qint64{7} * count);
  if (unit == u"month" || unit == u"months") day = today.addMonths(-count);
  if (unit == u"year" || unit == u"years") day = today.addYears(-count);
  return span(day, day);
}

std::optional<DaySpan> pairMeant(const QString& which, const QString& unit, QDate today) {
  const bool isLast = which == u"last";
  if (!isLast && which != u"this") return std::nullopt;
  if (unit == u"week") return week(today.addDays(isLast ? -7 : 0));
  if (unit == u"month") return month(today.addMonths(isLast ? -1 : 0));
  if (unit == u"year") return year(today.addYears(isLast ? -1 : 0));
  const auto weekday = weekdayNumber(unit);
  if (!weekday || !isLast) return std::nullopt;
  const QDate day = latestWeekday(*weekday, today.addDays(-1));
  return span(day, day);
}

}  // namespace

std::optional<DaySpan> daysMeant(const QString& words, QDate today) {
  if (const auto days = isoDays(words.trimmed())) return days;
  QString spaced = words.toLower();
  spaced.replace(u'-', u' ').replace(u'_', u' ');
  const QStringList parts = spaced.simplified().split(u' ');
  if (parts.size() == 1) {
    if (parts[0] == u"today") return span(today, today);
    if (parts[0] == u"yesterday") return span(today.addDays(-1), today.addDays(-1));
    const auto weekday = weekdayNumber(parts[0]);
    if (!weekday) return std::nullopt;
    const QDate day = latestWeekday(*weekday, today);
    return span(day, day);
  }
  if (parts.size() == 2) return pairMeant(parts[0], parts[1], today);
  if (parts.size() == 3 && parts[2] == u"ago") return daysAgo(parts[0], parts[1], today);
  return std::nullopt;
}

}  // namespace quillo
