#include "foundation/PropertyListXMLScalars.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <limits>

namespace quillo::PropertyListCoding {

namespace {

bool isXMLSpace(char character) {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

// The text without white space around it. There are more kinds of that beyond ASCII: then the text lies in `storage`.
QByteArrayView trimmed(QByteArrayView text, QByteArray& storage) {
  const auto isBeyondASCII = [](char character) { return static_cast<uchar>(character) >= 0x80; };
  if (std::any_of(text.begin(), text.end(), isBeyondASCII)) return storage = QString::fromUtf8(text).trimmed().toUtf8();
  while (!text.isEmpty() && isXMLSpace(text.front())) text = text.sliced(1);
  while (!text.isEmpty() && isXMLSpace(text.back())) text.chop(1);
  return text;
}

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

bool isExponentMark(char character) {
  return character == 'e' || character == 'E';
}

// The value of `text`, a decimal number without a sign whose exponent is out of what a double can hold.
double outOfRange(QByteArrayView text) {
  const auto mark = std::find_if(text.begin(), text.end(), isExponentMark) - text.begin();
  const QByteArrayView mantissa = text.first(mark);
  bool fits = true;
  qint64 exponent = mark == text.size() ? 0 : text.sliced(mark + 1).toByteArray().toLongLong(&fits);
  // An exponent of so many digits outweighs any mantissa.
  if (!fits) exponent = text[mark + 1] == '-' ? -(qint64{1} << 40) : qint64{1} << 40;
  qsizetype point = mantissa.indexOf('.');
  if (point < 0) point = mantissa.size();
  qsizetype digit = 0;
  while (digit < mantissa.size() && (mantissa[digit] == '0' || mantissa[digit] == '.')) ++digit;
  const bool isLarge = digit < mantissa.size() && exponent + point - digit > 0;
  return isLarge ? std::numeric_limits<double>::infinity() : 0.0;
}

// Whether `text` is digits, with a point perhaps, and then perhaps an exponent.
bool isDecimal(QByteArrayView text) {
  qsizetype at = 0;
  const auto digits = [&] {
    const qsizetype start = at;
    while (at < text.size() && isDigit(text[at])) ++at;
    return at > start;
  };
  bool some = digits();
  if (at < text.size() && text[at] == '.') {
    ++at;
    some = digits() || some;
  }
  if (some && at < text.size() && isExponentMark(text[at])) {
    ++at;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    some = digits();
  }
  return some && at == text.size();
}

bool isWord(QByteArrayView text, QByteArrayView word) {
  const auto isSame = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; };
  return std::equal(text.begin(), text.end(), word.begin(), word.end(), isSame);
}

int digitValue(char character, bool hexadecimal) {
  if (isDigit(character)) return character - '0';
  if (hexadecimal && character >= 'a' && character <= 'f') return character - 'a' + 10;
  if (hexadecimal && character >= 'A' && character <= 'F') return character - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<PropertyListValue> integerFrom(QByteArrayView untrimmed) {
  QByteArray storage;
  QByteArrayView text = trimmed(untrimmed, storage);
  const bool negative = text.startsWith('-');
  if (negative || text.startsWith('+')) text = text.sliced(1);
  const bool hexadecimal = text.startsWith("0x") || text.startsWith("0X");
  if (hexadecimal) text = text.sliced(2);
  if (text.isEmpty()) return std::nullopt;
  quint64 value = 0;
  for (const char character : text) {
    const int digit = digitValue(character, hexadecimal);
    if (digit < 0 || __builtin_mul_overflow(value, hexadecimal ? quint64{16} : quint64{10}, &value) ||
        __builtin_add_overflow(value, static_cast<quint64>(digit), &value))
      return std::nullopt;
  }
  if (!negative) return value;
  if (value > quint64{1} << 63) return std::nullopt;
  return static_cast<qint64>(0 - value);
}

std::optional<PropertyListValue> realFrom(QByteArrayView untrimmed) {
  QByteArray storage;
  const QByteArrayView text = trimmed(untrimmed, storage);
  const bool negative = text.startsWith('-');
  const QByteArrayView magnitude = negative || text.startsWith('+') ? text.sliced(1) : text;
  double value = 0;
  if (isWord(magnitude, "nan")) {
    value = std::numeric_limits<double>::quiet_NaN();
  } else if (isWord(magnitude, "inf") || isWord(magnitude, "infinity")) {
    value = std::numeric_limits<double>::infinity();
  } else if (isDecimal(magnitude)) {
    const auto result = std::from_chars(magnitude.data(), magnitude.data() + magnitude.size(), value);
    if (result.ec != std::errc()) value = outOfRange(magnitude);
  } else {
    return std::nullopt;
  }
  return negative ? -value : value;
}

std::optional<PropertyListValue> dateFrom(QByteArrayView untrimmed) {
  QByteArray storage;
  const QByteArrayView text = trimmed(untrimmed, storage);
  const bool negative = text.startsWith('-');
  const QByteArrayView view = text.sliced(negative ? 1 : 0);
  constexpr QByteArrayView shape = "dddd-dd-ddTdd:dd:ddZ";
  const bool fits = std::equal(view.begin(), view.end(), shape.begin(), shape.end(),
                               [](char mine, char wanted) { return wanted == 'd' ? isDigit(mine) : mine == wanted; });
  if (!fits) {
    // QDateTime reads neither the years before 1 nor the minus sign.
    const auto date = Date::fromISO8601(QString::fromUtf8(text));
    return date ? std::optional<PropertyListValue>(*date) : std::nullopt;
  }
  const auto two = [&](qsizetype from) { return (view[from] - '0') * 10 + (view[from + 1] - '0'); };
  const int year = two(0) * 100 + two(2);
  const std::chrono::year_month_day day{std::chrono::year(negative ? -year : year),
                                        std::chrono::month(static_cast<unsigned>(two(5))),
                                        std::chrono::day(static_cast<unsigned>(two(8)))};
  const int hour = two(11);
  const int minute = two(14);
  const int second = two(17);
  if (!day.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  const qint64 days = std::chrono::sys_days(day).time_since_epoch().count();
  return Date::since1970(static_cast<double>(days * 86400 + hour * 3600 + minute * 60 + second));
}

std::optional<PropertyListValue> dataFrom(QByteArrayView text) {
  QByteArray characters;
  characters.reserve(text.size());
  std::copy_if(text.begin(), text.end(), std::back_inserter(characters), [](char c) { return !isXMLSpace(c); });
  // The decoder refuses what is no letter of Base64, all beyond ASCII with it.
  auto result = QByteArray::fromBase64Encoding(std::move(characters), QByteArray::AbortOnBase64DecodingErrors);
  if (!result) return std::nullopt;
  result.decoded.squeeze();
  return std::move(result.decoded);
}

}  // namespace quillo::PropertyListCoding
