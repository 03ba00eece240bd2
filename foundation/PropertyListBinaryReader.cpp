#include "foundation/PropertyListBinaryFormat.h"
#include "foundation/PropertyListCoding.h"

#include <QtEndian>

#include <bit>

namespace quillo::PropertyListCoding {

using namespace Qt::StringLiterals;
using namespace BinaryFormat;

namespace {

// Containers may be shared, so a small file can stand for a list that is enormous once it is walked. A list may hold
// this many values, shared ones counted each time, for every byte of the file and beyond that; a writer that shares no
// containers needs at most one a byte.
constexpr quint64 valuesPerByte = 4;
constexpr quint64 extraValues = 262144;

class Reader {
 public:
  explicit Reader(const QByteArray& data)
      : m_bytes(reinterpret_cast<const uchar*>(data.constData())),
        m_size(static_cast<quint64>(data.size())),
        m_mostValues(m_size * valuesPerByte + extraValues),
        m_memory(data.size()) {}

  std::optional<PropertyListValue> read(Error* error);

 private:
  // What is known of an object. Each is read once.
  struct Object {
    PropertyListValue value;
    quint64 weight : 48 {0};  // 1 and the weights of what it holds; 0 while it is not read
    quint64 height : 15 {0};  // how deep collections nest in it
    quint64 isOpen : 1 {0};   // on the stack
  };
  // A collection that is being read.
  struct Collection {
    quint64 index{0};
    bool isDictionary{false};
    quint64 count{0};
    quint64 keys{0};    // offset of the references to the keys
    quint64 values{0};  // offset of the references to the values
    quint64 next{0};
    quint64 weight{1};
    quint64 height{1};
    PropertyListArray items;
    PropertyListDictionary::Entries entries;
  };
  struct Header {
    quint8 kind;
    quint8 low;
    quint64 start;  // of the object
    quint64 count;  // the lower half, or the integer that stands for it
    quint64 body;   // offset of what follows marker and count
  };

  bool readTrailer();
  bool readHeader(quint64 index, Header* header);
  bool readScalar(quint64 index, const Header& header);
  bool readInteger(const Header& header, PropertyListValue* value);
  bool readReal(const Header& header, PropertyListValue* value);
  bool readString(const Header& header, PropertyListValue* value);
  bool open(quint64 index, const Header& header);
  bool step();
  bool readKey(const Collection& collection, QString* key);
  void close();

  bool claim(const Header& header, quint64 bodySize);
  bool take(qint64 each, quint64 count, qint64 more);
  bool reference(quint64 at, quint64* index);
  [[nodiscard]] quint64 number(quint64 at, quint64 width) const;
  bool refuse(const QString& problem, quint64 offset) {
    m_problem = u"%1, at offset %2"_s.arg(problem, QString::number(offset));
    return false;
  }

