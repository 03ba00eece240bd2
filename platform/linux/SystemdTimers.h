#pragma once

#include "platform/CommandSchedule.h"

#include <QDBusMessage>
#include <QVariantList>

namespace quillo {

// Scheduled commands as timers of the user's systemd: NAME.timer and NAME.service among the user's own units, and the
// link that starts the timer with the session. The manager is told over the session bus.
class SystemdTimers final : public CommandSchedule {
 public:
  // `configurationFolder` is ~/.config, or what stands for it. Where that is of another home than the session's, whose
  // manager never looks there, nobody is told.
  SystemdTimers(const QString& configurationFolder, bool isOfSession);

  Outcome enable(const ScheduledCommand& command, QString* reason) override;
  bool disable(const QString& name, QString* reason) override;
  [[nodiscard]] bool isEnabled(const QString& name) const override;
  [[nodiscard]] std::optional<QDateTime> next(const QString& name) const override;
  [[nodiscard]] QString crontabLine(const ScheduledCommand& command) const override;

 private:
  [[nodiscard]] QString linkOf(const QString& name) const;
  // An answer of the manager, or an error.
  [[nodiscard]] QDBusMessage ask(const QString& method, const QVariantList& arguments) const;
  bool tell(const QString& method, const QVariantList& arguments, QString* reason) const;

  QString m_folder;  // of the user's units
  bool m_isOfSession;
};

}  // namespace quillo
