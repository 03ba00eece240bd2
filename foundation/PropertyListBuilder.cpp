#include "foundation/PropertyListCoding.h"

#include <cstring>
#include <iterator>

namespace quillo::PropertyListCoding {

using namespace Qt::StringLiterals;

// Mixes all characters, eight bytes at a time. Strings that are made to meet in one place are only made anew.
static size_t mixedCharacters(QStringView text) {
  constexpr quint64 odd = 0x9E3779B97F4A7C15;
  auto mixed = static_cast<quint64>(text.size()) * odd;
  const auto mix = [&mixed](quint64 bits) {
    mixed = (mixed ^ bits) * odd;
    mixed ^= mixed >> 32;
  };
  qsizetype at = 0;
  quint64 bits = 0;
  for (; at + 4 <= text.size(); at += 4) {
    std::memcpy(&bits, text.utf16() + at, 8);
    mix(bits);
  }
  bits = 0;
  for (; at < text.size(); ++at) bits = bits << 16 | text.utf16()[at];
  mix(bits);
  return mixed;
}

QString RecentStrings::shared(QStringView text, bool* isNew) {
  if (isNew) *isNew = true;
  if (text.size() > longest) return text.toString();
  if (!m_places) m_places = std::make_unique<Place[]>(places);
  const size_t mixed = mixedCharacters(text);
  Place& place = m_places[mixed % places];
  if (place.mixed != mixed) {
    // Kept only once it comes again: most strings never do, and would push out those that do.
    place.mixed = mixed;
    if (!place.string.isNull()) place.string = QString();
  } else if (!place.string.isNull() && place.string == text) {
    if (isNew) *isNew = false;
    return place.string;
  } else {
    place.string = text.isEmpty() ? u""_s : text.toString();
    return place.string;
  }
  return text.toString();
}

QString sharedKey(QStringView text, bool* isNew) {
  static thread_local RecentStrings keys;
  return keys.shared(text, isNew);
}

bool Builder::refuse(const QString& problem) {
  m_problem = problem;
  return false;
}

bool Builder::refuseKeyWithoutValue() {
  return refuse(u"the key \"%1\" has no value"_s.arg(m_entries.constLast().key.left(100)));
}

bool Builder::take(qint64 bytes) {
  return m_memory.take(bytes) || refuse(u"its values would take too much memory"_s);
}

bool Builder::begin(bool dictionary) {
  if (m_result) return refuse(u"there is more than one top value"_s);
  if (isInDictionary() && !m_open.back().hasKey) return refuse(u"a value has no key"_s);
  if (m_open.size() >= PropertyListSerialization::maximumDepth) return refuse(u"collections are nested too deeply"_s);
  m_open.push_back({dictionary, false, dictionary ? m_entries.size() : m_items.size()});
  return take(dictionary ? MemoryAllowance::dictionary : MemoryAllowance::array);
}

bool Builder::setKey(QStringView key) {
  if (!isInDictionary()) return refuse(u"a key stands outside of a dictionary"_s);
  Collection& collection = m_open.back();
  if (collection.hasKey) return refuseKeyWithoutValue();
  bool isNew = false;
  m_entries.emplace_back(sharedKey(key, &isNew), PropertyListValue());
  collection.hasKey = true;
  return take(MemoryAllowance::entry + (isNew ? MemoryAllowance::string + key.size() * 2 : 0));
}

bool Builder::add(PropertyListValue value) {
  if (m_result) return refuse(u"there is more than one top value"_s);
  if (m_open.empty()) {
    m_result = std::move(value);
    return true;
  }
  Collection& collection = m_open.back();
  if (!collection.isDictionary) {
    m_items.emplace_back(std::move(value));
    return take(MemoryAllowance::item);
  }
  if (!collection.hasKey) return refuse(u"a value has no key"_s);
  m_entries.back().value = std::move(value);
  collection.hasKey = false;
  return true;
}

bool Builder::addString(QStringView text) {
  bool isNew = false;
  QString string = m_strings.shared(text, &isNew);
  return (!isNew || take(MemoryAllowance::string + text.size() * 2)) && add(std::move(string));
}

// Takes the values from `first` on out of `all`, into a list no larger than it must be.
template <typename T>
static QList<T> takenFrom(QList<T>& all, qsizetype first) {
  constexpr qsizetype many = 4096;
  QList<T> taken;
  if (first == 0 && all.size() > many) {
    // A second block of that size would be needed beside the first for a moment.
    taken.swap(all);
    taken.squeeze();
    return taken;
  }
  taken.reserve(all.size() - first);
  for (auto it = all.begin() + first; it != all.end(); ++it) taken.emplace_back(std::move(*it));
  all.erase(all.begin() + first, all.end());
  return taken;
}

bool Builder::endCollection() {
  const Collection collection = m_open.back();
  if (collection.hasKey) return refuseKeyWithoutValue();
  m_open.pop_back();
  if (!collection.isDictionary)
    return add(collection.first == m_items.size() ? PropertyListArray() : takenFrom(m_items, collection.first));
  return add(collection.first == m_entries.size()
                 ? PropertyListDictionary()
                 : PropertyListDictionary::fromEntries(takenFrom(m_entries, collection.first)));
}

}  // namespace quillo::PropertyListCoding