  const uchar* m_bytes;
  quint64 m_size;
  quint64 m_mostValues;
  MemoryAllowance m_memory;
  quint64 m_offsetWidth{0};
  quint64 m_referenceWidth{0};
  quint64 m_top{0};
  quint64 m_tableOffset{0};
  quint64 m_claimed{0};
  std::vector<Object> m_objects;
  std::vector<Collection> m_open;
  QString m_problem;
};

bool isCollection(quint8 kind) {
  return kind == Array || kind == Set || kind == Dictionary;
}

// Whether `width` bytes can name more than `largest` things.
bool canName(quint64 width, quint64 largest) {
  return width >= 8 || largest < (quint64{1} << (8 * width));
}

// The unsigned number of `width` bytes; the caller has checked that they are there. Of more than 8 the last count.
quint64 Reader::number(quint64 at, quint64 width) const {
  quint64 value = 0;
  for (quint64 i = 0; i < width; ++i) value = value << 8 | m_bytes[at + i];
  return value;
}

bool Reader::readTrailer() {
  if (m_size < 8 || m_bytes[6] != '0')
    return refuse(u"its binary version \"%1\" is not known"_s.arg(
                      QString::fromLatin1(reinterpret_cast<const char*>(m_bytes) + 6,
                                          static_cast<qsizetype>(qBound(quint64{6}, m_size, quint64{8}) - 6))),
                  6);
  if (m_size < headerSize + 1 + trailerSize) return refuse(u"it is too short"_s, m_size);
  const quint64 trailer = m_size - trailerSize;
  m_offsetWidth = m_bytes[trailer + offsetWidthField];
  m_referenceWidth = m_bytes[trailer + referenceWidthField];
  const quint64 count = number(trailer + objectCountField, 8);
  m_top = number(trailer + topObjectField, 8);
  m_tableOffset = number(trailer + tableOffsetField, 8);
  if (m_offsetWidth < 1 || m_offsetWidth > 8 || m_referenceWidth < 1 || m_referenceWidth > 8)
    return refuse(u"its widths are not from 1 to 8"_s, trailer + offsetWidthField);
  if (m_tableOffset <= headerSize || m_tableOffset >= trailer)
    return refuse(u"its offset table lies outside of it"_s, trailer + tableOffsetField);
  // An object takes at least a byte, and the widths must suffice to tell all objects apart; no writer makes others.
  // That also keeps what is set aside for the objects, and for references to them, to a small multiple of the file.
  if (count < 1 || count > m_tableOffset - headerSize || count > (trailer - m_tableOffset) / m_offsetWidth ||
      !canName(m_referenceWidth, count - 1) || !canName(m_offsetWidth, m_tableOffset - 1))
    return refuse(u"its number of objects does not fit its size"_s, trailer + objectCountField);
  if (m_top >= count) return refuse(u"its top object does not exist"_s, trailer + topObjectField);
  if (!take(MemoryAllowance::object, count, 0)) return false;
  m_objects = std::vector<Object>(count);
  return true;
}

// Counts the bytes of an object. Each object is read once, so together they cannot be larger than the space they have,
// unless they overlap: then a small file could claim any amount of memory.
bool Reader::claim(const Header& header, quint64 bodySize) {
  if (bodySize > m_tableOffset - header.body) return refuse(u"an object ends behind the last"_s, header.start);
  m_claimed += header.body + bodySize - header.start;
  if (m_claimed > m_tableOffset - headerSize) return refuse(u"objects overlap"_s, header.start);
  return true;
}

// Memory for so many things, which the file's size bounds, and what holds them.
bool Reader::take(qint64 each, quint64 count, qint64 more) {
  return m_memory.take(each * static_cast<qint64>(count) + more) ||
         refuse(u"its values would take too much memory"_s, m_tableOffset);
}

bool Reader::readHeader(quint64 index, Header* header) {
  const quint64 entry = m_tableOffset + index * m_offsetWidth;
  const quint64 start = number(entry, m_offsetWidth);
  if (start < headerSize || start >= m_tableOffset) return refuse(u"an object lies outside of the objects"_s, entry);
  const quint8 marker = m_bytes[start];
  const auto kind = static_cast<quint8>(marker & 0xF0);
  const auto low = static_cast<quint8>(marker & 0x0F);
  *header = {kind, low, start, low, start + 1};
  const bool counts = kind == Data || kind == AsciiString || kind == Utf16String || isCollection(kind);
  if (!counts || low != countFollows) return true;
  const quint64 left = m_tableOffset - header->body;
  if (left < 1 || (m_bytes[header->body] & 0xF0) != Integer || (m_bytes[header->body] & 0x0F) > 3)
    return refuse(u"a count is not an integer"_s, start);
  const quint64 width = quint64{1} << (m_bytes[header->body] & 0x0F);
  if (left < 1 + width) return refuse(u"an object ends behind the last"_s, start);
  header->count = number(header->body + 1, width);
  header->body += 1 + width;
  return true;
}

bool Reader::reference(quint64 at, quint64* index) {
  *index = number(at, m_referenceWidth);
  return *index < m_objects.size() || refuse(u"a reference names no object"_s, at);
}

bool Reader::readInteger(const Header& header, PropertyListValue* value) {
  if (header.low > 4) return refuse(u"an integer has an unknown width"_s, header.start);
  const quint64 width = quint64{1} << header.low;
  if (!claim(header, width)) return false;
  const quint64 bits = number(header.body, width);
  // Of sixteen bytes the first eight.
  if (width > 8 && number(header.body, 8) != 0) return refuse(u"an integer is out of range"_s, header.start);
  // Only those of eight bytes have a sign.
  if (width == 8)
    *value = static_cast<qint64>(bits);
  else
    *value = bits;
  return true;
}

bool Reader::readReal(const Header& header, PropertyListValue* value) {
  if (header.low != 3 && (header.kind != Real || header.low != 2))
    return refuse(u"a real or a date has an unknown width"_s, header.start);
  const quint64 width = quint64{1} << header.low;
  if (!claim(header, width)) return false;
  const quint64 bits = number(header.body, width);
  const double real =
      width == 4 ? double{std::bit_cast<float>(static_cast<quint32>(bits))} : std::bit_cast<double>(bits);
  *value = header.kind == Real ? PropertyListValue(real) : PropertyListValue(Date(real));
  return true;
}

bool Reader::readString(const Header& header, PropertyListValue* value) {
  const bool isWide = header.kind == Utf16String;
  if (header.count > m_size) return refuse(u"an object ends behind the last"_s, header.start);
  if (!claim(header, isWide ? header.count * 2 : header.count) || !take(2, header.count, MemoryAllowance::string))
    return false;
  const auto length = static_cast<qsizetype>(header.count);
  if (length == 0) {
    *value = QString();
  } else if (isWide) {
    QString text(length, Qt::Uninitialized);
    qFromBigEndian<char16_t>(m_bytes + header.body, length, text.data());
    *value = text;
  } else {
    const QByteArrayView text(m_bytes + header.body, length);
    for (const char character : text)
      if (static_cast<uchar>(character) >= 0x80) return refuse(u"an ASCII string holds something else"_s, header.start);
    *value = QString::fromLatin1(text);
  }
  return true;
}

bool Reader::readScalar(quint64 index, const Header& header) {
  PropertyListValue value;
  bool good = false;
  switch (header.kind) {
    case 0:
      if (header.low != False && header.low != True)
        return refuse(header.low == Null ? u"there is a null object"_s : u"there is an unknown object"_s, header.start);
      good = claim(header, 0);
      value = header.low == True;
      break;
    case Integer:
      good = readInteger(header, &value);
      break;
    case Real:
    case DateMarker:
      good = readReal(header, &value);
      break;
    case AsciiString:
    case Utf16String:
      good = readString(header, &value);
      break;
    case Data:
      good = claim(header, header.count) && take(1, header.count, MemoryAllowance::string);
      if (good && header.count > 0)
        value = QByteArray(reinterpret_cast<const char*>(m_bytes) + header.body, static_cast<qsizetype>(header.count));
      else
        value = QByteArray();
      break;
    case Uid:
      return refuse(u"UID objects, which only keyed archives have, are not accepted"_s, header.start);
    default:
      return refuse(u"there is an unknown object"_s, header.start);
  }
  if (!good) return false;
  m_objects[index].value = std::move(value);
  m_objects[index].weight = 1;
  return true;
}

// Sets out to read a collection: its references are known to be there, what they name is not.
bool Reader::open(quint64 index, const Header& header) {
  if (m_open.size() >= PropertyListSerialization::maximumDepth)
    return refuse(u"collections are nested too deeply"_s, header.start);
  const bool isDictionary = header.kind == Dictionary;
  // Before the products below: no count can be larger, so they stay far from overflowing.
  if (header.count > m_size) return refuse(u"an object ends behind the last"_s, header.start);
  const quint64 size = header.count * m_referenceWidth;
  if (!claim(header, isDictionary ? size * 2 : size)) return false;
  if (isDictionary ? !take(MemoryAllowance::entry, header.count, MemoryAllowance::dictionary)
                   : !take(MemoryAllowance::item, header.count, MemoryAllowance::array))
    return false;
  m_objects[index].isOpen = 1;
  Collection& collection = m_open.emplace_back();
  collection.index = index;
  collection.isDictionary = isDictionary;
  collection.count = header.count;
  collection.keys = header.body;
  collection.values = isDictionary ? header.body + size : header.body;
  if (isDictionary)
    collection.entries.reserve(static_cast<qsizetype>(header.count));
  else
    collection.items.reserve(static_cast<qsizetype>(header.count));
  return true;
}

bool Reader::readKey(const Collection& collection, QString* key) {
  const quint64 at = collection.keys + collection.next * m_referenceWidth;
  quint64 index = 0;
  if (!reference(at, &index)) return false;
  if (m_objects[index].weight == 0) {
    Header header;
    if (!readHeader(index, &header)) return false;
    if (header.kind != AsciiString && header.kind != Utf16String) return refuse(u"a key is not a string"_s, at);
    if (!readScalar(index, header)) return false;
  }
  if (!m_objects[index].value.isString()) return refuse(u"a key is not a string"_s, at);
  *key = m_objects[index].value.string();
  return true;
}

// One move of the innermost open collection: it takes its next value, opens the collection that is its next value, or
// closes. So the moves are bounded by the references and collections of the file, each read once.
bool Reader::step() {
  Collection& collection = m_open.back();
  if (collection.next == collection.count) {
    close();
    return true;
  }
  const quint64 at = collection.values + collection.next * m_referenceWidth;
  quint64 index = 0;
  if (!reference(at, &index)) return false;
  const Object& object = m_objects[index];
  if (object.isOpen) return refuse(u"a collection holds itself"_s, at);
  if (object.weight == 0) {
    Header header;
    if (!readHeader(index, &header)) return false;
    if (isCollection(header.kind)) return open(index, header);
    if (!readScalar(index, header)) return false;
  }
  if (m_open.size() + object.height > PropertyListSerialization::maximumDepth)
    return refuse(u"collections are nested too deeply"_s, at);
  collection.weight += object.weight + (collection.isDictionary ? 1 : 0);
  if (collection.weight > m_mostValues) return refuse(u"shared collections make it too large"_s, at);
  collection.height = std::max(collection.height, quint64{object.height} + 1);
  if (collection.isDictionary) {
    QString key;
    if (!readKey(collection, &key)) return false;
    collection.entries.emplace_back(std::move(key), object.value);
  } else {
    collection.items.append(object.value);
  }
  ++collection.next;
  return true;
}

void Reader::close() {
  Collection& collection = m_open.back();
  Object& object = m_objects[collection.index];
  if (collection.isDictionary)
    object.value = PropertyListDictionary::fromEntries(std::move(collection.entries));
  else
    object.value = std::move(collection.items);
  object.weight = collection.weight;
  object.height = collection.height;
  object.isOpen = 0;
  m_open.pop_back();
}

std::optional<PropertyListValue> Reader::read(Error* error) {
  Header header;
  bool good = readTrailer() && readHeader(m_top, &header);
  if (good) good = isCollection(header.kind) ? open(m_top, header) : readScalar(m_top, header);
  while (good && !m_open.empty()) good = step();
  if (good) return m_objects[m_top].value;
  fail(error, readError(m_problem));
  return std::nullopt;
}

}  // namespace

std::optional<PropertyListValue> readBinary(const QByteArray& data, Error* error) {
  return Reader(data).read(error);
}

}  // namespace quillo::PropertyListCoding
