#include "foundation/PropertyListCoding.h"
#include "foundation/PropertyListOutput.h"

#include <QLocale>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <string_view>

namespace quillo::PropertyListCoding {

using namespace Qt::StringLiterals;

namespace {

// Deeper levels stay at this indentation: otherwise a deep list would be mostly white space.
constexpr qsizetype deepestIndentation = 32;
// A list that shares a long string many times is small in memory and could be larger than the memory as text.
constexpr qsizetype longestText = qsizetype{1} << 30;

// What stands for a character of ASCII: itself where it is empty.
constexpr std::array<std::string_view, 0x80> escapes = [] {
  std::array<std::string_view, 0x80> result;
  result['&'] = "&amp;";
  result['<'] = "&lt;";
  result['>'] = "&gt;";
  // A reader takes a plain carriage return for a line feed.
  result['\r'] = "&#13;";
  return result;
}();

enum class Kind : quint8 { Plain, Escaped, Refused };
constexpr std::array<Kind, 0x80> kinds = [] {
  std::array<Kind, 0x80> result{};
  for (size_t c = 0; c < result.size(); ++c) {
    if (c < ' ' && c != '\t' && c != '\n') result[c] = Kind::Refused;
    if (!escapes[c].empty()) result[c] = Kind::Escaped;
  }
  return result;
}();

class Writer {
 public:
  std::optional<QByteArray> write(const PropertyListValue& value, Error* error);

 private:
  bool writeValue(const PropertyListValue& value, qsizetype level);
  bool writeArray(const PropertyListArray& items, qsizetype level);
  bool writeDictionary(const PropertyListDictionary& entries, qsizetype level);
  bool writeText(std::string_view element, const QString& text);
  bool writeCharacters(QStringView text);
  bool writeDate(Date date);
  void writeReal(double value);
  void writeData(const QByteArray& data, qsizetype level);
  template <typename Number>
  void writeInteger(Number value);
  void indent(qsizetype level) {
    m_out.makeRoom(deepestIndentation);
    m_out.fill('\t', std::min(level, deepestIndentation));
  }
  void element(std::string_view name, std::string_view text);
  bool refuse(const QString& problem) {
    m_problem = problem;
    return false;
  }

