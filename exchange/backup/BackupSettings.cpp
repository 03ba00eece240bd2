#include "exchange/backup/BackupSettings.h"

#include "config/Keys.h"
#include "config/PersistentPropertyList.h"
#include "config/Settings.h"

#include <algorithm>
#include <limits>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

qint64 numberFor(const PersistentPropertyList* list, QLatin1StringView key, qint64 least, qint64 largest) {
  const auto value = settingValue(list, key);
  if (value && value->isNumber() && value->integerValue() >= least && value->integerValue() <= largest)
    return value->integerValue();
  return settingValue(nullptr, key).value_or(PropertyListValue(qint64{0})).integerValue();
}

}  // namespace

BackupSettings BackupSettings::of(const PersistentPropertyList* list) {
  BackupSettings settings;
  const auto isOn = settingValue(list, Key::autoBackupEnabled);
  settings.isEnabled = isOn && isOn->boolValue();
  const auto unit = static_cast<CalendarUnit>(numberFor(list, Key::autoBackupFrequency, 0, 1 << 20));
  if (std::ranges::find(units, unit) != units.end()) settings.unit = unit;
  settings.interval = static_cast<int>(numberFor(list, Key::autoBackupInterval, 1, largestInterval));
  settings.most = static_cast<int>(numberFor(list, Key::autoBackupMaxCount, 0, std::numeric_limits<int>::max()));
  return settings;
}

QString BackupSettings::inWords() const {
  QString name = u"day"_s;
  if (unit == CalendarUnit::Hour) name = u"hour"_s;
  if (unit == CalendarUnit::Week) name = u"week"_s;
  if (unit == CalendarUnit::Month) name = u"month"_s;
  return interval == 1 ? u"every "_s + name : u"every %1 %2s"_s.arg(QString::number(interval), name);
}

bool BackupSettings::isDue(const QDateTime& last, const QDateTime& now) const {
  // A clock that was set back must not stop backups until it has caught up.
  if (!last.isValid() || last > now) return true;
  constexpr qint64 halfAnHour = 1800;
  constexpr qint64 halfADay = 12 * 3600;
  switch (unit) {
    case CalendarUnit::Hour:
      return last.addSecs(qint64{interval} * 3600 - halfAnHour) <= now;
    case CalendarUnit::Week:
      return last.addDays(qint64{interval} * 7).addSecs(-halfADay) <= now;
    case CalendarUnit::Month:
      return last.addMonths(interval).addSecs(-halfADay) <= now;
    default:
      return last.addDays(interval).addSecs(-halfADay) <= now;
  }
}

}  // namespace quillo
