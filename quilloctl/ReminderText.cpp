#include "quilloctl/ReminderText.h"

#include <QRegularExpression>
#include <QTime>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

std::optional<ReminderStep> stepFromText(const QString& text) {
  static const QRegularExpression form(u"^(?:(\\d+)\\s+)?(minute|hour|day|week|month|year)s?$"_s,
                                       QRegularExpression::CaseInsensitiveOption);
  const auto match = form.match(text.simplified());
  if (!match.hasMatch()) return std::nullopt;
  bool ok = true;
  const quint64 count = match.captured(1).isEmpty() ? 1 : match.captured(1).toULongLong(&ok);
  const QString word = match.captured(2).toLower();
  const struct {
    QString word;
    CalendarUnit unit;
  } units[] = {{u"minute"_s, CalendarUnit::Minute}, {u"hour"_s, CalendarUnit::Hour},   {u"day"_s, CalendarUnit::Day},
               {u"week"_s, CalendarUnit::Week},     {u"month"_s, CalendarUnit::Month}, {u"year"_s, CalendarUnit::Year}};
  for (const auto& known : units)
    if (ok && count > 0 && known.word == word) return ReminderStep{count, known.unit};
  return std::nullopt;
}

QString notAStep(const QString& text) {
  return u"\"%1\" is no step; one is \"3 hours\" or \"day\""_s.arg(text);
}

std::optional<int> timeOfDayFromText(const QString& text) {
  const QTime time = QTime::fromString(text, text.size() == 4 ? u"H:mm"_s : u"HH:mm"_s);
  if (!time.isValid()) return std::nullopt;
  return time.hour() * 60 + time.minute();
}

std::optional<ReminderRule> ruleFromText(const QString& text, Date now, QString* reason) {
  const auto wrong = [reason](const QString& why) -> std::optional<ReminderRule> {
    *reason = why;
    return std::nullopt;
  };
  static const QRegularExpression form(
      u"^(?:every\\s+)?(.+?)(?:\\s+at\\s+([0-9:]+)|\\s+(?:from|between)\\s+([0-9:]+)\\s+(?:to|until|and)\\s+([0-9:]+))?$"_s,
      QRegularExpression::CaseInsensitiveOption);
  const auto match = form.match(text.simplified());
  const auto step = match.hasMatch() ? stepFromText(match.captured(1)) : std::nullopt;
  if (!step)
    return wrong(
        u"\"%1\" is no reminder; one is \"every day at 21:00\" or \"every 3 hours from 09:00 to 17:00\""_s.arg(text));
  const Calendar calendar = Calendar::currentCalendar();
  ReminderRule rule{.count = step->count, .unit = step->unit, .starting = now, .calendar = calendar};
  const bool isClock = isClockStep(static_cast<quint64>(step->unit));
  if (!match.captured(2).isEmpty()) {
    if (isClock)
      return wrong(u"\"at\" is for steps of days and more; for hours and minutes it is \"from 09:00 to 17:00\""_s);
    const auto time = timeOfDayFromText(match.captured(2));
    auto day = calendar.componentsFromDate(CalendarUnit::Year | CalendarUnit::Month | CalendarUnit::Day, now);
    if (!time || !day) return wrong(u"\"%1\" is no time of day; one is 21:00"_s.arg(match.captured(2)));
    day->hour = *time / 60;
    day->minute = *time % 60;
    rule.starting = calendar.dateFromComponents(*day).value_or(now);
  } else if (!match.captured(3).isEmpty()) {
    if (!isClock)
      return wrong(u"\"from\" and \"to\" are for steps of hours and minutes; for days it is \"at 21:00\""_s);
    const auto from = timeOfDayFromText(match.captured(3));
    const auto until = timeOfDayFromText(match.captured(4));
    if (!from || !until || *until <= *from)
      return wrong(u"\"from\" and \"to\" take times such as 09:00 and 17:00, the earlier first"_s);
    rule.window = DailyWindow{*from, *until};
  }
  return rule;
}

}  // namespace quillo::ctl
