#include "app/switches/LoginItem.h"
#include "app/switches/RemindersManager.h"
#include "config/Keys.h"
#include "foundation/Calendar.h"
#include "foundation/PropertyListJson.h"
#include "quilloctl/Command.h"
#include "quilloctl/Moment.h"
#include "quilloctl/ReminderText.h"
#include "reminders/ReminderBatch.h"
#include "reminders/ReminderInterval.h"
#include "reminders/ReminderRule.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

struct Words {
  std::string every, from, until, starting, zone, after;
  int count{1};
  bool batch{false};
};

// "today 12:00", "tomorrow 09:00", else with the date, in the current zone.
QString moment(Date date) {
  const QDateTime local = date.toDateTime().toLocalTime();
  const qint64 days = QDate::currentDate().daysTo(local.date());
  const QString day = days == 0 ? u"today"_s : days == 1 ? u"tomorrow"_s : local.date().toString(Qt::ISODate);
  return day + u' ' + local.time().toString(u"HH:mm"_s);
}

QJsonArray json(const QList<Date>& dates) {
  QJsonArray array;
  for (const Date date : dates) array << date.toISO8601();
  return array;
}

// "Every 3 hours between 09:00 and 17:00, next: today 12:00".
QString inWords(const ReminderInterval& interval) {
  const auto next = nextReminders(interval, Date::now(), 1);
  return reminderInWords(interval) + u", next: "_s + (next.isEmpty() ? u"never"_s : moment(next[0]));
}

// A sound only goes with one of these.
constexpr QLatin1StringView ways[] = {Key::remindersOpenMenuBar, Key::remindersSendToNotificationCenter};

bool isOn(const PersistentPropertyList& list, QLatin1StringView way) {
  const auto value = list.valueForKey(way);
  return value && value->boolValue();
}

// A reminder that nobody would notice; quietly nothing where there is a way.
void tellMissingDelivery(const PersistentPropertyList& list) {
  if (std::any_of(std::begin(ways), std::end(ways), [&list](auto way) { return isOn(list, way); })) return;
  print(u"No way of delivery is on, so reminders pass unnoticed. To open the window, or show a notification:"_s);
  for (const auto way : ways) print(u"  quilloctl settings set %1 yes"_s.arg(way));
}

int show(Context& context) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const auto interval = ReminderInterval::reminderIntervalFromUserDefaults(*list);
  if (context.json) {
    QJsonObject object;
    for (const auto key : {Key::remindersFrequency, Key::remindersInterval, Key::remindersBaseDate,
                           Key::remindersBaseDateTimezone, Key::remindersValidPeriod})
      if (const auto value = list->valueForKey(key)) object[key] = jsonFromPropertyList(*value);
    object[Key::remindersEnabled] = context.remindersManager().remindersAreEnabled();
    for (const auto way : ways) object[way] = isOn(*list, way);
    object[u"next"_s] = json(nextReminders(interval, Date::now(), 3));
    printJson(object);
    return Done;
  }
  if (interval.intervalValue() == 0 || !interval.baseDate()) return failed(u"no reminder is set"_s);
  // The manager knows that they are on where nobody has said otherwise yet.
  const bool enabled = context.remindersManager().remindersAreEnabled();
  print(inWords(interval) + (enabled ? QString() : u" (reminders are off)"_s));
  tellMissingDelivery(*list);
  return Done;
}

// The rule that the words describe; nothing, with the reason said.
std::optional<ReminderInterval> intervalFromWords(const Words& words) {
  const auto wrong = [](const QString& reason) -> std::optional<ReminderInterval> {
    failed(reason);
    return std::nullopt;
  };
  const QString every = QString::fromStdString(words.every);
  const auto step = stepFromText(every);
  if (!step) return wrong(notAStep(every));
  const QString zone = QString::fromStdString(words.zone);
  const auto calendar = zone.isEmpty() ? std::optional(Calendar::currentCalendar()) : Calendar::withTimeZoneName(zone);
  if (!calendar) return wrong(u"there is no time zone \"%1\""_s.arg(zone));

  const QString starting = QString::fromStdString(words.starting);
  auto base = starting.isEmpty() ? std::optional(Date::now()) : momentFromText(starting, *calendar);
  if (!base) return wrong(u"\"%1\" is no date; one is 2014-03-10T21:00"_s.arg(starting));

  ReminderRule rule{.count = step->count, .unit = step->unit, .starting = *base, .calendar = *calendar};
  if (!words.from.empty()) {
    if (!isClockStep(static_cast<quint64>(step->unit)))
      return wrong(u"--from and --until are for steps of hours and minutes"_s);
    const auto from = timeOfDayFromText(QString::fromStdString(words.from));
    const auto until = timeOfDayFromText(QString::fromStdString(words.until));
    if (!from || !until || *until <= *from)
      return wrong(u"--from and --until take times such as 09:00 and 17:00, the earlier first"_s);
    rule.window = DailyWindow{*from, *until};
  }
  const auto interval = rule.interval();
  return interval ? interval : wrong(u"\"%1\" is out of the calendar's range"_s.arg(starting));
}

