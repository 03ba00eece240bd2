#include "journal/printing/PrintedEntry.h"

#include "journal/model/ClockTime.h"
#include "qlcore/EntryTime.h"

#include <QStringList>

namespace quillo {

using namespace Qt::StringLiterals;

PrintedEntry printedEntry(const IndexedEntry& entry, const QLocale& locale,
                          const std::function<QString(const QLWeather&)>& weatherText) {
  const QDateTime time = localTime(entry.creationDate, entry.timeZone);
  QStringList details{clockTime(time.time(), locale)};
  if (entry.location && !entry.location->placeName.isEmpty()) details << entry.location->placeName;
  if (entry.weather) details << weatherText(*entry.weather);
  return {locale.toString(time.date(), QLocale::LongFormat), details.join(u" · "_s), entry.text};
}

}  // namespace quillo
