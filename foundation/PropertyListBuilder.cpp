#include "foundation/PropertyListCoding.h"

#include <QHash>

namespace quillo::PropertyListCoding {

using namespace Qt::StringLiterals;

// Which strings are worth sharing, and how many are remembered: enough for the keys of any list made by a program,
// little enough that a text made of different words costs nothing more.
static constexpr qsizetype longestSharedString = 64;
static constexpr qsizetype mostSharedStrings = 65536;

bool Builder::refuse(const QString& problem) {
  m_problem = problem;
  return false;
}

bool Builder::take(qint64 bytes) {
  return m_memory.take(bytes) || refuse(u"its values would take too much memory"_s);
}

std::optional<PropertyListValue> Builder::shared(const QString& text) {
  const bool isShort = text.size() <= longestSharedString;
  if (const auto known = isShort ? m_strings.constFind(text) : m_strings.cend(); known != m_strings.cend())
    return *known;
  if (!take(MemoryAllowance::string + text.size() * 2)) return std::nullopt;
  const PropertyListValue value(text);
  if (isShort && m_strings.size() < mostSharedStrings) m_strings.insert(text, value);
  return value;
}

bool Builder::begin(bool dictionary) {
  if (m_result) return refuse(u"there is more than one top value"_s);
  if (isInDictionary() && !m_open.back().hasKey) return refuse(u"a value has no key"_s);
  if (m_open.size() >= PropertyListSerialization::maximumDepth) return refuse(u"collections are nested too deeply"_s);
  m_open.emplace_back().isDictionary = dictionary;
  return take(dictionary ? MemoryAllowance::dictionary : MemoryAllowance::array);
}

bool Builder::beginArray() {
  return begin(false);
}

bool Builder::beginDictionary() {
  return begin(true);
}

bool Builder::setKey(const QString& key) {
  if (!isInDictionary()) return refuse(u"a key stands outside of a dictionary"_s);
  Collection& collection = m_open.back();
  if (collection.hasKey) return refuse(u"the key \"%1\" has no value"_s.arg(collection.key.left(100)));
  const auto text = shared(key);
  if (!text) return false;
  collection.key = text->string();
  collection.hasKey = true;
  return true;
}

bool Builder::add(const PropertyListValue& value) {
  if (m_result) return refuse(u"there is more than one top value"_s);
  if (m_open.empty()) {
    m_result = value;
    return true;
  }
  Collection& collection = m_open.back();
  if (!collection.isDictionary) {
    collection.items.append(value);
    return take(MemoryAllowance::item);
  }
  if (!collection.hasKey) return refuse(u"a value has no key"_s);
  collection.entries.insert(collection.key, value);
  collection.hasKey = false;
  return take(MemoryAllowance::entry);
}

bool Builder::addString(const QString& text) {
  const auto value = shared(text);
  return value && add(*value);
}

bool Builder::endCollection() {
  static const PropertyListValue emptyArray{PropertyListArray()};
  static const PropertyListValue emptyDictionary{PropertyListDictionary()};
  Collection& collection = m_open.back();
  if (collection.hasKey) return refuse(u"the key \"%1\" has no value"_s.arg(collection.key.left(100)));
  PropertyListValue value;
  if (collection.isDictionary) {
    value = collection.entries.isEmpty() ? emptyDictionary : PropertyListValue(collection.entries);
  } else {
    // Growing left up to as much room again.
    if (!collection.items.isEmpty()) collection.items.squeeze();
    value = collection.items.isEmpty() ? emptyArray : PropertyListValue(collection.items);
  }
  m_open.pop_back();
  return add(value);
}

}  // namespace quillo::PropertyListCoding
