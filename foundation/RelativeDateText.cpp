#include "foundation/RelativeDateText.h"

#include <unicode/udat.h>
#include <unicode/udisplaycontext.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>

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

using Format = std::unique_ptr<UDateFormat, decltype(&udat_close)>;

// With times in the short style, as an item of a menu begins. Null where the library cannot.
static Format formatInStyle(UDateFormatStyle dateStyle, const QLocale& locale, const QString& zone) {
  UErrorCode status = U_ZERO_ERROR;
  Format format(
      udat_open(UDAT_SHORT, dateStyle, locale.name().toLatin1().constData(),
                reinterpret_cast<const UChar*>(zone.utf16()), static_cast<int32_t>(zone.size()), nullptr, 0, &status),
      &udat_close);
  if (U_FAILURE(status)) return Format(nullptr, &udat_close);
  udat_setContext(format.get(), UDISPCTX_CAPITALIZATION_FOR_UI_LIST_OR_MENU, &status);
  return format;
}

static std::optional<QString> formatted(const Format& format, Date date) {
  if (!format) return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  std::array<UChar, 256> text{};
  const int32_t length = udat_format(format.get(), date.timeIntervalSince1970() * 1000, text.data(),
                                     static_cast<int32_t>(text.size()), nullptr, &status);
  if (U_FAILURE(status) || length > static_cast<int32_t>(text.size())) return std::nullopt;
  return QString::fromUtf16(text.data(), length);
}

QString relativeDateText(Date date, const Calendar& calendar, const QLocale& locale) {
  if (!date.toDateTime().isValid()) return {};
  const QString zone = fixedZone(date, calendar);
  const auto plain = formatted(formatInStyle(UDAT_SHORT, locale, zone), date);
  const auto relative = formatted(formatInStyle(UDAT_SHORT_RELATIVE, locale, zone), date);
  // A day that has a word is joined to its time in words, too: "Today at 21:00", not "Today, 21:00".
  if (plain && relative && *plain != *relative)
    return formatted(formatInStyle(UDAT_LONG_RELATIVE, locale, zone), date).value_or(*relative);
  return plain.value_or(date.toISO8601());
}

}  // namespace quillo