  Output m_out;
  QString m_problem;
  QStringList m_path;  // of the value at fault, filled on the way out
};

std::optional<QByteArray> Writer::write(const PropertyListValue& value, Error* error) {
  m_out.append(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
      "<plist version=\"1.0\">\n");
  if (!writeValue(value, 0)) {
    fail(error, writeError(m_problem, m_path));
    return std::nullopt;
  }
  m_out.append("</plist>\n");
  return m_out.taken();
}

// `level`: in how many collections the value lies. It bounds the recursion.
bool Writer::writeValue(const PropertyListValue& value, qsizetype level) {
  if (value.isNull()) return refuse(u"there is a null value"_s);
  if (m_out.size() > longestText) return refuse(u"it is too large for a text"_s);
  const bool isCollection = value.isArray() || value.isDictionary();
  if (isCollection && level >= PropertyListSerialization::maximumDepth)
    return refuse(u"collections are nested too deeply"_s);
  indent(level);
  if (value.isArray()) return writeArray(value.array(), level);
  if (value.isDictionary()) return writeDictionary(value.dictionary(), level);
  if (value.isString()) return writeText("string", value.string());
  if (const auto date = value.date()) return writeDate(*date);
  if (value.isBool())
    m_out.append(value.boolValue() ? "<true/>\n" : "<false/>\n");
  else if (value.isUnsigned64())
    writeInteger(value.unsignedIntegerValue());
  else if (value.isInteger())
    writeInteger(value.integerValue());
  else if (value.isReal())
    writeReal(value.doubleValue());
  else
    writeData(value.data(), level);
  return true;
}

bool Writer::writeArray(const PropertyListArray& items, qsizetype level) {
  if (items.isEmpty()) {
    m_out.append("<array/>\n");
    return true;
  }
  m_out.append("<array>\n");
  for (qsizetype i = 0; i < items.size(); ++i) {
    if (writeValue(items[i], level + 1)) continue;
    m_path.prepend(u"[%1]"_s.arg(i));
    return false;
  }
  indent(level);
  m_out.append("</array>\n");
  return true;
}

bool Writer::writeDictionary(const PropertyListDictionary& entries, qsizetype level) {
  if (entries.isEmpty()) {
    m_out.append("<dict/>\n");
    return true;
  }
  m_out.append("<dict>\n");
  for (auto it = entries.begin(); it != entries.end(); ++it) {
    indent(level + 1);
    if (writeText("key", it.key()) && writeValue(it.value(), level + 1)) continue;
    m_path.prepend(it.key());
    return false;
  }
  indent(level);
  m_out.append("</dict>\n");
  return true;
}

bool Writer::writeText(std::string_view element, const QString& text) {
  m_out.makeRoom(32);
  m_out.put('<');
  m_out.put(element);
  m_out.put('>');
  // In stretches, so that the room for the longest escapes is a little.
  constexpr qsizetype stretch = 1024;
  for (QStringView rest = text; !rest.isEmpty();) {
    qsizetype length = std::min(stretch, rest.size());
    if (length < rest.size() && rest[length - 1].isHighSurrogate()) ++length;
    if (!writeCharacters(rest.first(length))) return false;
    rest = rest.sliced(length);
  }
  m_out.makeRoom(32);
  m_out.put("</");
  m_out.put(element);
  m_out.put(">\n");
  return true;
}

bool Writer::writeCharacters(QStringView text) {
  constexpr qsizetype longestEscape = 5;
  m_out.makeRoom(longestEscape * text.size());
  char* to = m_out.at();
  const auto tail = [&to](char32_t c, int shift) { *to++ = static_cast<char>(0x80 | (c >> shift & 0x3F)); };
  const auto* at = reinterpret_cast<const char16_t*>(text.utf16());
  for (const char16_t* const end = at + text.size(); at < end; ++at) {
    char32_t c = *at;
    if (c < 0x80) {
      if (kinds[c] == Kind::Plain) {
        *to++ = static_cast<char>(c);
        continue;
      }
      if (kinds[c] == Kind::Escaped) {
        to = std::copy(escapes[c].begin(), escapes[c].end(), to);
        continue;
      }
    } else if (c < 0x800) {
      *to++ = static_cast<char>(0xC0 | c >> 6);
      tail(c, 0);
      continue;
    } else if (QChar::isHighSurrogate(c) && at + 1 < end && QChar::isLowSurrogate(at[1])) {
      c = QChar::surrogateToUcs4(*at, at[1]);
      ++at;
      *to++ = static_cast<char>(0xF0 | c >> 18);
      tail(c, 12);
      tail(c, 6);
      tail(c, 0);
      continue;
    } else if (!QChar::isSurrogate(c) && c < 0xFFFE) {
      *to++ = static_cast<char>(0xE0 | c >> 12);
      tail(c, 6);
      tail(c, 0);
      continue;
    }
    return refuse(u"XML cannot hold the character U+%1"_s.arg(static_cast<uint>(c), 4, 16, QChar(u'0')));
  }
  m_out.moveTo(to);
  return true;
}

bool Writer::writeDate(Date date) {
  // Whole seconds, as the form has them, the rest cut off; the negated form also turns NaN away.
  const double seconds = std::floor(date.timeIntervalSince1970());
  if (!(std::abs(seconds) < 4e11)) return refuse(u"XML cannot hold the date"_s);
  const std::chrono::sys_seconds instant{std::chrono::seconds(static_cast<qint64>(seconds))};
  const auto day = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day civil(day);
  const int year = int{civil.year()};
  if (year < -9999 || year > 9999) return refuse(u"XML cannot hold the date"_s);
  char text[] = "-0000-00-00T00:00:00Z";
  const auto two = [&text](size_t at, unsigned value) {
    text[at] = static_cast<char>('0' + value / 10);
    text[at + 1] = static_cast<char>('0' + value % 10);
  };
  const auto yearNumber = static_cast<unsigned>(std::abs(year));
  const auto time = static_cast<unsigned>((instant - day).count());
  two(1, yearNumber / 100);
  two(3, yearNumber % 100);
  two(6, unsigned{civil.month()});
  two(9, unsigned{civil.day()});
  two(12, time / 3600);
  two(15, time / 60 % 60);
  two(18, time % 60);
  element("date", std::string_view(text).substr(year < 0 ? 0 : 1));
  return true;
}

template <typename Number>
void Writer::writeInteger(Number value) {
  char text[24];
  const auto result = std::to_chars(std::begin(text), std::end(text), value);
  element("integer", {text, static_cast<size_t>(result.ptr - text)});
}

void Writer::writeReal(double value) {
  if (std::isnan(value)) return element("real", "nan");
  if (std::isinf(value)) return element("real", value > 0 ? "+infinity" : "-infinity");
  if (value == 0) return element("real", std::signbit(value) ? "-0.0" : "0.0");
  // Beyond the integers that are exact, to_chars tells digits that mean nothing.
  constexpr double twoTo53 = 9007199254740992.0;
  if (std::abs(value) >= twoTo53) {
    const QByteArray text = QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
    return element("real", {text.constData(), static_cast<size_t>(text.size())});
  }
  char text[32];
  const auto result = std::to_chars(std::begin(text), std::end(text), value);
  element("real", {text, static_cast<size_t>(result.ptr - text)});
}

void Writer::writeData(const QByteArray& data, qsizetype level) {
  m_out.append("<data>\n");
  const QByteArray text = data.toBase64();
  // Lines end at column 76 where a tab is 8 wide; in whole groups of four characters, at least sixteen.
  const qsizetype length = std::max<qsizetype>(16, 76 - 8 * std::min(level, deepestIndentation)) / 4 * 4;
  for (qsizetype at = 0; at < text.size(); at += length) {
    indent(level);
    m_out.append({text.constData() + at, static_cast<size_t>(std::min(length, text.size() - at))});
    m_out.append("\n");
  }
  indent(level);
  m_out.append("</data>\n");
}

// Of a text that is short and needs no escapes.
void Writer::element(std::string_view name, std::string_view text) {
  m_out.makeRoom(96);
  m_out.put('<');
  m_out.put(name);
  m_out.put('>');
  m_out.put(text);
  m_out.put("</");
  m_out.put(name);
  m_out.put(">\n");
}

}  // namespace

std::optional<QByteArray> writeXML(const PropertyListValue& value, Error* error) {
  return Writer().write(value, error);
}

}  // namespace quillo::PropertyListCoding
