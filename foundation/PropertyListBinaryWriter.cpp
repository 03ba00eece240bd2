#include "foundation/PropertyListBinaryFormat.h"
#include "foundation/PropertyListCoding.h"
#include "foundation/PropertyListOutput.h"

#include <QHashSeed>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <vector>

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

// What tells one scalar from another. By kind, as true, 1 and 1.0 are equal as values and must stay apart here, then by
// the text, the bytes, or the bits of a number.
struct Scalar {
  enum Kind : quint8 { String, Bytes, Bool, Signed, Unsigned, RealNumber, Instant };

  Scalar(const PropertyListValue* value, const QString* text) {
    if (text) {
      bytes = {reinterpret_cast<const char*>(text->utf16()), text->size() * 2};
    } else if (value->isData()) {
      kind = Bytes;
      bytes = value->data();
    } else if (value->isReal()) {
      kind = RealNumber;
      bits = std::bit_cast<quint64>(value->doubleValue());
    } else if (const auto date = value->date()) {
      kind = Instant;
      bits = std::bit_cast<quint64>(date->timeIntervalSinceReferenceDate());
    } else {
      kind = value->isBool() ? Bool : value->isUnsigned64() ? Unsigned : Signed;
      bits = value->unsignedIntegerValue();
    }
  }
  [[nodiscard]] size_t hash(size_t seed) const {
    return kind <= Bytes ? qHashBits(bytes.data(), static_cast<size_t>(bytes.size()), seed + kind)
                         : qHashBits(&bits, sizeof bits, seed + kind);
  }
  bool operator==(const Scalar& other) const {
    return kind == other.kind && bits == other.bits && bytes == other.bytes;
  }

  Kind kind{String};
  quint64 bits{0};
  QByteArrayView bytes;
};

// Numbers the objects breadth first, equal scalars once, then writes them in that order. Collections are written as
// often as they occur: comparing them would cost more than it saves.
class Writer {
 public:
  std::optional<QByteArray> write(const PropertyListValue& value, Error* error);

 private:
  static constexpr quint32 none = std::numeric_limits<quint32>::max();

  // A value, or a key of a dictionary.
  struct Object {
    const PropertyListValue* value;
    const QString* text;  // of a string or a key
    quint32 parent;
    quint32 depth;          // in how many collections it lies
    size_t firstReference;  // of a collection, in m_references
  };

  bool collect(const PropertyListValue& top);
  bool collectChildren(quint32 parent);
  bool addValue(const PropertyListValue& value, quint32 parent);
  bool addScalar(const Object& object);
  bool append(Object object);
  void growScalars();
  bool refuse(const QString& problem, quint32 parent, const PropertyListValue& culprit);

  void writeObject(const Object& object);
  void writeCollection(const Object& object);
  void writeString(const QString& text);
  void writeInteger(const PropertyListValue& value);
  void writeCounted(quint8 marker, quint64 count);
  void writeBigEndian(quint64 value, quint64 width);
  void writeByte(int byte) {
    m_out.makeRoom(1);
    m_out.put(static_cast<char>(byte));
  }
  void writeTable(const std::vector<quint64>& offsets);

