#include "preferences/model/ReminderChoice.h"

#include "config/Keys.h"
#include "config/PersistentPropertyList.h"
#include "reminders/ReminderInterval.h"

#include <QLocale>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int eveningHour = 21;
constexpr int daysOfWeek = 7;
// More of any unit leads out of the calendar at once.
constexpr quint64 mostUnits = 9999;

QString dayInWords(QDate day, QDate today) {
  const qint64 days = today.daysTo(day);
  if (days == 0) return u"today"_s;
  if (days == 1) return u"tomorrow"_s;
  // The language of the text around it.
  const QLocale english(QLocale::English);
  if (days > 1 && days < daysOfWeek) return english.dayName(day.dayOfWeek());
  return english.toString(day, day.year() == today.year() ? u"d MMMM"_s : u"d MMMM yyyy"_s);
}

}  // namespace

ReminderChoice ReminderChoice::suggested(Date now) {
  ReminderChoice choice;
  const Calendar calendar = Calendar::currentCalendar();
  auto evening = calendar.componentsFromDate(CalendarUnit::Year | CalendarUnit::Month | CalendarUnit::Day, now);
  if (evening) evening->hour = eveningHour;
  choice.rule.calendar = calendar;
  choice.rule.starting = (evening ? calendar.dateFromComponents(*evening) : std::nullopt).value_or(now);
  return choice;
}

ReminderChoice ReminderChoice::ofSettings(const PersistentPropertyList& list, bool isOn) {
  ReminderChoice choice = suggested(Date::now());
  choice.isOn = isOn;
  // The suggestion is whole: a rule whose reminders nobody notices is none.
  if (!hasReminderRule(list)) return choice;
  if (const auto rule = ReminderRule::ofInterval(ReminderInterval::reminderIntervalFromUserDefaults(list)))
    choice.rule = *rule;
  choice.opensWindow = list.boolForKey(Key::remindersOpenMenuBar);
  choice.notifies = list.boolForKey(Key::remindersSendToNotificationCenter);
  choice.playsSound = list.boolForKey(Key::remindersPlaySound);
  return choice;
}

bool hasReminderRule(const PersistentPropertyList& list) {
  const auto interval = ReminderInterval::reminderIntervalFromUserDefaults(list);
  return interval.intervalValue() != 0 && interval.baseDate() && interval.baseCalendar();
}

QString ReminderChoice::problem() const {
  if (rule.count == 0 || rule.count > mostUnits) return u"A number from 1 to %1 is needed."_s.arg(mostUnits);
  const bool hasWindow = rule.window && isClockStep(static_cast<quint64>(rule.unit));
  if (hasWindow && rule.window->until <= rule.window->from) return u"The second time has to be later than the first."_s;
  if (!rule.interval()) return u"This date is out of the calendar's range."_s;
  return {};
}

QString ReminderChoice::inWords() const {
  const auto interval = rule.interval();
  if (!interval) return {};
  return reminderInWords(*interval, u", from %1 to %2"_s) + u'.';
}

QList<Date> ReminderChoice::next(Date after, int count) const {
  const auto interval = problem().isEmpty() ? rule.interval() : std::nullopt;
  return interval ? nextReminders(*interval, after, count) : QList<Date>();
}

QString datesInWords(const QList<Date>& dates, QDate today) {
  QStringList words;
  QDate before;
  for (const Date date : dates) {
    const QDateTime local = date.toDateTime().toLocalTime();
    const QString day = local.date() == before ? QString() : dayInWords(local.date(), today) + u' ';
    words << day + local.time().toString(u"HH:mm"_s);
    before = local.date();
  }
  return words.join(u" · "_s);
}

}  // namespace quillo
