#include "quilloctl/Moment.h"

#include "qlcore/index/QuestionDates.h"

#include <QDateTime>

namespace quillo::ctl {

std::optional<Date> momentFromText(const QString& text, const Calendar& calendar) {
  if (const auto date = Date::fromISO8601(text)) return date;
  const QDateTime reading = QDateTime::fromString(text.trimmed(), Qt::ISODate);
  if (!reading.isValid()) return std::nullopt;
  DateComponents components;
  components.year = reading.date().year();
  components.month = reading.date().month();
  components.day = reading.date().day();
  components.hour = reading.time().hour();
  components.minute = reading.time().minute();
  components.second = reading.time().second();
  return calendar.dateFromComponents(components);
}

std::optional<Date> momentOfDayFromText(const QString& text, QDate today, const Calendar& calendar) {
  const auto days = daysMeant(text, today);
  if (!days) return momentFromText(text, calendar);
  if (days->first != days->last) return std::nullopt;
  DateComponents components;
  components.year = days->first.year();
  components.month = days->first.month();
  components.day = days->first.day();
  components.hour = 12;
  return calendar.dateFromComponents(components);
}

}  // namespace quillo::ctl
