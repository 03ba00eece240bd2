#pragma once

#include "exchange/backup/BackupSettings.h"
#include "platform/CommandSchedule.h"

#include <QString>
#include <QStringList>

namespace quillo {

// Makes the session call for backups as the settings want it. No process of ours wakes for it: the session starts
// quilloctl when it is time.
class BackupSchedule {
 public:
  // `program` is quilloctl's path; `homeArguments` are what it has to be given to use the same home. The schedule must
  // outlive the object.
  BackupSchedule(CommandSchedule& schedule, QString program, QStringList homeArguments)
      : m_schedule(schedule), m_program(std::move(program)), m_homeArguments(std::move(homeArguments)) {}

  enum class Outcome { Off, On, NotStarted, Failed };
  // Of NotStarted and Failed `reason` tells why, in one line; where a line of a crontab helps, with it.
  Outcome apply(const BackupSettings& settings, QString* reason);

  // Nothing where there is none, or the session does not say.
  [[nodiscard]] std::optional<QDateTime> next() const;
  [[nodiscard]] bool isOn() const;

 private:
  [[nodiscard]] ScheduledCommand command(const BackupSettings& settings) const;

  CommandSchedule& m_schedule;
  QString m_program;
  QStringList m_homeArguments;
};

}  // namespace quillo
