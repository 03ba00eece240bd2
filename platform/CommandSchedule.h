#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// A command that the session runs by itself again and again, whether or not a program of ours runs; once, as soon as it
// can, where it was off at the time.
struct ScheduledCommand {
  enum class Every { Hour, Day, Week, Month };

  QString name;         // that it is known by: letters, digits and "-"
  QString description;  // for people, one line
  QString program;      // absolute path; where it is missing one day, nothing happens
  QStringList arguments;
  Every every{Every::Day};
};

// The session's service for that. Main thread only; a call may take a few seconds where the session does not answer.
class CommandSchedule {
 public:
  enum class Outcome {
    Active,   // the session has it
    Written,  // it is written down where the session would find it, which did not take notice, for the reason given
    Failed,   // for the reason given
  };

  virtual ~CommandSchedule() = default;

  // Puts the command there, or in the place of the one of that name. `reason` is one line.
  virtual Outcome enable(const ScheduledCommand& command, QString* reason) = 0;
  // Takes it away; false where that fails. One that is not there is away.
  virtual bool disable(const QString& name, QString* reason) = 0;
  [[nodiscard]] virtual bool isEnabled(const QString& name) const = 0;
  // When the session runs it next; nothing where it does not, or does not say.
  [[nodiscard]] virtual std::optional<QDateTime> next(const QString& name) const = 0;
  // The line of a crontab that does the same, for a session without such a service.
  [[nodiscard]] virtual QString crontabLine(const ScheduledCommand& command) const = 0;
};

}  // namespace quillo
