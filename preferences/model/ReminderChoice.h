#pragma once

#include "reminders/ReminderRule.h"

#include <QDate>
#include <QList>
#include <QString>

namespace quillo {

class PersistentPropertyList;

// What a person decides about reminders: whether, when, and how they come.
struct ReminderChoice {
  bool isOn{false};
  ReminderRule rule;
  bool opensWindow{true};
  bool notifies{true};
  bool playsSound{false};

  // What the settings say; `isOn` is the reminders' manager's to know. Where they have no rule that could be shown, the
  // suggested one stands in for it.
  [[nodiscard]] static ReminderChoice ofSettings(const PersistentPropertyList& list, bool isOn);
  // Every evening, from the day of `now` on.
  [[nodiscard]] static ReminderChoice suggested(Date now);

  // Why it cannot be saved, in one sentence; empty for one that can.
  [[nodiscard]] QString problem() const;
  // "Every 3 hours, from 09:00 to 17:00."
  [[nodiscard]] QString inWords() const;
  // The next reminders after `after`.
  [[nodiscard]] QList<Date> next(Date after, int count) const;

  bool operator==(const ReminderChoice&) const = default;
};

// Whether the settings have a rule that gives reminders.
[[nodiscard]] bool hasReminderRule(const PersistentPropertyList& list);

// "today 15:00 · tomorrow 09:00 · 12:00 · Friday 09:00", in the system's time zone; a day is said once.
[[nodiscard]] QString datesInWords(const QList<Date>& dates, QDate today);

}  // namespace quillo
