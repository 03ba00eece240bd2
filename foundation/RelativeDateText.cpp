#include "foundation/RelativeDateText.h"

#include <unicode/udat.h>
#include <unicode/udatpg.h>
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

// As an item of a menu begins. Null where the library cannot.
static Format formatInStyles(UDateFormatStyle timeStyle, UDateFormatStyle dateStyle, const QByteArray& locale,
                             const QString& zone) {
  UErrorCode status = U_ZERO_ERROR;
  Format format(udat_open(timeStyle, dateStyle, locale.constData(), reinterpret_cast<const UChar*>(zone.utf16()),
                          static_cast<int32_t>(zone.size()), nullptr, 0, &status),
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

// "{1} 'at' {0}": how the locale joins a day in words ({1}) to a time ({0}). Nothing where it does not say.
static std::optional<QString> joiningPattern(const QByteArray& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UDateTimePatternGenerator, decltype(&udatpg_close)> patterns(
      udatpg_open(locale.constData(), &status), &udatpg_close);
  int32_t length = 0;
  const UChar* pattern =
      U_SUCCESS(status) ? udatpg_getDateTimeFormatForStyle(patterns.get(), UDAT_LONG, &length, &status) : nullptr;
  if (U_FAILURE(status) || !pattern) return std::nullopt;
  return QString::fromUtf16(pattern, length);
}

// In the pattern a letter of its own stands in quotes, and a quote twice.
static QString joined(const QString& pattern, const QString& day, const QString& time) {
  QString text;
  for (qsizetype i = 0; i < pattern.size(); ++i) {
    const auto rest = QStringView(pattern).mid(i);
    if (rest.startsWith(u"{0}") || rest.startsWith(u"{1}")) {
      text += rest[1] == u'1' ? day : time;
      i += 2;
    } else if (rest.startsWith(u"''")) {
      text += pattern[i++];
    } else if (pattern[i] != u'\'') {
      text += pattern[i];
    }
  }
  return text;
}

QString relativeDateText(Date date, const Calendar& calendar, const QLocale& locale) {
  if (!date.toDateTime().isValid()) return {};
  const QString zone = fixedZone(date, calendar);
  const QByteArray name = locale.name().toLatin1();
  const auto day = formatted(formatInStyles(UDAT_NONE, UDAT_SHORT, name, zone), date);
  const auto relativeDay = formatted(formatInStyles(UDAT_NONE, UDAT_SHORT_RELATIVE, name, zone), date);
  if (day && relativeDay && *day != *relativeDay) {
    // A day that has a word is joined to its time by words, too: "Today at 21:00", not "Today, 21:00".
    const auto time = formatted(formatInStyles(UDAT_SHORT, UDAT_NONE, name, zone), date);
    const auto pattern = joiningPattern(name);
    if (time && pattern) return joined(*pattern, *relativeDay, *time);
  }
  return formatted(formatInStyles(UDAT_SHORT, UDAT_SHORT_RELATIVE, name, zone), date).value_or(date.toISO8601());
}

}  // namespace quillo
