#pragma once

#include <QLocale>
#include <QTime>

namespace quillo {

// A time of the day in hours and minutes, as the locale writes it.
[[nodiscard]] inline QString clockTime(QTime time, const QLocale& locale) {
  QString format = locale.timeFormat(QLocale::ShortFormat);
  // Some locales have seconds in their short form, too; the separator stands before them.
  const qsizetype seconds = format.indexOf(QLatin1StringView("ss"));
  if (seconds > 0) format.remove(seconds - 1, 3);
  return locale.toString(time, format);
}

}  // namespace quillo
