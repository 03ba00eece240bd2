#include "qlcore/conflicts/VersionMerge.h"

#include "qlcore/EntryFields.h"
#include "qlcore/StorableValues.h"

#include <QSet>

#include <algorithm>

namespace quillo {

QString EntryVersion::text() const {
  return fields ? storableText(fields->value(EntryFields::text).string()) : QString();
}

QStringList EntryVersion::tags() const {
  QStringList tags;
  if (!fields) return tags;
  for (const auto& tag : fields->value(EntryFields::tags).array())
    if (tag.isString() && !tag.string().isEmpty()) tags << storableText(tag.string());
  return tags;
}

Date EntryVersion::modificationDate() const {
  constexpr double yearOne = -63'113'904'000;
  return fields ? storableDate(fields->value(EntryFields::modificationDate)).value_or(Date(yearOne)) : Date(yearOne);
}

namespace VersionMerge {

namespace {

// The first's, then those of the second that it lacks; compared without case, as tags are.
PropertyListArray tagsOfBoth(const PropertyListArray& first, const PropertyListArray& second) {
  PropertyListArray tags = first;
  for (const auto& tag : second) {
    const bool isThere = std::any_of(first.begin(), first.end(), [&](const auto& known) {
      if (known.isString() != tag.isString()) return false;
      return tag.isString() ? known.string().compare(tag.string(), Qt::CaseInsensitive) == 0 : known == tag;
    });
    if (!isThere) tags << tag;
  }
  return tags;
}

// Kept for the entry by us, not written by anybody.
bool isBookkeeping(QStringView key) {
  return key == EntryFields::uuid || key == EntryFields::modificationDate || key == EntryFields::weather;
}

}  // namespace

PropertyListDictionary fieldsOfBoth(const PropertyListDictionary& first, const PropertyListDictionary& second) {
  PropertyListDictionary both = first;
  for (auto field = second.begin(); field != second.end(); ++field)
    if (!both.contains(field.key())) both.insert(field.key(), field.value());
  const auto tags = tagsOfBoth(first.value(EntryFields::tags).array(), second.value(EntryFields::tags).array());
  if (!tags.isEmpty()) both.insert(EntryFields::tags, tags);
  const auto one = storableDate(first.value(EntryFields::modificationDate));
  const auto other = storableDate(second.value(EntryFields::modificationDate));
  if (other && (!one || *one < *other)) both.insert(EntryFields::modificationDate, *other);
  return both;
}

std::optional<PropertyListDictionary> byItself(const PropertyListDictionary& first,
                                               const PropertyListDictionary& second,
                                               const std::optional<QString>& ancestor) {
  for (auto field = second.begin(); field != second.end(); ++field) {
    const QString& key = field.key();
    if (key == EntryFields::text || key == EntryFields::tags || isBookkeeping(key) || !first.contains(key)) continue;
    if (first.value(key) != field.value()) return std::nullopt;
  }
  // What is no text is for nobody to judge.
  const PropertyListValue one = first.value(EntryFields::text);
  const PropertyListValue other = second.value(EntryFields::text);
  PropertyListDictionary both = fieldsOfBoth(first, second);
  if (one == other) return both;
  if (!ancestor || !one.isString() || !other.isString()) return std::nullopt;
  const MergedText merged = mergeTexts(*ancestor, one.string(), other.string());
  if (merged.hasClash) return std::nullopt;
  both.insert(EntryFields::text, merged.text);
  return both;
}

PropertyListDictionary ofThree(const PropertyListDictionary& base, const PropertyListDictionary& ours,
                               const PropertyListDictionary& theirs) {
  // Of those that both have: of a field that one took out, nothing.
  PropertyListDictionary merged = fieldsOfBoth(ours, theirs);
  const PropertyListDictionary all = merged;
  const auto isSame = [](const PropertyListDictionary& one, const PropertyListDictionary& other, const QString& key) {
    return one.contains(key) == other.contains(key) && one.value(key) == other.value(key);
  };
  const auto take = [&merged](const PropertyListDictionary& fields, const QString& key) {
    if (fields.contains(key))
      merged.insert(key, fields.value(key));
    else
      merged.remove(key);
  };
  for (auto field = all.begin(); field != all.end(); ++field) {
    const QString& key = field.key();
    if (key == EntryFields::modificationDate) continue;
    if (isSame(theirs, base, key))
      take(ours, key);
    else if (isSame(ours, base, key))
      take(theirs, key);
  }
  const PropertyListValue text = ours.value(EntryFields::text);
  const PropertyListValue other = theirs.value(EntryFields::text);
  if (!text.isString() || !other.isString()) return merged;
  const PropertyListValue before = base.value(EntryFields::text);
  const MergedText both = before.isString() ? mergeTexts(before.string(), text.string(), other.string())
                                            : unitedTexts(text.string(), other.string());
  merged.insert(EntryFields::text, both.text);
  return merged;
}

MergedText texts(const EntryVersions& entry, const std::optional<QString>& ancestor) {
  MergedText merged;
  bool isFirst = true;
  for (const EntryVersion& version : entry.versions) {
    if (!version.isWhole()) continue;
    const QString text = version.text();
    if (std::exchange(isFirst, false)) {
      merged.text = text;
      continue;
    }
    const MergedText next = ancestor ? mergeTexts(*ancestor, merged.text, text) : unitedTexts(merged.text, text);
    merged = {next.text, merged.hasClash || next.hasClash};
  }
  return merged;
}

}  // namespace VersionMerge
}  // namespace quillo