int set(Context& context, const Words& words) {
  const auto interval = intervalFromWords(words);
  PersistentPropertyList* list = interval ? sharedList(context) : nullptr;
  if (!list) return Failed;
  interval->writeToUserDefaults(*list);
  if (!isSaved(*list, u"the reminder"_s)) return Failed;
  context.post(Notice::reminderSettingsDidChange);
  return show(context);
}

int turn(Context& context, bool on) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  // Before the managers, which would make a login item and start the agent for a setting that was not saved.
  const QString what = u"the setting"_s;
  list->setBoolForKey(on, Key::remindersEnabled);
  if (on) list->setBoolForKey(true, Key::agentEnabled);
  if (!isSaved(*list, what)) return Failed;
  const Session session = context.session();
  // Reminders need the agent: this enables it, too.
  context.remindersManager().setRemindersAreEnabled(on);
  if (!isSaved(*list, what)) return Failed;
  if (const LoginItem item(Identifier::agent, session.loginItemServices); on && !item.existsAsLoginItem())
    return failed(u"reminders are on, but the agent could not be made a login item: "_s + item.errorString());
  if (context.json)
    printJson(QJsonObject{{Key::remindersEnabled, on}});
  else if (on)
    tellMissingDelivery(*list);
  return Done;
}

// A line in, a line out, until the input ends or nobody takes the answers.
int batch() {
  char* line = nullptr;
  size_t capacity = 0;
  for (ssize_t length = 0; std::ferror(stdout) == 0 && (length = ::getline(&line, &capacity, stdin)) >= 0;) {
    if (length > 0 && line[length - 1] == '\n') --length;
    print(QString::fromUtf8(answerBatchLine(QByteArray::fromRawData(line, length))));
  }
  const int error = errno;
  std::free(line);
  if (std::feof(stdin) != 0 || std::ferror(stdout) != 0) return Done;
  return failed(u"the standard input cannot be read - "_s + QString::fromLocal8Bit(std::strerror(error)));
}

int next(Context& context, const Words& words) {
  if (words.batch) return batch();
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const QString text = QString::fromStdString(words.after);
  const auto after = text.isEmpty() ? std::optional(Date::now()) : momentFromText(text, Calendar::currentCalendar());
  if (!after) return failed(u"\"%1\" is no date; one is 2014-03-10T21:00"_s.arg(text));
  const auto interval = ReminderInterval::reminderIntervalFromUserDefaults(*list);
  const auto dates = nextReminders(interval, *after, words.count);
  if (context.json) {
    printJson(json(dates));
    return Done;
  }
  if (dates.isEmpty()) return failed(u"there is no next reminder"_s);
  for (const Date date : dates) print(date.toISO8601());
  return Done;
}

}  // namespace

void addReminderCommand(CLI::App& program, Action& action) {
  const auto words = std::make_shared<Words>();
  CLI::App* reminder = program.add_subcommand("reminder", "Show and change when the journal reminds");
  reminder->require_subcommand(1);
  reminder->add_subcommand("show", "Print the rule in words and the next reminder")->callback([&action] {
    action = show;
  });

  CLI::App* setter = reminder->add_subcommand("set", "Save a rule and tell the running agent");
  setter->add_option("--every", words->every, "The step: \"3 hours\", \"day\", \"2 weeks\"")->required();
  CLI::Option* from = setter->add_option("--from", words->from, "When the daily window begins, for hours and minutes");
  CLI::Option* until = setter->add_option("--until", words->until, "When it ends")->needs(from);
  from->needs(until);
  setter->add_option("--starting", words->starting, "The first reminder, 2014-03-10T21:00 in the zone; else now");
  setter->add_option("--zone", words->zone, "The time zone of these times; else the system's");
  setter->callback([&action, words] { action = [words](Context& context) { return set(context, *words); }; });

  reminder->add_subcommand("on", "Switch reminders on, and with them the agent")->callback([&action] {
    action = [](Context& context) { return turn(context, true); };
  });
  reminder->add_subcommand("off", "Switch reminders off")->callback([&action] {
    action = [](Context& context) { return turn(context, false); };
  });

  CLI::App* nexter = reminder->add_subcommand("next", "Print the next reminders, in UTC");
  nexter->add_option("-n", words->count, "How many")->check(CLI::Range(1, 1000));
  nexter->add_option("--after", words->after, "The first after this time; else now");
  nexter->add_flag("--batch", words->batch, "Answer one JSON object a line from the standard input");
  nexter->callback([&action, words] { action = [words](Context& context) { return next(context, *words); }; });
}

}  // namespace quillo::ctl
