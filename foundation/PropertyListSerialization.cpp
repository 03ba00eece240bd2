#include "foundation/PropertyListSerialization.h"

#include "foundation/PropertyListCoding.h"

#include <QStringDecoder>
#include <QStringEncoder>

#include <algorithm>
#include <cctype>

namespace quillo {

using namespace Qt::StringLiterals;

namespace PropertyListCoding {

Error readError(const QString& reason) {
  return cocoaError(ErrorCode::propertyListReadCorrupt, u"The property list cannot be read: %1."_s.arg(reason));
}

Error writeError(const QString& reason, const QStringList& path) {
  QString where;
  for (const QString& part : path) {
    if (!where.isEmpty() && !part.startsWith(u'[')) where += u'.';
    where += part;
  }
  return cocoaError(ErrorCode::propertyListWriteInvalid,
                    where.isEmpty() ? u"The property list cannot be written: %1."_s.arg(reason)
                                    : u"The property list cannot be written: %1, at %2."_s.arg(reason, where));
}

}  // namespace PropertyListCoding

namespace {

using namespace PropertyListCoding;

// The encoding that an XML declaration in an 8-bit encoding names; empty where it names none.
QByteArray declaredEncoding(const QByteArray& data) {
  // A declaration is a few words; the bound keeps the search off the document.
  QByteArray head = data.first(std::min<qsizetype>(data.size(), 512)).trimmed();
  if (!head.startsWith("<?xml")) return {};
  head.truncate(std::max<qsizetype>(head.indexOf("?>"), 0));
  const qsizetype name = head.indexOf("encoding");
  if (name < 0) return {};
  const QByteArray rest = head.mid(name + 8).trimmed();
  if (!rest.startsWith('=')) return {};
  const QByteArray quoted = rest.mid(1).trimmed();
  if (quoted.isEmpty() || (quoted[0] != '"' && quoted[0] != '\'')) return {};
  return quoted.mid(1, std::max<qsizetype>(quoted.indexOf(quoted[0], 1) - 1, 0));
}

bool isWide(QStringConverter::Encoding encoding) {
  return encoding != QStringConverter::Utf8 && encoding != QStringConverter::Latin1 &&
         encoding != QStringConverter::System;
}

// The decoder for a list, by its byte order mark, its XML declaration, or else for UTF-8. Invalid where it is unknown.
QStringDecoder decoderFor(const QByteArray& data, Error* error) {
  constexpr auto stateless = QStringConverter::Flag::Stateless;
  if (const auto marked = QStringConverter::encodingForData(data, u'<')) return QStringDecoder(*marked, stateless);
  const QByteArray name = declaredEncoding(data);
  if (name.isEmpty()) return QStringDecoder(QStringConverter::Utf8, stateless);
  const auto declared = QStringConverter::encodingForName(name.constData());
  // A declaration that could be read byte by byte is not in an encoding of two or four bytes, whatever it says.
  if (declared) return QStringDecoder(isWide(*declared) ? QStringConverter::Utf8 : *declared, stateless);
  QStringDecoder decoder(name.constData(), stateless);
  if (!decoder.isValid())
    fail(error, readError(u"the encoding \"%1\" on line 1 is not known"_s.arg(QString::fromLatin1(name))));
  return decoder;
}

std::optional<QString> decodedText(QStringDecoder& decoder, const QByteArray& data, Error* error) {
  QString text = decoder.decode(data);
  if (!decoder.hasError()) return text;
  const qsizetype at = text.indexOf(QChar::ReplacementCharacter);
  const auto line = 1 + QStringView(text).first(std::max<qsizetype>(at, 0)).count(u'\n');
  fail(error, readError(u"the text is not valid in its encoding, on line %1"_s.arg(line)));
  return std::nullopt;
}

// The text in UTF-8; nothing where it has half of a pair of surrogates.
std::optional<QByteArray> encodedText(const QString& text, Error* error) {
  QStringEncoder encoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
  QByteArray utf8 = encoder.encode(text);
  if (!encoder.hasError()) return utf8;
  fail(error, readError(u"the text is not valid in its encoding"_s));
  return std::nullopt;
}

QByteArrayView withoutMark(QByteArrayView utf8) {
  constexpr QByteArrayView mark = "\xef\xbb\xbf";
  return utf8.startsWith(mark) ? utf8.sliced(mark.size()) : utf8;
}

// XML starts with a tag, and so does data of the OpenStep form: "<0fbd77>". No element's name is made of hexadecimal
// digits alone.
bool looksLikeXML(QStringView text) {
  text = text.trimmed();
  if (!text.startsWith(u'<')) return false;
  for (const QChar character : text.sliced(1)) {
    if (character == u'>') return false;
    const bool isDigit = character.unicode() < 0x80 && std::isxdigit(character.unicode());
    if (!isDigit && !character.isSpace()) return true;
  }
  return false;
}

// Whether the same holds of a text in UTF-8, where that shows before anything that is not ASCII.
bool surelyIsXML(QByteArrayView utf8) {
  const auto isSpace = [](char character) { return character == ' ' || (character >= '\t' && character <= '\r'); };
  utf8 = withoutMark(utf8);
  const auto tag = std::find_if_not(utf8.begin(), utf8.end(), isSpace);
  if (tag == utf8.end() || *tag != '<') return false;
  const auto name = std::find_if_not(tag + 1, utf8.end(), [&](char character) {
    return isSpace(character) || std::isxdigit(static_cast<uchar>(character));
  });
  return name != utf8.end() && *name != '>' && static_cast<uchar>(*name) < 0x80;
}

}  // namespace

std::optional<PropertyListValue> PropertyListSerialization::propertyListWithData(const QByteArray& data,
                                                                                 PropertyListFormat* format,
                                                                                 Error* error) {
  if (data.isEmpty()) {
    fail(error, readError(u"it is empty"_s));
    return std::nullopt;
  }
  if (data.startsWith("bplist")) {
    if (format) *format = PropertyListFormat::Binary;
    return readBinary(data, error);
  }
  QStringDecoder decoder = decoderFor(data, error);
  if (!decoder.isValid()) return std::nullopt;
  if (qstrcmp(decoder.name(), "UTF-8") == 0 && surelyIsXML(data)) {
    if (format) *format = PropertyListFormat::XML;
    return readXML(withoutMark(data), error);
  }
  const auto text = decodedText(decoder, data, error);
  if (!text) return std::nullopt;
  const bool isXML = looksLikeXML(*text);
  if (format) *format = isXML ? PropertyListFormat::XML : PropertyListFormat::OpenStep;
  if (!isXML) return readOpenStep(*text, error);
  const auto utf8 = encodedText(*text, error);
  return utf8 ? readXML(*utf8, error) : std::nullopt;
}

std::optional<QByteArray> PropertyListSerialization::dataWithPropertyList(const PropertyListValue& value,
                                                                          PropertyListFormat format, Error* error) {
  switch (format) {
    case PropertyListFormat::XML:
      return writeXML(value, error);
    case PropertyListFormat::Binary:
      return writeBinary(value, error);
    case PropertyListFormat::OpenStep:
      break;
  }
  fail(error, writeError(u"the OpenStep form can only be read"_s));
  return std::nullopt;
}

}  // namespace quillo
