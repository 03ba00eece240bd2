#include "foundation/PropertyListCoding.h"
#include "foundation/PropertyListXMLScalars.h"

#include <QHashSeed>
#include <QStringDecoder>
#include <QtEndian>

#include <expat.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace quillo::PropertyListCoding {

using namespace Qt::StringLiterals;

namespace {

bool isXMLSpace(char character) {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

// The parser keeps every attribute of a tag, and every name of an attribute, at many times its length. A property list
// has one attribute, the version.
constexpr qsizetype longestTag = 1024;

// False where no tag is longer, which it sees mostly by a look every thousand bytes: no tag has a "<" inside of it.
bool mayHaveLongTag(QByteArrayView text) {
  // Every turn moves `at` forward, so the walk is linear.
  for (qsizetype at = text.indexOf('<'); at >= 0 && text.size() - at > longestTag;) {
    const QByteArrayView reach = text.sliced(at + 1, longestTag);
    if (const void* last = ::memrchr(reach.data(), '<', longestTag)) {
      at = static_cast<const char*>(last) - text.data();
      continue;
    }
    // Text of such a length behind a tag, mostly.
    const qsizetype end = reach.indexOf('>');
    const QByteArrayView tag = reach.first(std::max<qsizetype>(end, 0));
    if (end < 0 || tag.contains('"') || tag.contains('\'')) return true;
    at = text.indexOf('<', at + 1);
  }
  return false;
}

// Where a tag begins that is too long, outside of comments and the like; -1 where none does.
qsizetype longTag(QByteArrayView text) {
  const auto after = [&](qsizetype from, QByteArrayView end) {
    const qsizetype found = text.indexOf(end, from);
    return found < 0 ? text.size() : found + end.size();
  };
  // Every turn moves `at` forward, so the walk is linear.
  for (qsizetype at = text.indexOf('<'); at >= 0; at = text.indexOf('<', at)) {
    const QByteArrayView rest = text.sliced(at);
    if (rest.startsWith("<!--")) {
      at = after(at + 4, "-->");
    } else if (rest.startsWith("<![CDATA[")) {
      at = after(at + 9, "]]>");
    } else if (rest.startsWith("<?")) {
      at = after(at + 2, "?>");
    } else {
      const qsizetype start = at;
      char quote = 0;
      for (++at; at < text.size() && (quote || text[at] != '>'); ++at) {
        if (at - start > longestTag) return start;
        if (quote ? text[at] == quote : text[at] == '"' || text[at] == '\'') quote = quote ? '\0' : text[at];
      }
    }
  }
  return -1;
}

// The elements of a property list; the first three hold others, all else holds text.
enum class Element { Unknown, Wrapper, Array, Dictionary, Key, String, Integer, Real, Date, Data, True, False };

template <size_t size>
bool isSame(const char* name, const char (&known)[size]) {
  for (size_t i = 0; i < size; ++i)  // the null at the end, too
    if (name[i] != known[i]) return false;
  return true;
}

// One look mostly, at the first letter.
Element elementNamed(const char* name) {
  using enum Element;
  switch (name[0]) {
    case 'k':
      return isSame(name, "key") ? Key : Unknown;
    case 's':
      return isSame(name, "string") ? String : Unknown;
    case 'i':
      return isSame(name, "integer") ? Integer : Unknown;
    case 'd':
      if (isSame(name, "dict")) return Dictionary;
      if (isSame(name, "date")) return Element::Date;
      return isSame(name, "data") ? Data : Unknown;
    case 'a':
      return isSame(name, "array") ? Array : Unknown;
    case 'r':
      return isSame(name, "real") ? Real : Unknown;
    case 't':
      return isSame(name, "true") ? True : Unknown;
    case 'f':
      return isSame(name, "false") ? False : Unknown;
    case 'p':
      return isSame(name, "plist") ? Wrapper : Unknown;
    default:
      return Unknown;
  }
}

// The text of an element in UTF-8, and the same in UTF-16, in places that are used again: what is made of it is no
// larger than it must be. Eight bytes at a time, up to seven behind the end.
class Text {
 public:
  void clear() { m_size = 0; }
  void append(std::string_view text) {
    if (m_size + text.size() + eight > m_bytes.size()) m_bytes.resize(2 * (m_size + text.size()) + eight);
    std::memcpy(m_bytes.data() + m_size, text.data(), text.size());
    m_size += text.size();
  }
  [[nodiscard]] QByteArrayView utf8() const { return {m_bytes.data(), static_cast<qsizetype>(m_size)}; }
  QStringView wide();

 private:
  static constexpr size_t eight = 8;
  std::vector<char> m_bytes = std::vector<char>(256);
  size_t m_size{0};
  std::vector<QChar> m_wide = std::vector<QChar>(256);
  // A mark of byte order has no meaning inside of a text, and stays.
  QStringDecoder m_decoder{QStringConverter::Utf8,
                           QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom};
};

QStringView Text::wide() {
  if (m_wide.size() < m_bytes.size()) m_wide.resize(m_bytes.size());
  QChar* to = m_wide.data();
  size_t at = 0;
  for (; at < m_size; at += eight) {
    const auto bytes = qFromLittleEndian<quint64>(m_bytes.data() + at);
    const size_t left = m_size - at;
    const quint64 beyondASCII = 0x8080808080808080 & (left < eight ? (quint64{1} << 8 * left) - 1 : ~quint64{0});
    if (bytes & beyondASCII) break;
    for (size_t half = 0; half < eight; half += 4) {
      quint64 four = bytes >> 8 * half & 0xFFFFFFFF;
      four = (four | four << 16) & 0x0000FFFF0000FFFF;
      four = (four | four << 8) & 0x00FF00FF00FF00FF;
      qToLittleEndian(four, to + at + half);
    }
  }
  if (at >= m_size) return {to, static_cast<qsizetype>(m_size)};
  return {to, m_decoder.appendToBuffer(to + at, utf8().sliced(static_cast<qsizetype>(at)))};
}

QString named(const char* name) {
  return QString::fromUtf8(name).left(100);
}

QString unknownEntity(const char* name) {
  return u"the entity \"%1\" is not known"_s.arg(named(name));
}

class Reader {
 public:
  // `linesBefore`: that stand before the text, for the line in an error.
  Reader(QByteArrayView text, qint64 linesBefore);

  std::optional<PropertyListValue> read(Error* error);

 private:
  void startElement(const char* name, const char** attributes);
  void endElement(const char* name);
  void characters(std::string_view text);
  bool endText(const char* name);
  bool addParsed(std::optional<PropertyListValue> value, const char* name);
  bool parse();
  QString parserProblem();
  bool refuse(const QString& problem);
  bool built(bool good) { return good || refuse(m_builder.problem()); }

  // What the parser calls knows of no objects.
  static Reader& self(void* reader) { return *static_cast<Reader*>(reader); }
  static void onStart(void* reader, const char* name, const char** attributes) {
    if (!self(reader).m_isRefused) self(reader).startElement(name, attributes);
  }
  static void onEnd(void* reader, const char* name) {
    if (!self(reader).m_isRefused) self(reader).endElement(name);
  }
  static void onCharacters(void* reader, const char* text, int length) {
    if (!self(reader).m_isRefused) self(reader).characters({text, static_cast<size_t>(length)});
  }
  static void onDeclaration(void* reader, const char* version, const char* encoding, int standalone);
  static void onDocumentType(void* reader, const char* name, const char* system, const char* publicly, int hasMore);
  static void onSkippedEntity(void* reader, const char* name, int isParameter);

  struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  QByteArrayView m_document;
  std::unique_ptr<XML_ParserStruct, FreeParser> m_xml;
  Builder m_builder;
  qint64 m_linesBefore;
  Element m_element{Element::Unknown};  // whose text is being read
  Text m_text;                          // of it
  bool m_sawWrapper{false};
  bool m_isRefused{false};
  QString m_problem;
};

Reader::Reader(QByteArrayView text, qint64 linesBefore)
    : m_document(text), m_xml(XML_ParserCreate("UTF-8")), m_builder(text.size()), m_linesBefore(linesBefore) {
  if (!m_xml) return;
  XML_SetUserData(m_xml.get(), this);
  // Names can be made to meet in one place of a table. The process has a random seed; the parser would ask the system.
  XML_SetHashSalt(m_xml.get(), QHashSeed::globalSeed() | 1);
  XML_SetElementHandler(m_xml.get(), onStart, onEnd);
  XML_SetCharacterDataHandler(m_xml.get(), onCharacters);
  XML_SetXmlDeclHandler(m_xml.get(), onDeclaration);
  XML_SetStartDoctypeDeclHandler(m_xml.get(), onDocumentType);
  XML_SetSkippedEntityHandler(m_xml.get(), onSkippedEntity);
}

// The parser goes no further, though it may still tell what it knows already.
bool Reader::refuse(const QString& problem) {
  const qint64 line = m_linesBefore + static_cast<qint64>(XML_GetCurrentLineNumber(m_xml.get()));
  m_problem = u"%1, on line %2"_s.arg(problem, QString::number(line));
  m_isRefused = true;
  XML_StopParser(m_xml.get(), XML_FALSE);
  return false;
}

std::optional<PropertyListValue> Reader::read(Error* error) {
  if (!m_xml) {
    fail(error, readError(u"there is not enough memory"_s));
    return std::nullopt;
  }
  if (!parse() && !m_isRefused) refuse(parserProblem());
  if (!m_isRefused && !m_builder.result()) refuse(u"there is no value"_s);
  if (!m_isRefused) return m_builder.result();
  fail(error, readError(m_problem));
  return std::nullopt;
}

// In one piece: of each, the parser would count the lines once more, which takes longer than to copy it.
bool Reader::parse() {
  const auto length = static_cast<int>(m_document.size());
  void* buffer = XML_GetBuffer(m_xml.get(), length);
  if (!buffer) return false;
  std::memcpy(buffer, m_document.data(), static_cast<size_t>(length));
  return XML_ParseBuffer(m_xml.get(), length, XML_TRUE) == XML_STATUS_OK;
}

// Why the parser went no further.
QString Reader::parserProblem() {
  if (!m_document.isValidUtf8()) return u"the text is not valid in its encoding"_s;
  const auto error = XML_GetErrorCode(m_xml.get());
  const auto at = static_cast<qsizetype>(XML_GetCurrentByteIndex(m_xml.get()));
  const QByteArrayView rest = at >= 0 && at < m_document.size() ? m_document.sliced(at) : QByteArrayView();
  switch (error) {
    case XML_ERROR_NO_ELEMENTS:
    case XML_ERROR_UNCLOSED_TOKEN:
    case XML_ERROR_UNCLOSED_CDATA_SECTION:
      return u"it ends too early"_s;
    case XML_ERROR_INVALID_TOKEN:
      return u"there is something that XML does not allow"_s;
    case XML_ERROR_UNDEFINED_ENTITY:
      if (const qsizetype end = rest.indexOf(';'); rest.startsWith('&') && end > 0)
        return unknownEntity(rest.first(end).sliced(1).toByteArray().constData());
      return u"an entity is not known"_s;
    default:
      return QString::fromUtf8(XML_ErrorString(error));
  }
}

void Reader::onDeclaration(void* reader, const char* version, const char* /*encoding*/, int /*standalone*/) {
  if (version && std::strcmp(version, "1.0") != 0)
    self(reader).refuse(u"its XML version \"%1\" is not known"_s.arg(named(version)));
}

// Declarations inside of the document type, entities above all, have no use here and have been the way to make a small
// file large.
void Reader::onDocumentType(void* reader, const char* /*name*/, const char* /*system*/, const char* /*publicly*/,
                            int hasMore) {
  if (hasMore) self(reader).refuse(u"declarations inside of the document type are not accepted"_s);
}

// One that the document type could declare somewhere else.
void Reader::onSkippedEntity(void* reader, const char* name, int /*isParameter*/) {
  if (!self(reader).m_isRefused) self(reader).refuse(unknownEntity(name));
}

void Reader::startElement(const char* name, const char** attributes) {
  if (m_element != Element::Unknown) {
    static constexpr const char* names[] = {"",        "plist", "array", "dict", "key",  "string",
                                            "integer", "real",  "date",  "data", "true", "false"};
    refuse(u"an element is inside of <%1>"_s.arg(QLatin1StringView(names[static_cast<size_t>(m_element)])));
    return;
  }
  for (; *attributes; attributes += 2)
    if (!built(m_builder.take(MemoryAllowance::attribute))) return;
  switch (const Element element = elementNamed(name)) {
    case Element::Dictionary:
      built(m_builder.beginDictionary());
      break;
    case Element::Array:
      built(m_builder.beginArray());
      break;
    case Element::Wrapper:
      if (m_sawWrapper || m_builder.depth() > 0) refuse(u"an element <plist> is inside of the list"_s);
      m_sawWrapper = true;
      break;
    case Element::Unknown:
      refuse(u"the element <%1> is not known"_s.arg(named(name)));
      break;
    default:
      m_element = element;
      m_text.clear();
      break;
  }
}

void Reader::endElement(const char* name) {
  if (m_element != Element::Unknown) {
    endText(name);
    m_element = Element::Unknown;
  } else if (m_builder.depth() > 0) {  // else it is the wrapper
    built(m_builder.endCollection());
  }
}

void Reader::characters(std::string_view text) {
  if (m_element != Element::Unknown)
    m_text.append(text);
  else if (!std::all_of(text.begin(), text.end(), [](char c) { return isXMLSpace(c); }))
    refuse(u"there is text outside of an element"_s);
}

bool Reader::endText(const char* name) {
  switch (m_element) {
    case Element::Key:
      return built(m_builder.setKey(m_text.wide()));
    case Element::String:
      return built(m_builder.addString(m_text.wide()));
    case Element::Integer:
      return addParsed(integerFrom(m_text.utf8()), name);
    case Element::Real:
      return addParsed(realFrom(m_text.utf8()), name);
    case Element::Date:
      return addParsed(dateFrom(m_text.utf8()), name);
    case Element::Data:
      return addParsed(dataFrom(m_text.utf8()), name);
    default:
      if (!m_text.utf8().isEmpty() && !m_text.wide().trimmed().isEmpty())
        return refuse(u"the element <%1> is not empty"_s.arg(QString::fromUtf8(name)));
      return built(m_builder.add(m_element == Element::True));
  }
}

bool Reader::addParsed(std::optional<PropertyListValue> value, const char* name) {
  if (value) return built(m_builder.add(*std::move(value)));
  const QString text = m_text.wide().toString().simplified().left(60);
  return refuse(u"\"%1\" is no %2"_s.arg(text, QString::fromUtf8(name)));
}

}  // namespace

std::optional<PropertyListValue> readXML(QByteArrayView text, Error* error) {
  const auto refused = [error](const QString& why) {
    fail(error, readError(why));
    return std::nullopt;
  };
  if (text.size() > (qsizetype{1} << 30)) return refused(u"it is too large"_s);
  if (const qsizetype at = mayHaveLongTag(text) ? longTag(text) : -1; at >= 0) {
    const auto line = 1 + std::count(text.begin(), text.begin() + at, '\n');
    return refused(u"a tag is too long, on line %1"_s.arg(line));
  }
  // White space before the declaration is against the rules of XML, but not against the platform's.
  const auto start = std::find_if_not(text.begin(), text.end(), isXMLSpace);
  return Reader(text.sliced(start - text.begin()), std::count(text.begin(), start, '\n')).read(error);
}

}  // namespace quillo::PropertyListCoding
