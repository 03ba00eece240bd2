#include "foundation/PropertyListBinaryFormat.h"
#include "foundation/PropertyListCoding.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

namespace quillo::PropertyListCoding {

using namespace Qt::StringLiterals;
using namespace BinaryFormat;

namespace {

// The width, of those that every reader knows, that can name `count` things and one more.
quint64 widthFor(quint64 count) {
  if (count <= 0xFF) return 1;
  if (count <= 0xFFFF) return 2;
  return count <= 0xFFFFFFFF ? 4 : 8;
}

// Numbers the objects breadth first, equal scalars once, then writes them in that order. Collections are written as
// often as they occur: comparing them would cost more than it saves.
class Writer {
 public:
  std::optional<QByteArray> write(const PropertyListValue& value, Error* error);

 private:
  static constexpr quint32 none = std::numeric_limits<quint32>::max();

  // The index under `key`, entered as none where it is new.
  template <typename Key>
  static quint32& entry(QHash<Key, quint32>& indexes, const Key& key) {
    const auto found = indexes.find(key);
    return found != indexes.end() ? *found : *indexes.insert(key, none);
  }

  // A value, or a key of a dictionary.
  struct Object {
    const PropertyListValue* value;
    const QString* key;
    quint32 parent;
    quint32 depth;          // in how many collections it lies
    size_t firstReference;  // of a collection, in m_references
  };

  bool collect(const PropertyListValue& top);
  bool collectChildren(quint32 parent);
  bool addValue(const PropertyListValue& value, quint32 parent);
  bool addString(const QString& text, const PropertyListValue* value, quint32 parent);
  bool append(Object object, quint32* index);
  bool refuse(const QString& problem, quint32 parent, const PropertyListValue& culprit);

  void writeObject(const Object& object);
  void writeCollection(const Object& object);
  void writeString(const QString& text);
  void writeInteger(const PropertyListValue& value);
  void writeCounted(quint8 marker, quint64 count);
  void writeBigEndian(quint64 value, quint64 width);
  void writeTable(const std::vector<quint64>& offsets);

