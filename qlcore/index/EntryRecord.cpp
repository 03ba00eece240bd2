#include "qlcore/index/EntryRecord.h"

#include "qlcore/EntryFields.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/StorableValues.h"
#include "qlcore/index/SearchMarks.h"
#include "qlcore/index/SearchWords.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QFile>
#include <QVarLengthArray>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QChar tagSeparator(0x1F);

// The database gives no text back that begins with a mark of the byte order: it takes it for one of its own. Nobody
// sees it, and nothing is found by it.
QString withoutFirstMarks(QString text) {
  while (text.startsWith(QChar::ByteOrderMark)) text.remove(0, 1);
  return text;
}

// Takes no more room than it needs: the conversion makes room for three bytes a character, and very many records wait
// at a time.
QByteArray packed(const QString& text) {
  QByteArray bytes = text.toUtf8();
  bytes.squeeze();
  return bytes;
}

// Gathers the words of an entry, and what its words begin with.
class WordGatherer {
 public:
  explicit WordGatherer(const CommonPrefixes& prefixes)
      : m_prefixes(prefixes), m_hasPrefix(static_cast<size_t>(prefixes.all().size()), false) {}

  // Adds the words of `text` to `words`.
  void add(const QString& text, QString& words) {
    SearchWords next(text);
    while (next.next()) {
      const QStringView word = next.folded();
      if (!words.isEmpty()) words += u' ';
      words += word;
      if (next.isCharacter()) continue;
      addInitial(word);
      m_prefixes.find(word, m_hasPrefix);
    }
  }

  void addMarks(QString& marks) const {
    for (const char32_t initial : m_initials) marks += u' ' + SearchMarks::initial(initial);
    for (size_t i = 0; i < m_hasPrefix.size(); ++i)
      if (m_hasPrefix[i]) marks += u' ' + SearchMarks::prefix(m_prefixes.all().at(static_cast<qsizetype>(i)));
  }

 private:
  void addInitial(QStringView word) {
    const bool isPair = word.size() > 1 && word[0].isHighSurrogate() && word[1].isLowSurrogate();
    const char32_t initial = isPair ? QChar::surrogateToUcs4(word[0], word[1]) : word[0].unicode();
    // They are few, so that looking through them is quickest.
    if (!m_initials.contains(initial)) m_initials.append(initial);
  }

  const CommonPrefixes& m_prefixes;
  std::vector<bool> m_hasPrefix;
  QVarLengthArray<char32_t, 64> m_initials;
};

}  // namespace

QString joinedTags(const QStringList& tags) {
  return tags.join(tagSeparator);
}

QStringList partedTags(const QString& joined) {
  return joined.isEmpty() ? QStringList() : joined.split(tagSeparator);
}

QByteArray packedTexts(const QStringList& texts) {
  if (texts.isEmpty()) return {};
  QByteArray packed;
  QDataStream stream(&packed, QIODevice::WriteOnly);
  stream.setVersion(QDataStream::Qt_6_4);
  stream << texts;
  return packed;
}

QStringList unpackedTexts(const QByteArray& packed) {
  QStringList texts;
  QDataStream stream(packed);
  stream.setVersion(QDataStream::Qt_6_4);
  if (!packed.isEmpty()) stream >> texts;
  return texts;
}

EntryWords EntryWords::of(const QStringList& texts, const QStringList& tags, const QString& place, QDate day,
                          const CommonPrefixes& prefixes) {
  WordGatherer gatherer(prefixes);
  EntryWords words;
  QString joined;
  joined.reserve(texts.first().size() + texts.first().size() / 8);
  for (const QString& text : texts) {
    // Keeps a phrase from reaching from one into the next.
    if (!joined.isEmpty()) joined += u' ' + SearchMarks::everyEntry();
    gatherer.add(text, joined);
  }
  words.text = packed(joined);

  QString marks = SearchMarks::everyEntry();
  QString tagWords;
  for (const QString& tag : tags) {
    // Keeps a phrase from reaching from one tag into the next.
    if (!tagWords.isEmpty()) tagWords += u' ' + SearchMarks::everyEntry();
    gatherer.add(tag, tagWords);
    marks += u' ' + SearchMarks::tag(tag);
  }
  words.tags = packed(tagWords);
  QString placeWords;
  gatherer.add(place, placeWords);
  words.place = packed(placeWords);

  marks += u' ' + SearchMarks::dayOfYear(day) + u' ' + SearchMarks::year(day);
  gatherer.addMarks(marks);
  words.marks = packed(marks);
  return words;
}

QByteArray EntryRecord::computedDigest() const {
  QByteArray fixed;
  QDataStream stream(&fixed, QIODevice::WriteOnly);
  stream.setVersion(QDataStream::Qt_6_4);
  stream << creation.timeIntervalSinceReferenceDate() << modification.timeIntervalSinceReferenceDate()
         << day.toJulianDay();
  QCryptographicHash hash(QCryptographicHash::Sha1);
  for (const QByteArray& part : {tags.toUtf8(), place.toUtf8(), details, text, others}) {
    stream << part.size();
    hash.addData(part);
  }
  hash.addData(fixed);
  return hash.result().first(8);
}

EntryWords EntryRecord::computedWords(const CommonPrefixes& prefixes) const {
  return EntryWords::of(QStringList(QString::fromUtf8(text)) + unpackedTexts(others), partedTags(tags), place, day,
                        prefixes);
}

