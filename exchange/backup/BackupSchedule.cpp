#include "exchange/backup/BackupSchedule.h"

namespace quillo {

using namespace Qt::StringLiterals;

static const QString unitName = u"quillo-backup"_s;

ScheduledCommand BackupSchedule::command(const BackupSettings& settings) const {
  using Every = ScheduledCommand::Every;
  Every every = Every::Day;
  if (settings.unit == CalendarUnit::Hour) every = Every::Hour;
  // Several weeks or months are counted from the last backup, which may be of any day: it is called daily for them.
  if (settings.unit == CalendarUnit::Week && settings.interval == 1) every = Every::Week;
  if (settings.unit == CalendarUnit::Month && settings.interval == 1) every = Every::Month;
  return {unitName, u"Back up Quillo's journal"_s, m_program,
          m_homeArguments + QStringList{u"backup"_s, u"make"_s, u"--scheduled"_s}, every};
}

BackupSchedule::Outcome BackupSchedule::apply(const BackupSettings& settings, QString* reason) {
  if (!settings.isEnabled) return m_schedule.disable(unitName, reason) ? Outcome::Off : Outcome::Failed;
  const ScheduledCommand wanted = command(settings);
  switch (m_schedule.enable(wanted, reason)) {
    case CommandSchedule::Outcome::Active:
      return Outcome::On;
    case CommandSchedule::Outcome::Failed:
      return Outcome::Failed;
    case CommandSchedule::Outcome::Written:
      break;
  }
  if (m_homeArguments.isEmpty())
    *reason += u"; this line in your crontab does the same: "_s + m_schedule.crontabLine(wanted);
  return Outcome::NotStarted;
}

std::optional<QDateTime> BackupSchedule::next() const {
  return m_schedule.next(unitName);
}

bool BackupSchedule::isOn() const {
  return m_schedule.isEnabled(unitName);
}

}  // namespace quillo
