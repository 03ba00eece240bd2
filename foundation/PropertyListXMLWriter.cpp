#include "foundation/PropertyListCoding.h"

#include <QLocale>
#include <QStringEncoder>

#include <chrono>
#include <cmath>
#include <cstdio>

namespace quillo::PropertyListCoding {

using namespace Qt::StringLiterals;

namespace {

// Deeper levels stay at this indentation: otherwise a deep list would be mostly white space.
constexpr qsizetype deepestIndentation = 32;
// A list that shares a long string many times is small in memory and could be larger than the memory as text.
constexpr qsizetype longestText = qsizetype{1} << 30;

class Writer {
 public:
  std::optional<QByteArray> write(const PropertyListValue& value, Error* error);

 private:
  bool writeValue(const PropertyListValue& value, qsizetype level);
  bool writeArray(const PropertyListArray& items, qsizetype level);
  bool writeDictionary(const PropertyListDictionary& entries, qsizetype level);
  bool writeText(const char* element, const QString& text);
  void appendPlain(QStringView text);
  bool writeDate(Date date);
  void writeReal(double value);
  void writeData(const QByteArray& data, qsizetype level);
  void indent(qsizetype level) { m_out.append(std::min(level, deepestIndentation), '\t'); }
  void element(const char* name, const QByteArray& text);
  bool refuse(const QString& problem) {
    m_problem = problem;
    return false;
  }

  QByteArray m_out;
  QString m_problem;
  QStringList m_path;  // of the value at fault, filled on the way out
};

std::optional<QByteArray> Writer::write(const PropertyListValue& value, Error* error) {
  m_out =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
      "<plist version=\"1.0\">\n";
  if (!writeValue(value, 0)) {
    fail(error, writeError(m_problem, m_path));
    return std::nullopt;
  }
  m_out += "</plist>\n";
  return m_out;
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
    m_out += value.boolValue() ? "<true/>\n" : "<false/>\n";
  else if (value.isUnsigned64())
    element("integer", QByteArray::number(value.unsignedIntegerValue()));
  else if (value.isInteger())
    element("integer", QByteArray::number(value.integerValue()));
  else if (value.isReal())
    writeReal(value.doubleValue());
  else
    writeData(value.data(), level);
  return true;
}

bool Writer::writeArray(const PropertyListArray& items, qsizetype level) {
  if (items.isEmpty()) {
    m_out += "<array/>\n";
    return true;
  }
  m_out += "<array>\n";
  for (qsizetype i = 0; i < items.size(); ++i) {
    if (writeValue(items[i], level + 1)) continue;
    m_path.prepend(u"[%1]"_s.arg(i));
    return false;
  }
  indent(level);
  m_out += "</array>\n";
  return true;
}

bool Writer::writeDictionary(const PropertyListDictionary& entries, qsizetype level) {
  if (entries.isEmpty()) {
    m_out += "<dict/>\n";
    return true;
  }
  m_out += "<dict>\n";
  for (auto it = entries.begin(); it != entries.end(); ++it) {
    indent(level + 1);
    if (writeText("key", it.key()) && writeValue(it.value(), level + 1)) continue;
    m_path.prepend(it.key());
    return false;
  }
  indent(level);
  m_out += "</dict>\n";
  return true;
}

void Writer::appendPlain(QStringView text) {
  const qsizetype before = m_out.size();
  m_out.resize(before + 3 * text.size());  // the most that UTF-8 takes
  const char* end = QStringEncoder(QStringEncoder::Utf8).appendToBuffer(m_out.data() + before, text);
  m_out.resize(end - m_out.constData());
}

bool Writer::writeText(const char* element, const QString& text) {
  m_out.append('<').append(element).append('>');
  // Stretches without special characters are converted at once.
  qsizetype plain = 0;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
      ++i;
      continue;
    }
    const bool isControl = c < u' ' && c != u'\t' && c != u'\n' && c != u'\r';
    if (isControl || c.isSurrogate() || c.unicode() >= 0xFFFE)
      return refuse(u"XML cannot hold the character U+%1"_s.arg(int{c.unicode()}, 4, 16, QChar(u'0')));
    const char* escape = nullptr;
    if (c == u'&') escape = "&amp;";
    if (c == u'<') escape = "&lt;";
    if (c == u'>') escape = "&gt;";
    // A reader takes a plain carriage return for a line feed.
    if (c == u'\r') escape = "&#13;";
    if (!escape) continue;
    appendPlain(QStringView(text).sliced(plain, i - plain));
    m_out += escape;
    plain = i + 1;
  }
  appendPlain(QStringView(text).sliced(plain));
  m_out.append("</").append(element).append(">\n");
  return true;
}

bool Writer::writeDate(Date date) {
  // Whole seconds, as the form has them, the rest cut off; the negated form also turns NaN away.
  const double seconds = std::floor(date.timeIntervalSince1970());
  if (!(std::abs(seconds) < 4e11)) return refuse(u"XML cannot hold the date"_s);
  const std::chrono::sys_seconds instant{std::chrono::seconds(static_cast<qint64>(seconds))};
  const auto day = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day civil(day);
  const std::chrono::hh_mm_ss time(instant - day);
  const int year = int{civil.year()};
  if (year < -9999 || year > 9999) return refuse(u"XML cannot hold the date"_s);
  char text[32];
  std::snprintf(text, sizeof text, "%s%04d-%02u-%02uT%02d:%02d:%02dZ", year < 0 ? "-" : "", std::abs(year),
                unsigned{civil.month()}, unsigned{civil.day()}, static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  element("date", text);
  return true;
}

void Writer::writeReal(double value) {
  if (std::isnan(value))
    element("real", "nan");
  else if (std::isinf(value))
    element("real", value > 0 ? "+infinity" : "-infinity");
  else if (value == 0)
    element("real", std::signbit(value) ? "-0.0" : "0.0");  // QByteArray drops the sign
  else
    element("real", QByteArray::number(value, 'g', QLocale::FloatingPointShortest));
}

void Writer::writeData(const QByteArray& data, qsizetype level) {
  m_out += "<data>\n";
  const QByteArray text = data.toBase64();
  // Lines end at column 76 where a tab is 8 wide; in whole groups of four characters, at least sixteen.
  const qsizetype length = std::max<qsizetype>(16, 76 - 8 * std::min(level, deepestIndentation)) / 4 * 4;
  for (qsizetype at = 0; at < text.size(); at += length) {
    indent(level);
    m_out.append(text.constData() + at, std::min(length, text.size() - at)).append('\n');
  }
  indent(level);
  m_out += "</data>\n";
}

void Writer::element(const char* name, const QByteArray& text) {
  m_out.append('<').append(name).append('>').append(text).append("</").append(name).append(">\n");
}

}  // namespace

std::optional<QByteArray> writeXML(const PropertyListValue& value, Error* error) {
  return Writer().write(value, error);
}

}  // namespace quillo::PropertyListCoding
