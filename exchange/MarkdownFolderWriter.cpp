#include "exchange/MarkdownFolderWriter.h"

#include "exchange/EntryHeading.h"
#include "exchange/YamlText.h"

#include <QHash>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestWords = 50;

// Signs that no file system and no shell makes anything of.
bool isSafe(QChar c) {
  return c.isLetterOrNumber() || c.isMark() || u" -_'"_s.contains(c);
}

// The first words of the text: letters and digits of any script that are one UTF-16 unit each.
QString firstWords(const QString& text) {
  QString words;
  for (const QChar c : text.left(8 * longestWords).trimmed()) {
    if (c == u'\n' && !words.trimmed().isEmpty()) break;
    if (words.size() > longestWords) break;
    words += isSafe(c) && !c.isSurrogate() ? c : QChar(u' ');
  }
  words = words.simplified().normalized(QString::NormalizationForm_C);
  if (words.size() <= longestWords) return words;
  const qsizetype space = words.lastIndexOf(u' ', longestWords);
  words.truncate(space > longestWords / 2 ? space : longestWords);
  return words.trimmed();
}

QString line(const QString& key, const QString& value) {
  return key + u": "_s + value + u'\n';
}

QString linesOfLocation(const QLLocation& location) {
  QString lines = u"location:\n"_s;
  if (!location.placeName.isEmpty()) lines += line(u"  name"_s, yamlText(location.placeName));
  return lines + line(u"  latitude"_s, EntryHeading::number(location.latitude)) +
         line(u"  longitude"_s, EntryHeading::number(location.longitude));
}

QString linesOfWeather(const QLWeather& weather) {
  QString lines = u"weather:\n"_s + line(u"  temperature"_s, EntryHeading::number(weather.temperature));
  const auto add = [&lines](const QString& key, const QString& value) {
    if (!value.isEmpty()) lines += line(u"  "_s + key, yamlText(value));
  };
  add(u"text"_s, weather.text);
  add(u"symbol"_s, weather.symbolCode);
  add(u"provider"_s, weather.provider);
  if (weather.date) lines += line(u"  date"_s, weather.date->toISO8601());
  return lines;
}

}  // namespace

QByteArray MarkdownFolderWriter::fileOf(const IndexedEntry& entry) {
  QString file = u"---\n"_s + line(u"id"_s, yamlText(entry.uuid));
  file += line(u"date"_s, EntryHeading::isoTime(entry.creationDate, entry.timeZone));
  if (!entry.timeZone.isEmpty()) file += line(u"timezone"_s, yamlText(entry.timeZone));
  QStringList tags;
  for (const QString& tag : entry.tags) tags << yamlText(tag);
  if (!tags.isEmpty()) file += line(u"tags"_s, u'[' + tags.join(u", "_s) + u']');
  if (entry.location) file += linesOfLocation(*entry.location);
  if (entry.weather) file += linesOfWeather(*entry.weather);
  // The text to the letter, between one empty line and one line break.
  return (file + u"---\n\n"_s + entry.text + u'\n').toUtf8();
}

QString MarkdownFolderWriter::nameOf(const IndexedEntry& entry) {
  const QDateTime time = EntryHeading::clockTime(entry.creationDate, entry.timeZone);
  return (time.toString(u"yyyy-MM-dd HHmm "_s) + firstWords(entry.text)).trimmed();
}

bool MarkdownFolderWriter::begin(const ExportOverview&, Error*) {
  return true;
}

bool MarkdownFolderWriter::add(const ExportedEntry& exported, Error* error) {
  const QString name = nameOf(exported.entry);
  const int number = ++m_uses[qHash(name.toCaseFolded())];
  const QString unique = number == 1 ? name : u"%1 (%2)"_s.arg(name).arg(number);
  return m_folder->addFile(unique + u".md"_s, fileOf(exported.entry), error);
}

bool MarkdownFolderWriter::end(Error* error) {
  return m_folder->finish(error);
}

}  // namespace quillo
