#include "foundation/PropertyListCoding.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

namespace quillo::PropertyListCoding {

using namespace Qt::StringLiterals;

namespace {

bool isXMLSpace(QChar character) {
  return character == u' ' || character == u'\t' || character == u'\n' || character == u'\r';
}

// Decimal or, after "0x", hexadecimal, with a sign; from -2^63 to 2^64 - 1.
std::optional<PropertyListValue> integerFrom(QStringView text) {
  text = text.trimmed();
  const bool negative = text.startsWith(u'-');
  if (negative || text.startsWith(u'+')) text = text.sliced(1);
  const bool hexadecimal = text.startsWith(u"0x", Qt::CaseInsensitive);
  if (hexadecimal) text = text.sliced(2);
  if (text.isEmpty()) return std::nullopt;
  quint64 value = 0;
  for (const QChar character : text) {
    const char16_t c = character.unicode();
    quint64 digit = 16;
    if (c >= u'0' && c <= u'9') digit = c - u'0';
    if (hexadecimal && c >= u'a' && c <= u'f') digit = c - u'a' + 10U;
    if (hexadecimal && c >= u'A' && c <= u'F') digit = c - u'A' + 10U;
    if (digit == 16) return std::nullopt;
    if (__builtin_mul_overflow(value, hexadecimal ? quint64{16} : quint64{10}, &value) ||
        __builtin_add_overflow(value, digit, &value))
      return std::nullopt;
  }
  if (!negative) return value;
  if (value > quint64{1} << 63) return std::nullopt;
  return static_cast<qint64>(0 - value);
}

// The value of `text`, a decimal number without a sign whose exponent is out of what a double can hold.
double outOfRange(const QByteArray& text) {
  const qsizetype mark = text.indexOf('e');
  const QByteArray mantissa = mark < 0 ? text : text.first(mark);
  bool fits = true;
  qint64 exponent = mark < 0 ? 0 : text.sliced(mark + 1).toLongLong(&fits);
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
bool isDecimal(const QByteArray& text) {
  qsizetype at = 0;
  const auto digits = [&] {
    const qsizetype start = at;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') ++at;
    return at > start;
  };
  bool some = digits();
  if (at < text.size() && text[at] == '.') {
    ++at;
    some = digits() || some;
  }
  if (some && at < text.size() && text[at] == 'e') {
    ++at;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    some = digits();
  }
  return some && at == text.size();
}

std::optional<PropertyListValue> realFrom(QStringView view) {
  const QByteArray text = view.trimmed().toLatin1().toLower();
  const bool negative = text.startsWith('-');
  const QByteArray magnitude = negative || text.startsWith('+') ? text.sliced(1) : text;
  double value = 0;
  if (magnitude == "nan") {
    value = std::numeric_limits<double>::quiet_NaN();
  } else if (magnitude == "inf" || magnitude == "infinity") {
    value = std::numeric_limits<double>::infinity();
  } else if (isDecimal(magnitude)) {
    bool ok = false;
    value = magnitude.toDouble(&ok);
    if (!ok) value = outOfRange(magnitude);
  } else {
    return std::nullopt;
  }
  return negative ? -value : value;
}

// "2014-03-10T20:00:00Z", also before year 1 and with a minus sign, which QDateTime does not read; else whatever ISO
// 8601 with a zone allows.
std::optional<PropertyListValue> dateFrom(const QString& untrimmed) {
  const QString text = untrimmed.trimmed();
  const bool negative = text.startsWith(u'-');
  const QStringView view = QStringView(text).sliced(negative ? 1 : 0);
  constexpr QStringView shape = u"dddd-dd-ddTdd:dd:ddZ";
  bool fits = view.size() == shape.size();
  for (qsizetype i = 0; fits && i < shape.size(); ++i)
    fits = shape[i] == u'd' ? view[i] >= u'0' && view[i] <= u'9' : view[i] == shape[i];
  if (!fits) {
    const auto date = Date::fromISO8601(text);
    return date ? std::optional<PropertyListValue>(*date) : std::nullopt;
  }
  const auto number = [&](qsizetype from, qsizetype count) { return view.sliced(from, count).toInt(); };
  const std::chrono::year_month_day day{std::chrono::year(negative ? -number(0, 4) : number(0, 4)),
                                        std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                        std::chrono::day(static_cast<unsigned>(number(8, 2)))};
  const int hour = number(11, 2);
  const int minute = number(14, 2);
  const int second = number(17, 2);
  if (!day.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  const qint64 days = std::chrono::sys_days(day).time_since_epoch().count();
  return Date::since1970(static_cast<double>(days * 86400 + hour * 3600 + minute * 60 + second));
}

std::optional<PropertyListValue> dataFrom(const QString& text) {
  QByteArray characters;
  characters.reserve(text.size());
  for (const QChar character : text) {
    if (isXMLSpace(character)) continue;
    if (character.unicode() >= 0x80) return std::nullopt;
    characters.append(static_cast<char>(character.unicode()));
  }
  auto result = QByteArray::fromBase64Encoding(std::move(characters), QByteArray::AbortOnBase64DecodingErrors);
  if (!result) return std::nullopt;
  result.decoded.squeeze();
  return result.decoded;
}

// Where markup begins that the XML parser must not see, with the reason; found in one pass that stops at nothing else.
//
// The parser compares every attribute of a tag with every other, so a tag of a million attributes would take hours;
// a property list has one attribute, the version. Declarations inside of the document type (entities above all) have
// no use here and have been the way to make a small file large.
struct Refusal {
  qsizetype at;
  QString reason;
};
std::optional<Refusal> refusedMarkup(QStringView text) {
  constexpr qsizetype longestTag = 1024;
  const auto after = [&](qsizetype from, QStringView end) {
    const qsizetype found = text.indexOf(end, from);
    return found < 0 ? text.size() : found + end.size();
  };
  // Every turn moves `at` forward, so the walk is linear.
  for (qsizetype at = text.indexOf(u'<'); at >= 0; at = text.indexOf(u'<', at)) {
    const QStringView rest = text.sliced(at);
    if (rest.startsWith(u"<!--")) {
      at = after(at + 4, u"-->");
    } else if (rest.startsWith(u"<![CDATA[")) {
      at = after(at + 9, u"]]>");
    } else if (rest.startsWith(u"<?")) {
      at = after(at + 2, u"?>");
    } else {
      const qsizetype start = at;
      QChar quote;
      for (++at; at < text.size() && (!quote.isNull() || text[at] != u'>'); ++at) {
        const QChar character = text[at];
        if (at - start > longestTag) return Refusal{start, u"a tag is too long"_s};
        if (!quote.isNull() ? character == quote : character == u'"' || character == u'\'')
          quote = quote.isNull() ? character : QChar();
        else if (quote.isNull() && character == u'[' && rest.startsWith(u"<!"))
          return Refusal{at, u"declarations inside of the document type are not accepted"_s};
      }
    }
  }
  return std::nullopt;
}

class Reader {
 public:
  // `linesBefore`: that stand before the text, for the line in an error.
  Reader(const QString& text, qint64 linesBefore) : m_xml(text), m_builder(text.size()), m_linesBefore(linesBefore) {
    m_xml.setNamespaceProcessing(false);
  }

  std::optional<PropertyListValue> read(Error* error);

 private:
  bool startElement(const QString& name);
  bool endElement();
  bool addScalar(const QString& name);
  bool addParsed(const std::optional<PropertyListValue>& value, const QString& name, const QString& text);
  std::optional<QString> text(const QString& name);
  bool refuse(const QString& problem);
  bool built(bool good) { return good || refuse(m_builder.problem()); }

  QXmlStreamReader m_xml;
  Builder m_builder;
  qint64 m_linesBefore;
  bool m_sawWrapper{false};
  QString m_problem;
};

bool Reader::refuse(const QString& problem) {
  if (m_problem.isEmpty())
    m_problem = u"%1, on line %2"_s.arg(problem, QString::number(m_linesBefore + m_xml.lineNumber()));
  return false;
}

std::optional<PropertyListValue> Reader::read(Error* error) {
  bool good = true;
  while (good && !m_xml.atEnd()) {
    switch (m_xml.readNext()) {
      case QXmlStreamReader::StartElement:
        good = startElement(m_xml.qualifiedName().toString());
        break;
      case QXmlStreamReader::EndElement:
        good = endElement();
        break;
      case QXmlStreamReader::Characters:
        if (!m_xml.isWhitespace()) good = refuse(u"there is text outside of an element"_s);
        break;
      case QXmlStreamReader::EntityReference:
        good = refuse(u"the entity \"%1\" is not known"_s.arg(m_xml.name().toString().left(100)));
        break;
      default:
        break;
    }
  }
  if (good && m_xml.hasError()) good = refuse(m_xml.errorString().simplified());
  if (good && !m_builder.result()) good = refuse(u"there is no value"_s);
  if (good) return m_builder.result();
  fail(error, readError(m_problem));
  return std::nullopt;
}

bool Reader::startElement(const QString& name) {
  if (name == u"dict") return built(m_builder.beginDictionary());
  if (name == u"array") return built(m_builder.beginArray());
  if (name == u"plist") {
    if (m_sawWrapper || m_builder.depth() > 0) return refuse(u"an element <plist> is inside of the list"_s);
    m_sawWrapper = true;
    return true;
  }
  return addScalar(name);
}

bool Reader::endElement() {
  // The elements that hold text are read to their end at once, so this ends a collection or the wrapper.
  return m_builder.depth() == 0 || built(m_builder.endCollection());
}

bool Reader::addScalar(const QString& name) {
  static constexpr QStringView known[] = {u"key", u"string", u"integer", u"real", u"date", u"data", u"true", u"false"};
  if (std::find(std::begin(known), std::end(known), QStringView(name)) == std::end(known))
    return refuse(u"the element <%1> is not known"_s.arg(name.left(100)));
  const auto content = text(name);
  if (!content) return false;
  if (name == u"key") return built(m_builder.setKey(*content));
  if (name == u"string") return built(m_builder.addString(*content));
  if (name == u"integer") return addParsed(integerFrom(*content), name, *content);
  if (name == u"real") return addParsed(realFrom(*content), name, *content);
  if (name == u"date") return addParsed(dateFrom(*content), name, *content);
  if (name == u"data") return addParsed(dataFrom(*content), name, *content);
  if (!content->trimmed().isEmpty()) return refuse(u"the element <%1> is not empty"_s.arg(name));
  return built(m_builder.add(name == u"true"));
}

bool Reader::addParsed(const std::optional<PropertyListValue>& value, const QString& name, const QString& text) {
  if (value) return built(m_builder.add(*value));
  return refuse(u"\"%1\" is no %2"_s.arg(text.simplified().left(60), name));
}

// The text up to the element's end; comments do not part it.
std::optional<QString> Reader::text(const QString& name) {
  QString result;
  while (!m_xml.atEnd()) {
    switch (m_xml.readNext()) {
      case QXmlStreamReader::Characters:
        if (result.isEmpty())
          result = m_xml.text().toString();  // no larger than it must be
        else
          result.append(m_xml.text());
        break;
      case QXmlStreamReader::EndElement:
        return result;
      case QXmlStreamReader::StartElement:
        refuse(u"an element is inside of <%1>"_s.arg(name));
        return std::nullopt;
      case QXmlStreamReader::EntityReference:
        refuse(u"the entity \"%1\" is not known"_s.arg(m_xml.name().toString().left(100)));
        return std::nullopt;
      default:
        break;
    }
  }
  refuse(m_xml.errorString().simplified());
  return std::nullopt;
}

}  // namespace

std::optional<PropertyListValue> readXML(const QString& text, Error* error) {
  if (const auto refusal = refusedMarkup(text)) {
    const auto line = 1 + QStringView(text).first(refusal->at).count(u'\n');
    fail(error, readError(u"%1, on line %2"_s.arg(refusal->reason, QString::number(line))));
    return std::nullopt;
  }
  // White space before the declaration is against the rules of XML, but not against the platform's.
  const auto start = std::find_if_not(text.begin(), text.end(), isXMLSpace) - text.begin();
  return Reader(text.sliced(start), QStringView(text).first(start).count(u'\n')).read(error);
}

}  // namespace quillo::PropertyListCoding