  std::vector<Object> m_objects;
  std::vector<quint32> m_references;
  // The indexes of the scalars, each in the first place from its hash on that was free; a power of two of places, at
  // least twice as many as there are scalars.
  struct Place {
    quint32 index{none};
    quint32 hash{0};  // enough of it to look at most objects that differ never
  };
  std::vector<Place> m_scalars = std::vector<Place>(256);
  size_t m_scalarCount{0};
  size_t m_seed{QHashSeed::globalSeed()};
  Output m_out;
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

bool Writer::append(Object object) {
  if (m_objects.size() >= none - 1) {
    m_problem = u"it holds too many values"_s;
    return false;
  }
  m_references.push_back(static_cast<quint32>(m_objects.size()));
  object.depth = object.parent == none ? 0 : m_objects[object.parent].depth + 1;
  m_objects.push_back(object);
  return true;
}

void Writer::growScalars() {
  std::vector<Place> larger(m_scalars.size() * 2);
  for (const Place& known : m_scalars) {
    if (known.index == none) continue;
    size_t at = known.hash & (larger.size() - 1);
    while (larger[at].index != none) at = (at + 1) & (larger.size() - 1);
    larger[at] = known;
  }
  m_scalars = std::move(larger);
}

// Once for all that are equal in kind and bits.
bool Writer::addScalar(const Object& object) {
  const Scalar scalar(object.value, object.text);
  const auto hash = static_cast<quint32>(scalar.hash(m_seed));
  size_t at = hash & (m_scalars.size() - 1);
  // There are free places always, and the seed keeps those taken apart.
  for (; m_scalars[at].index != none; at = (at + 1) & (m_scalars.size() - 1)) {
    if (m_scalars[at].hash != hash) continue;
    const Object& known = m_objects[m_scalars[at].index];
    if (!(Scalar(known.value, known.text) == scalar)) continue;
    m_references.push_back(m_scalars[at].index);
    return true;
  }
  m_scalars[at] = {static_cast<quint32>(m_objects.size()), hash};
  if (!append(object)) return false;
  if (++m_scalarCount * 2 > m_scalars.size()) growScalars();
  return true;
}

bool Writer::addValue(const PropertyListValue& value, quint32 parent) {
  if (value.isNull()) return refuse(u"there is a null value"_s, parent, value);
  if (!value.isArray() && !value.isDictionary())
    return addScalar({&value, value.isString() ? &value.string() : nullptr, parent, 0, 0});
  const quint32 depth = parent == none ? 0 : m_objects[parent].depth + 1;
  if (depth >= PropertyListSerialization::maximumDepth)
    return refuse(u"collections are nested too deeply"_s, parent, value);
  return append({&value, nullptr, parent, 0, 0});
}

bool Writer::collectChildren(quint32 parent) {
  const PropertyListValue* value = m_objects[parent].value;
  if (!value) return true;
  m_objects[parent].firstReference = m_references.size();
  for (const auto& item : value->array())
    if (!addValue(item, parent)) return false;
  const auto& entries = value->dictionary();
  for (auto it = entries.begin(); it != entries.end(); ++it)
    if (!addScalar({nullptr, &it.key(), parent, 0, 0})) return false;
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
  m_out.makeRoom(8);
  for (quint64 left = width; left > 0; --left) m_out.put(static_cast<char>(value >> 8 * (left - 1)));
}

void Writer::writeInteger(const PropertyListValue& value) {
  const quint64 bits = value.unsignedIntegerValue();
  if (value.isUnsigned64()) {
    // Eight bytes have a sign, so the largest take sixteen.
    writeByte(Integer | 4);
    writeBigEndian(0, 8);
    writeBigEndian(bits, 8);
    return;
  }
  // The narrow widths have no sign.
  const quint64 width = widthFor(bits);
  writeByte(Integer | std::countr_zero(width));
  writeBigEndian(bits, width);
}

void Writer::writeCounted(quint8 marker, quint64 count) {
  if (count < countFollows) {
    writeByte(marker | count);
    return;
  }
  writeByte(marker | countFollows);
  writeInteger(PropertyListValue(count));
}

void Writer::writeString(const QString& text) {
  const bool isAscii = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
  writeCounted(isAscii ? AsciiString : Utf16String, static_cast<quint64>(text.size()));
  const qsizetype length = text.size() * (isAscii ? 1 : 2);
  m_out.makeRoom(length);
  if (isAscii)
    std::transform(text.begin(), text.end(), m_out.at(), [](QChar c) { return c.toLatin1(); });
  else
    qToBigEndian<char16_t>(text.utf16(), text.size(), m_out.at());
  m_out.moveTo(m_out.at() + length);
}

void Writer::writeCollection(const Object& object) {
  const bool isDictionary = object.value->isDictionary();
  const qsizetype count = isDictionary ? object.value->dictionary().size() : object.value->array().size();
  writeCounted(isDictionary ? Dictionary : Array, static_cast<quint64>(count));
  const size_t references = static_cast<size_t>(count) * (isDictionary ? 2 : 1);
  for (size_t i = 0; i < references; ++i) writeBigEndian(m_references[object.firstReference + i], m_referenceWidth);
}

void Writer::writeObject(const Object& object) {
  if (object.text) return writeString(*object.text);
  const PropertyListValue& value = *object.value;
  if (value.isArray() || value.isDictionary()) {
    writeCollection(object);
  } else if (value.isBool()) {
    writeByte(value.boolValue() ? True : False);
  } else if (value.isInteger()) {
    writeInteger(value);
  } else if (value.isData()) {
    writeCounted(Data, static_cast<quint64>(value.data().size()));
    m_out.append({value.data().constData(), static_cast<size_t>(value.data().size())});
  } else {
    const auto date = value.date();
    writeByte((date ? DateMarker : Real) | 3);
    writeBigEndian(std::bit_cast<quint64>(date ? date->timeIntervalSinceReferenceDate() : value.doubleValue()), 8);
  }
}

void Writer::writeTable(const std::vector<quint64>& offsets) {
  const auto tableOffset = static_cast<quint64>(m_out.size());
  const quint64 offsetWidth = widthFor(tableOffset);
  for (const quint64 offset : offsets) writeBigEndian(offset, offsetWidth);
  m_out.makeRoom(static_cast<qsizetype>(offsetWidthField));
  m_out.fill('\0', static_cast<qsizetype>(offsetWidthField));
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
  m_out.append("bplist00");
  std::vector<quint64> offsets;
  offsets.reserve(m_objects.size());
  for (const Object& object : m_objects) {
    offsets.push_back(static_cast<quint64>(m_out.size()));
    writeObject(object);
  }
  writeTable(offsets);
  return m_out.taken();
}

}  // namespace

std::optional<QByteArray> writeBinary(const PropertyListValue& value, Error* error) {
  return Writer().write(value, error);
}

}  // namespace quillo::PropertyListCoding