IndexedEntry EntryRecord::toEntry() const {
  IndexedEntry entry;
  entry.uuid = file.key.uuidText();
  entry.fileName = QString::fromLatin1(file.key.fileName());
  entry.creationDate = creation;
  entry.modificationDate = modification;
  entry.day = day;
  entry.text = QString::fromUtf8(text);
  // The conversion takes it for none of the text.
  if (text.startsWith("\xEF\xBB\xBF")) entry.text.prepend(QChar::ByteOrderMark);
  entry.tags = partedTags(tags);
  entry.otherVersions = unpackedTexts(others).size();
  QDataStream stream(details);
  stream.setVersion(QDataStream::Qt_6_4);
  bool hasLocation = false;
  bool hasWeather = false;
  bool hasWeatherDate = false;
  stream >> entry.timeZone >> hasLocation;
  if (hasLocation) {
    entry.location = QLLocation{0, 0, place};
    stream >> entry.location->latitude >> entry.location->longitude;
  }
  stream >> hasWeather;
  if (hasWeather) {
    QLWeather weather;
    double date = 0;
    stream >> weather.temperature >> weather.symbolCode >> weather.text >> weather.provider >> hasWeatherDate >> date;
    if (hasWeatherDate) weather.date = Date(date);
    entry.weather = weather;
  }
  return entry;
}

QDate EntryReader::localDay(Date date, const QString& zone) {
  // Names come from files that others write; there are six hundred zones.
  constexpr qsizetype mostZones = 1000;
  if (m_zones.size() > mostZones) m_zones.clear();
  auto known = m_zones.constFind(zone);
  if (known == m_zones.constEnd()) known = m_zones.insert(zone, TimeZone::timeZoneWithName(zone));
  const auto seconds = static_cast<qint64>(std::floor(date.timeIntervalSince1970()));
  const std::optional<TimeZone>& found = *known;
  const qint64 reading = seconds + (found ? found->secondsFromUTC(seconds) : 0);
  constexpr qint64 secondsPerDay = 86'400;
  const qint64 days = reading / secondsPerDay - (reading % secondsPerDay < 0 ? 1 : 0);
  return QDate(1970, 1, 1).addDays(days);
}

EntryRecord EntryReader::record(const QLJournalEntryFile& entry, const StampedFile& file, const QStringList& others) {
  EntryRecord record;
  record.others = packedTexts(others);
  record.file = file;
  record.creation = entry.creationDate();
  record.modification = entry.modificationDate();
  record.day = localDay(entry.creationDate(), entry.timeZone());
  record.tags = withoutFirstMarks(joinedTags(entry.tags()));
  const auto location = entry.location();
  const auto weather = entry.weather();
  record.place = location ? withoutFirstMarks(location->placeName) : QString();
  record.text = packed(entry.string());
  QDataStream stream(&record.details, QIODevice::WriteOnly);
  stream.setVersion(QDataStream::Qt_6_4);
  stream << entry.timeZone() << location.has_value();
  if (location) stream << location->latitude << location->longitude;
  stream << weather.has_value();
  if (weather)
    stream << weather->temperature << weather->symbolCode << weather->text << weather->provider
           << weather->date.has_value() << weather->date.value_or(Date()).timeIntervalSinceReferenceDate();
  record.digest = record.computedDigest();
  record.words = record.computedWords(m_prefixes);
  return record;
}

std::vector<CopyReading> EntryReader::readCopies(const EntryFileKey& key) const {
  std::vector<CopyReading> copies;
  if (m_copies.isEmpty()) return copies;
  // However they were found, an entry with the same copies is the same.
  QList<QByteArray> names = m_copies.value(key.uuidBytes());
  std::sort(names.begin(), names.end());
  for (const QByteArray& name : std::as_const(names)) {
    const qint64 now = EntryFileStamp::now();
    const auto stamp = EntryFileStamp::of(m_descriptor, name);
    if (!stamp) continue;
    const auto fields = EntryFields::read(m_folder, QFile::decodeName(name), nullptr);
    const QString text = fields ? storableText(fields->value(EntryFields::text).string()) : QString();
    copies.push_back({name, stamp->trustedAt(now), text});
  }
  return copies;
}

FileReading EntryReader::read(const QByteArray& name) {
  FileReading reading;
  reading.name = name;
  const QString path = m_folder.path() + u'/' + QFile::decodeName(name);
  const auto key = EntryFileKey::fromName(name);
  const QByteArray other = key ? EntryFileKey{key->uuid, false}.fileName() : QByteArray();
  const bool hasOther = key && key->isLowerCase && EntryFileStamp::of(m_descriptor, other);
  if (key && !hasOther) reading.copies = readCopies(*key);
  // Before the file is read: what is written from now on gives it another stamp, unless the clock of the file system
  // stands still meanwhile.
  const qint64 now = EntryFileStamp::now();
  const auto stamp = EntryFileStamp::of(m_descriptor, name);
  if (!stamp) {
    reading.isGone = true;
    return reading;
  }
  reading.stamp = stamp->trustedAt(now);
  if (!key) {
    reading.damage = path + u": the name is not an entry's identifier"_s;
  } else if (hasOther) {
    reading.damage = path + u": the entry has another file, "_s + QString::fromLatin1(other);
    reading.stamp = {};
  } else {
    readEntry(reading, *key);
  }
  return reading;
}

void EntryReader::readEntry(FileReading& reading, const EntryFileKey& key) {
  Error error;
  if (const auto entry = QLJournalEntryFile::entryInFolder(m_folder, key.uuidText(), &error)) {
    QStringList others;
    for (const CopyReading& copy : *reading.copies) others << copy.text;
    reading.entry = record(*entry, {key, reading.stamp}, others);
    return;
  }
  reading.isGone = error.code == JournalError::EntryNotFound;
  reading.damage = error.localizedDescription;
  // A failing disk or a lack of descriptors may be over the next time.
  if (error.code != JournalError::EntryDamaged) reading.stamp = reading.stamp.distrusted();
}

}  // namespace quillo
