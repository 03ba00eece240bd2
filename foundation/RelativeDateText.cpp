#include "foundation/RelativeDateText.h"

#include <unicode/udat.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace quillo {

using namespace Qt::StringLiterals;

// A fixed offset, "GMT+01:00": the packaged library's own zone rules are years behind the system's.
static QString fixedZone(Date date, const Calendar& calendar) {
  const int seconds = calendar.timeZone().secondsFromUTC(static_cast<qint64>(std::floor(date.timeIntervalSince1970())));
  const int minutes = std::abs(seconds) / 60;
  return u"GMT%1%2:%3"_s.arg(seconds < 0 ? u"-"_s : u"+"_s)
      .arg(minutes / 60, 2, 10, QChar(u'0'))
      .arg(minutes % 60, 2, 10, QChar(u'0'));
}

QString relativeDateText(Date date, const Calendar& calendar, const QLocale& locale) {
  if (!date.toDateTime().isValid()) return {};
  const QString zone = fixedZone(date, calendar);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UDateFormat, decltype(&udat_close)> format(
      udat_open(UDAT_SHORT, UDAT_SHORT_RELATIVE, locale.name().toLatin1().constData(),
                reinterpret_cast<const UChar*>(zone.utf16()), static_cast<int32_t>(zone.size()), nullptr, 0, &status),
      &udat_close);
  std::array<UChar, 256> text{};
  const int32_t length = U_SUCCESS(status) ? udat_format(format.get(), date.timeIntervalSince1970() * 1000, text.data(),
                                                         static_cast<int32_t>(text.size()), nullptr, &status)
                                           : 0;
  if (U_FAILURE(status) || length > static_cast<int32_t>(text.size())) return date.toISO8601();
  return QString::fromUtf16(text.data(), length);
}

}  // namespace quillo
