#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <utility>

namespace quillo {

template <typename T>
struct StringMapEntry {
  QString key;
  T value;
  bool operator==(const StringMapEntry&) const = default;
};

// A map from strings to values in the order of the keys, with the interface of QMap as far as it is needed. The entries
// lie in one block, sorted, so that a small map is one allocation and a walk through it touches memory in order. Shared
// and copied on writing. Adding a key in the middle moves those behind it: large maps are made of all their entries at
// once, or in the order of the keys.
template <typename T>
class StringMap {
 public:
  using Entry = StringMapEntry<T>;
  using Entries = QList<Entry>;

  // Stands for the value; the key is beside it.
  class const_iterator {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = const T*;
    using reference = const T&;

    const_iterator() = default;
    [[nodiscard]] const QString& key() const { return m_entry->key; }
    [[nodiscard]] const T& value() const { return m_entry->value; }
    const T& operator*() const { return m_entry->value; }
    const T* operator->() const { return &m_entry->value; }
    const_iterator& operator++() { return ++m_entry, *this; }
    const_iterator operator++(int) { return const_iterator(m_entry++); }
    const_iterator& operator--() { return --m_entry, *this; }
    const_iterator operator--(int) { return const_iterator(m_entry--); }
    const_iterator& operator+=(difference_type count) { return m_entry += count, *this; }
    const_iterator& operator-=(difference_type count) { return m_entry -= count, *this; }
    friend const_iterator operator+(const_iterator it, difference_type count) { return it += count; }
    friend const_iterator operator+(difference_type count, const_iterator it) { return it += count; }
    friend const_iterator operator-(const_iterator it, difference_type count) { return it -= count; }
    friend difference_type operator-(const_iterator a, const_iterator b) { return a.m_entry - b.m_entry; }
    const T& operator[](difference_type at) const { return m_entry[at].value; }
    friend auto operator<=>(const const_iterator&, const const_iterator&) = default;

   private:
    friend class StringMap;
    explicit const_iterator(const Entry* entry) : m_entry(entry) {}
    const Entry* m_entry{nullptr};
  };

  StringMap() = default;
  // Of equal keys the last counts.
  StringMap(std::initializer_list<std::pair<QString, T>> entries) {
    Entries list;
    list.reserve(static_cast<qsizetype>(entries.size()));
    for (const auto& [key, value] : entries) list.append(Entry{key, value});
    *this = fromEntries(std::move(list));
  }
  // The entries in any order; of equal keys the last counts.
  [[nodiscard]] static StringMap fromEntries(Entries entries);

  [[nodiscard]] qsizetype size() const { return m_entries.size(); }
  [[nodiscard]] bool isEmpty() const { return m_entries.isEmpty(); }
  [[nodiscard]] const_iterator begin() const { return const_iterator(m_entries.constData()); }
  [[nodiscard]] const_iterator end() const { return const_iterator(m_entries.constData() + m_entries.size()); }

  [[nodiscard]] const_iterator cbegin() const { return begin(); }
  [[nodiscard]] const_iterator cend() const { return end(); }

  [[nodiscard]] const_iterator find(QAnyStringView key) const {
    const auto at = place(key);
    return const_iterator(m_entries.constData() + (isAt(at, key) ? at : m_entries.size()));
  }
  [[nodiscard]] bool contains(QAnyStringView key) const { return isAt(place(key), key); }
  [[nodiscard]] T value(QAnyStringView key, const T& otherwise = T()) const {
    const auto at = place(key);
    return isAt(at, key) ? m_entries[at].value : otherwise;
  }
  [[nodiscard]] QStringList keys() const {
    QStringList keys;
    keys.reserve(size());
    for (const Entry& entry : m_entries) keys.append(entry.key);
    return keys;
  }

  // Replaces the value of a key that is there.
  void insert(const QString& key, T value) { (*this)[key] = std::move(value); }
  // All of `other`, over what is here.
  void insert(const StringMap& other) {
    if (isEmpty()) {
      *this = other;
      return;
    }
    for (const Entry& entry : other.m_entries) insert(entry.key, entry.value);
  }
  // The value of a key, added where it is missing.
  T& operator[](const QString& key) {
    const auto at = place(key);
    if (!isAt(at, key)) m_entries.insert(at, Entry{key, T()});
    return m_entries[at].value;
  }
  void clear() { m_entries.clear(); }
  bool remove(QAnyStringView key) {
    const auto at = place(key);
    if (!isAt(at, key)) return false;
    m_entries.removeAt(at);
    return true;
  }
  // Those of which `isGone(key, value)` says so; returns how many.
  template <typename Predicate>
  qsizetype removeIf(Predicate isGone) {
    const auto gone = [&](const Entry& entry) { return isGone(entry.key, entry.value); };
    // Nothing is copied where nothing goes.
    return std::any_of(m_entries.cbegin(), m_entries.cend(), gone) ? m_entries.removeIf(gone) : 0;
  }

  bool operator==(const StringMap& other) const { return m_entries == other.m_entries; }

 private:
  // Where the key is, or would be.
  [[nodiscard]] qsizetype place(QAnyStringView key) const {
    // Keys mostly come in their order.
    if (m_entries.isEmpty() || QAnyStringView::compare(m_entries.constLast().key, key) < 0) return m_entries.size();
    const auto before = [](const Entry& entry, QAnyStringView wanted) {
      return QAnyStringView::compare(entry.key, wanted) < 0;
    };
    return std::lower_bound(m_entries.cbegin(), m_entries.cend(), key, before) - m_entries.cbegin();
  }
  [[nodiscard]] bool isAt(qsizetype at, QAnyStringView key) const { return at < size() && m_entries[at].key == key; }

  Entries m_entries;  // sorted, every key once
};

template <typename T>
StringMap<T> StringMap<T>::fromEntries(Entries entries) {
  const auto notBefore = [](const Entry& a, const Entry& b) { return !(a.key < b.key); };
  StringMap map;
  // Writers sort them, so this is all there is to do mostly.
  if (std::adjacent_find(entries.cbegin(), entries.cend(), notBefore) != entries.cend()) {
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
    // From the end, as of equal keys the last stays.
    const auto kept = std::unique(entries.rbegin(), entries.rend(), [](const Entry& a, const Entry& b) {
                        return a.key == b.key;
                      }).base();
    entries.erase(entries.begin(), kept);
  }
  map.m_entries = std::move(entries);
  return map;
}

}  // namespace quillo

// A growing list may move as bytes what its parts allow.
template <typename T>
class QTypeInfo<quillo::StringMapEntry<T>> : public QTypeInfoMerger<quillo::StringMapEntry<T>, QString, T> {};
