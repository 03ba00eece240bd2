#include "quilloctl/Moment.h"

#include "qlcore/index/QuestionDates.h"

#include <QDateTime>

namespace quillo::ctl {

std::optional<Date> momentFromText(const QString& text, const Calendar& calendar) {
  if (const auto date = Date::fromISO8601(text)) return date;
  const QDateTime reading = QDateTime::fromString(text.trimmed(), Qt::ISODate);
  if (!reading.isValid()) return std::nullopt;
  return calendar.dateOfReading(reading.date(), reading.time());
}

std::optional<Date> momentOfDayFromText(const QString& text, QDate today, const Calendar& calendar) {
  const auto days = daysMeant(text, today);
  if (!days) return momentFromText(text, calendar);
  if (days->first != days->last) return std::nullopt;
  return calendar.dateOfReading(days->first, QTime(12, 0));
}

}  // namespace quillo::ctl
