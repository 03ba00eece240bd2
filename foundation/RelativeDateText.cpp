#include "foundation/RelativeDateText.h"

#include <QRegularExpression>

#include <unicode/udat.h>
#include <unicode/udatpg.h>
#include <unicode/udisplaycontext.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

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

// Null where ICU cannot.
static Format formatInStyles(UDateFormatStyle timeStyle, UDateFormatStyle dateStyle, const QByteArray& locale,
                             const QString& zone, const QString& pattern = {}) {
  UErrorCode status = U_ZERO_ERROR;
  Format format(udat_open(timeStyle, dateStyle, locale.constData(), reinterpret_cast<const UChar*>(zone.utf16()),
                          static_cast<int32_t>(zone.size()), reinterpret_cast<const UChar*>(pattern.utf16()),
                          static_cast<int32_t>(pattern.size()), &status),
                &udat_close);
  if (U_FAILURE(status)) return Format(nullptr, &udat_close);
  // As an item of a menu begins.
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

static QString patternOf(const Format& format) {
  UErrorCode status = U_ZERO_ERROR;
  std::array<UChar, 256> pattern{};
  const int32_t length =
      format ? udat_toPattern(format.get(), 0, pattern.data(), static_cast<int32_t>(pattern.size()), &status) : 0;
  return U_SUCCESS(status) ? QString::fromUtf16(pattern.data(), length) : QString();
}

using Generator = std::unique_ptr<UDateTimePatternGenerator, decltype(&udatpg_close)>;

static Generator generatorOf(const QByteArray& locale) {
  UErrorCode status = U_ZERO_ERROR;
  return {udatpg_open(locale.constData(), &status), &udatpg_close};
}

// The locale's own pattern with these fields.
static QString patternWith(const QString& fields, const QByteArray& locale) {
  UErrorCode status = U_ZERO_ERROR;
  std::array<UChar, 256> pattern{};
  const Generator generator = generatorOf(locale);
  if (!generator) return {};
  const int32_t length = udatpg_getBestPattern(generator.get(), reinterpret_cast<const UChar*>(fields.utf16()),
                                               static_cast<int32_t>(fields.size()), pattern.data(),
                                               static_cast<int32_t>(pattern.size()), &status);
  return U_SUCCESS(status) ? QString::fromUtf16(pattern.data(), length) : QString();
}

// "{1} 'at' {0}": how the locale joins a day ({1}) to a time ({0}).
static QString joiningPattern(UDateFormatStyle style, const QByteArray& locale) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = 0;
  const Generator generator = generatorOf(locale);
  const UChar* pattern =
      generator ? udatpg_getDateTimeFormatForStyle(generator.get(), style, &length, &status) : nullptr;
  return U_SUCCESS(status) && pattern ? QString::fromUtf16(pattern, length) : u"{1}, {0}"_s;
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

namespace {

// How days and times read: the patterns are of the style's locale, what stands in them as a word of the language.
class ReadingStyle {
 public:
  ReadingStyle(const QByteArray& style, const QByteArray& language, QString zone)
      : m_zone(std::move(zone)), m_style(style) {
    const auto languageOf = [](const QByteArray& locale) { return locale.split('_').constFirst(); };
    m_isOneLanguage = languageOf(m_style) == languageOf(language);
    // With the region goes its calendar, such as the Buddhist one.
    m_words = m_isOneLanguage ? m_style : languageOf(language) + m_style.mid(languageOf(m_style).size());
  }

  [[nodiscard]] const QByteArray& words() const { return m_words; }

  [[nodiscard]] std::optional<QString> time(Date date) const {
    const QString own = patternOf(formatInStyles(UDAT_SHORT, UDAT_NONE, m_style, m_zone));
    const bool isOf24Hours = own.contains(u'H') || own.contains(u'k');
    return read(date, own, isOf24Hours ? u"Hm"_s : u"hm"_s);
  }
  [[nodiscard]] std::optional<QString> day(Date date) const {
    return read(date, patternOf(formatInStyles(UDAT_NONE, UDAT_SHORT, m_style, m_zone)), u"yMd"_s);
  }
  // Nothing for a day that has no word.
  [[nodiscard]] std::optional<QString> dayInWords(Date date) const {
    const auto relative = formatted(formatInStyles(UDAT_NONE, UDAT_SHORT_RELATIVE, m_words, m_zone), date);
    return relative == formatted(formatInStyles(UDAT_NONE, UDAT_SHORT, m_words, m_zone), date) ? std::nullopt
                                                                                               : relative;
  }

 private:
  // The style's own pattern where it is of the same language, or one of numbers once a word at its end ("21:00 ч.") and
  // the marks that keep Arabic numbers in order are away. Otherwise the language's with the same fields: "PM 9:00" is
  // no English.
  [[nodiscard]] std::optional<QString> read(Date date, QString pattern, const QString& fields) const {
    static const QRegularExpression foreign(u"\\s*'[^']*'\\.?$|\u200F"_s,
                                            QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression numbers(u"^[GyMdHhkKm./: -]+$"_s);
    if (!m_isOneLanguage && !numbers.match(pattern.remove(foreign)).hasMatch()) pattern = patternWith(fields, m_words);
    return formatted(formatInStyles(UDAT_PATTERN, UDAT_PATTERN, m_words, m_zone, pattern), date);
  }

  QString m_zone;
  QByteArray m_style, m_words;
  bool m_isOneLanguage{false};
};

}  // namespace

QByteArray localeOfTimes() {
  for (const char* const variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    QByteArray name = qgetenv(variable);
    if (name.isEmpty()) continue;
    // "de_DE.UTF-8@euro".
    for (const char end : {'.', '@'})
      if (const auto at = name.indexOf(end); at >= 0) name.truncate(at);
    return name;
  }
  return "C";
}

QString relativeDateText(Date date, const Calendar& calendar, const QByteArray& style, const QByteArray& language) {
  if (!date.toDateTime().isValid()) return {};
  const ReadingStyle reading(style, language, fixedZone(date, calendar));
  const auto word = reading.dayInWords(date);
  const auto day = word ? word : reading.day(date);
  const auto time = reading.time(date);
  if (!day || !time) return date.toISO8601();
  // A day that has a word is joined to its time by words, too: "Today at 21:00", not "Today, 21:00".
  return joined(joiningPattern(word ? UDAT_LONG : UDAT_SHORT, reading.words()), *day, *time);
}

}  // namespace quillo
