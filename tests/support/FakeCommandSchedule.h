#pragma once

#include "platform/CommandSchedule.h"

#include <QList>

namespace quillo {

// Remembers what it is asked for, and answers as a test wants.
struct FakeCommandSchedule : CommandSchedule {
  Outcome enable(const ScheduledCommand& command, QString* reason) override {
    enabled << command;
    if (outcome != Outcome::Active) *reason = QStringLiteral("nobody answers");
    isOn = outcome != Outcome::Failed;
    return outcome;
  }
  bool disable(const QString&, QString*) override {
    isOn = false;
    return true;
  }
  [[nodiscard]] bool isEnabled(const QString&) const override { return isOn; }
  [[nodiscard]] std::optional<QDateTime> next(const QString&) const override {
    return isOn ? std::optional(QDateTime::currentDateTime().addDays(1)) : std::nullopt;
  }
  [[nodiscard]] QString crontabLine(const ScheduledCommand& command) const override { return command.program; }

  QList<ScheduledCommand> enabled;
  Outcome outcome{Outcome::Active};
  bool isOn{false};
};

}  // namespace quillo
