#include "exchange/TextEntry.h"

#include "qlcore/EntryFields.h"
#include "qlcore/Hashtags.h"
#include "qlcore/StorableValues.h"

#include <QSet>
#include <QUuid>

namespace quillo {

QString uuidOfPlace(const QString& place) {
  constexpr QUuid places(0x6f0c8b52, 0x41d7, 0x4e0a, 0x9b, 0x1e, 0x5a, 0x34, 0x7c, 0x92, 0xd8, 0x03);
  return QUuid::createUuidV5(places, place).toString(QUuid::WithoutBraces).toUpper();
}

void TextEntry::addTags(const QStringList& more) {
  QSet<QString> known;
  for (const QString& tag : tags) known.insert(tag.toCaseFolded());
  for (const QString& tag : more) {
    const qsizetype before = known.size();
    known.insert(tag.toCaseFolded());
    if (known.size() > before && !tag.isEmpty()) tags << tag;
  }
}

void TextEntry::addHashtags() {
  addTags(hashtags(text));
}

PropertyListDictionary TextEntry::fields() const {
  PropertyListArray list;
  for (const QString& tag : tags) list << storableText(tag);
  PropertyListDictionary fields{{EntryFields::uuid, uuid},
                                {EntryFields::text, storableText(text)},
                                {EntryFields::creationDate, date.date},
                                {EntryFields::timeZone, storableText(date.timeZone)},
                                {EntryFields::tags, list}};
  if (location) fields.insert(EntryFields::location, location->toPropertyList());
  if (weather) fields.insert(EntryFields::weather, weather->toPropertyList());
  return fields;
}

}  // namespace quillo
