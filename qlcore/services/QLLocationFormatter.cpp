#include "qlcore/services/QLLocationFormatter.h"

#include "qlcore/services/PlaceTable.h"

#include <unicode/uldnames.h>
#include <unicode/uloc.h>

#include <array>
#include <cmath>
#include <memory>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// The language for a name; the system's plain "C" stands for English.
QString languageTag(const QLocale& locale) {
  const QString tag = locale.language() == QLocale::C ? QString() : locale.bcp47Name();
  return tag.isEmpty() ? u"en"_s : tag;
}

// Empty when the text library cannot say.
QString countryName(const QString& code, const QLocale& locale) {
  std::array<char, ULOC_FULLNAME_CAPACITY> language{};
  UErrorCode status = U_ZERO_ERROR;
  uloc_forLanguageTag(languageTag(locale).toLatin1().constData(), language.data(),
                      static_cast<int32_t>(language.size()), nullptr, &status);
  // The two of them are called "Hong Kong SAR China" and "Macao SAR China" in full; the other short names are letters.
  const bool isShort = code == u"HK" || code == u"MO";
  std::array context{isShort ? UDISPCTX_LENGTH_SHORT : UDISPCTX_LENGTH_FULL};
  const std::unique_ptr<ULocaleDisplayNames, decltype(&uldn_close)> names(
      uldn_openForContext(language.data(), context.data(), static_cast<int32_t>(context.size()), &status), &uldn_close);
  if (U_FAILURE(status)) return {};
  std::array<UChar, 200> text{};
  const int32_t length = uldn_regionDisplayName(names.get(), code.toLatin1().constData(), text.data(),
                                                static_cast<int32_t>(text.size()), &status);
  const bool isWhole = U_SUCCESS(status) && length > 0 && length <= static_cast<int32_t>(text.size());
  return isWhole ? QString::fromUtf16(text.data(), length) : QString();
}

// "46.20° N". Two decimals are about a kilometre. Digits and point are those of English in every language, as on maps.
QString coordinate(double degrees, QChar positive, QChar negative) {
  const QString number = QString::number(std::abs(degrees), 'f', 2);
  const bool isNegative = degrees < 0 && number != u"0.00";
  return number + u"° "_s + (isNegative ? negative : positive);
}

}  // namespace

QLLocationFormatter::QLLocationFormatter() : m_locale(QLocale::system().uiLanguages().value(0)) {}

QString QLLocationFormatter::placeNameForLocation(const QLLocation& location) const {
  const auto point = PlaceTable::pointAt(location.latitude, location.longitude);
  if (!point) return {};
  const PlaceTable& table = PlaceTable::shared();
  const auto index = table.indexOfPlaceNear(*point);
  return index ? nameOfPlace(table.place(*index)) : QString();
}

QString QLLocationFormatter::nameOfPlace(const PlaceTable::Place& place) const {
  const QString country = countryName(place.countryCode, m_locale);
  const bool isSame = country.isEmpty() || country == place.name ||
                      countryName(place.countryCode, QLocale(QLocale::English)) == place.name;
  return isSame ? place.name : place.name + u", "_s + country;
}

QString QLLocationFormatter::localLocationStringForLocation(const QLLocation& location) const {
  if (!location.placeName.isEmpty()) return location.placeName;
  if (!location.isValid()) return {};
  const QString name = placeNameForLocation(location);
  return name.isEmpty() ? coordinates(location) : name;
}

QString QLLocationFormatter::coordinates(const QLLocation& location) {
  return coordinate(location.latitude, u'N', u'S') + u", "_s + coordinate(location.longitude, u'E', u'W');
}

}  // namespace quillo