  std::vector<Object> m_objects;
  std::vector<quint32> m_references;
  QHash<QString, quint32> m_strings;
  QHash<QByteArray, quint32> m_data;
  // By kind, as true, 1 and 1.0 are equal as values and must stay apart here, then by bits.
  enum Kind { Bool, Signed, Unsigned, RealNumber, Instant, kinds };
  std::array<QHash<quint64, quint32>, kinds> m_numbers;
  QByteArray m_out;
  quint64 m_referenceWidth{1};
  QString m_problem;
  QStringList m_path;
};

bool Writer::refuse(const QString& problem, quint32 parent, const PropertyListValue& culprit) {
  m_problem = problem;
  // Outwards: the place of each value in the collection around it.
  const PropertyListValue* value = &culprit;
  while (parent != none) {
    const PropertyListValue& around = *m_objects[parent].value;
    if (around.isArray()) {
      const auto& items = around.array();
      const auto found = std::find_if(items.begin(), items.end(), [&](const auto& item) { return &item == value; });
      m_path.prepend(u"[%1]"_s.arg(found - items.begin()));
    } else {
      const auto& entries = around.dictionary();
      for (auto it = entries.begin(); it != entries.end(); ++it)
        if (&it.value() == value) m_path.prepend(it.key());
    }
    value = &around;
    parent = m_objects[parent].parent;
  }
  return false;
}

bool Writer::append(Object object, quint32* index) {
  if (m_objects.size() >= none - 1) {
    m_problem = u"it holds too many values"_s;
    return false;
  }
  *index = static_cast<quint32>(m_objects.size());
  object.depth = object.parent == none ? 0 : m_objects[object.parent].depth + 1;
  m_objects.push_back(object);
  return true;
}

bool Writer::addString(const QString& text, const PropertyListValue* value, quint32 parent) {
  quint32 index = m_strings.value(text, none);
  if (index == none) {
    if (!append({value, &text, parent, 0, 0}, &index)) return false;
    m_strings.insert(text, index);
  }
  m_references.push_back(index);
  return true;
}

bool Writer::addValue(const PropertyListValue& value, quint32 parent) {
  if (value.isNull()) return refuse(u"there is a null value"_s, parent, value);
  if (value.isString()) return addString(value.string(), &value, parent);
  quint32 index = none;
  quint32* known = nullptr;
  if (value.isArray() || value.isDictionary()) {
    const quint32 depth = parent == none ? 0 : m_objects[parent].depth + 1;
    if (depth >= PropertyListSerialization::maximumDepth)
      return refuse(u"collections are nested too deeply"_s, parent, value);
  } else if (value.isData()) {
    known = &entry(m_data, value.data());
  } else {
    Kind kind = Signed;
    quint64 bits = value.unsignedIntegerValue();
    if (value.isBool()) kind = Bool;
    if (value.isUnsigned64()) kind = Unsigned;
    if (value.isReal()) kind = RealNumber, bits = std::bit_cast<quint64>(value.doubleValue());
    if (const auto date = value.date())
      kind = Instant, bits = std::bit_cast<quint64>(date->timeIntervalSinceReferenceDate());
    known = &entry(m_numbers[kind], bits);
  }
  if (known) index = *known;
  if (index == none && !append({&value, nullptr, parent, 0, 0}, &index)) return false;
  if (known) *known = index;
  m_references.push_back(index);
  return true;
}

bool Writer::collectChildren(quint32 parent) {
  const PropertyListValue* value = m_objects[parent].value;
  if (!value) return true;
  m_objects[parent].firstReference = m_references.size();
  for (const auto& item : value->array())
    if (!addValue(item, parent)) return false;
  const auto& entries = value->dictionary();
  for (auto it = entries.keyBegin(); it != entries.keyEnd(); ++it)
    if (!addString(*it, nullptr, parent)) return false;
  for (const auto& item : entries)
    if (!addValue(item, parent)) return false;
  return true;
}

bool Writer::collect(const PropertyListValue& top) {
  if (!addValue(top, none)) return false;
  m_references.clear();
  // The list grows on the way; depth is bounded, so it ends.
  for (quint32 i = 0; i < m_objects.size(); ++i)
    if (!collectChildren(i)) return false;
  return true;
}

void Writer::writeBigEndian(quint64 value, quint64 width) {
  std::array<char, 8> bytes;
  qToBigEndian(value, bytes.data());
  m_out.append(bytes.data() + (8 - width), static_cast<qsizetype>(width));
}

void Writer::writeInteger(const PropertyListValue& value) {
  const quint64 bits = value.unsignedIntegerValue();
  if (value.isUnsigned64()) {
    // Eight bytes have a sign, so the largest take sixteen.
    m_out.append(static_cast<char>(Integer | 4));
    writeBigEndian(0, 8);
    writeBigEndian(bits, 8);
    return;
  }
  // The narrow widths have no sign.
  const quint64 width = widthFor(bits);
  m_out.append(static_cast<char>(Integer | std::countr_zero(width)));
  writeBigEndian(bits, width);
}

void Writer::writeCounted(quint8 marker, quint64 count) {
  if (count < countFollows) {
    m_out.append(static_cast<char>(marker | count));
    return;
  }
  m_out.append(static_cast<char>(marker | countFollows));
  writeInteger(PropertyListValue(count));
}

void Writer::writeString(const QString& text) {
  const bool isAscii = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
  writeCounted(isAscii ? AsciiString : Utf16String, static_cast<quint64>(text.size()));
  if (isAscii) {
    m_out += text.toLatin1();
    return;
  }
  const qsizetype start = m_out.size();
  m_out.resize(start + text.size() * 2);
  qToBigEndian<char16_t>(text.utf16(), text.size(), m_out.data() + start);
}

void Writer::writeCollection(const Object& object) {
  const bool isDictionary = object.value->isDictionary();
  const qsizetype count = isDictionary ? object.value->dictionary().size() : object.value->array().size();
  writeCounted(isDictionary ? Dictionary : Array, static_cast<quint64>(count));
  const size_t references = static_cast<size_t>(count) * (isDictionary ? 2 : 1);
  for (size_t i = 0; i < references; ++i) writeBigEndian(m_references[object.firstReference + i], m_referenceWidth);
}

void Writer::writeObject(const Object& object) {
  if (object.key) return writeString(*object.key);
  const PropertyListValue& value = *object.value;
  if (value.isArray() || value.isDictionary()) {
    writeCollection(object);
  } else if (value.isBool()) {
    m_out.append(static_cast<char>(value.boolValue() ? True : False));
  } else if (value.isInteger()) {
    writeInteger(value);
  } else if (value.isData()) {
    writeCounted(Data, static_cast<quint64>(value.data().size()));
    m_out += value.data();
  } else {
    const auto date = value.date();
    m_out.append(static_cast<char>((date ? DateMarker : Real) | 3));
    writeBigEndian(std::bit_cast<quint64>(date ? date->timeIntervalSinceReferenceDate() : value.doubleValue()), 8);
  }
}

void Writer::writeTable(const std::vector<quint64>& offsets) {
  const auto tableOffset = static_cast<quint64>(m_out.size());
  const quint64 offsetWidth = widthFor(tableOffset);
  for (const quint64 offset : offsets) writeBigEndian(offset, offsetWidth);
  m_out.append(static_cast<qsizetype>(offsetWidthField), '\0');
  writeBigEndian(offsetWidth, 1);
  writeBigEndian(m_referenceWidth, 1);
  writeBigEndian(offsets.size(), 8);
  writeBigEndian(0, 8);  // the top object is the first
  writeBigEndian(tableOffset, 8);
}

std::optional<QByteArray> Writer::write(const PropertyListValue& value, Error* error) {
  if (!collect(value)) {
    fail(error, writeError(m_problem, m_path));
    return std::nullopt;
  }
  m_referenceWidth = widthFor(m_objects.size());
  m_out = "bplist00";
  std::vector<quint64> offsets;
  offsets.reserve(m_objects.size());
  for (const Object& object : m_objects) {
    offsets.push_back(static_cast<quint64>(m_out.size()));
    writeObject(object);
  }
  writeTable(offsets);
  return m_out;
}

}  // namespace

std::optional<QByteArray> writeBinary(const PropertyListValue& value, Error* error) {
  return Writer().write(value, error);
}

}  // namespace quillo::PropertyListCoding
