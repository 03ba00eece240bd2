#include "exchange/TextFilesSource.h"

#include "exchange/FrontMatter.h"
#include "foundation/FileContents.h"
#include "foundation/TimeZone.h"
#include "foundation/Utf8.h"
#include "qlcore/EntryFields.h"
#include "qlcore/Hashtags.h"
#include "qlcore/StorableValues.h"

#include <QDateTime>
#include <QDir>
#include <QUuid>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int deepestFolder = 64;
constexpr qsizetype largestNote = qsizetype{64} * 1024 * 1024;

// Of identifiers that are made of paths.
constexpr QUuid pathNamespace(0x6f0c8b52, 0x41d7, 0x4e0a, 0x9b, 0x1e, 0x5a, 0x34, 0x7c, 0x92, 0xd8, 0x03);

QString uuidOfPath(const QString& path) {
  return QUuid::createUuidV5(pathNamespace, path).toString(QUuid::WithoutBraces).toUpper();
}

std::optional<ZonedDate> dateOf(const FrontMatter& matter, const QFileInfo& info) {
  if (matter.moment) return zonedDate(*matter.moment, matter.timeZone);
  const auto named = WrittenMoment::inFileName(info.completeBaseName());
  if (auto date = named ? zonedDate(*named, matter.timeZone) : std::nullopt) return date;
  const Date written = toWholeSecond(Date::fromDateTime(info.lastModified()));
  return ZonedDate{written, TimeZone::systemTimeZone().name()};
}

// A title that the text does not begin with is a part of what was written.
QString textOf(const Note& note, const FrontMatter& matter) {
  if (matter.title.isEmpty() || note.text.left(matter.title.size() + 10).contains(matter.title)) return note.text;
  return u"# "_s + matter.title + u"\n\n"_s + note.text;
}

PropertyListArray tagList(const QStringList& tags) {
  PropertyListArray list;
  for (const QString& tag : tags) list << storableText(tag);
  return list;
}

}  // namespace

bool TextFilesSource::isWanted(const QString& name) const {
  return std::any_of(m_options.endings.begin(), m_options.endings.end(),
                     [&](const QString& ending) { return name.endsWith(ending, Qt::CaseInsensitive); });
}

ImportItem TextFilesSource::entryOf(const QFileInfo& info, const QString& file) const {
  const QString path = info.filePath();
  NoteFault fault;
  const auto note = readNote(file, &fault);
  if (!note) return ImportProblem{{path, fault.line}, fault.reason};
  const FrontMatter matter = note->frontMatter.value_or(FrontMatter());
  const QString text = storableText(textOf(*note, matter));
  if (!matter.uuid && text.trimmed().isEmpty()) return ImportPassedBy{{path, 0}, u"there is no text in it"_s};
  const auto date = dateOf(matter, info);
  if (!date) return ImportProblem{{path, 1}, u"its date is outside the years 1 to 9999"_s};

  const QString uuid = matter.uuid.value_or(uuidOfPath(info.canonicalFilePath()));
  QStringList tags = matter.tags;
  if (!matter.uuid && m_options.makesTagsOfHashtags)
    for (const QString& tag : hashtags(text))
      if (!tags.contains(tag, Qt::CaseInsensitive)) tags << tag;
  // A zone that is told and not known here may be known elsewhere.
  const QString zone = matter.timeZone.isEmpty() ? date->timeZone : storableText(matter.timeZone);
  PropertyListDictionary fields{{EntryFields::uuid, uuid},
                                {EntryFields::text, text},
                                {EntryFields::creationDate, date->date},
                                {EntryFields::timeZone, zone},
                                {EntryFields::tags, tagList(tags)}};
  if (matter.location) fields.insert(EntryFields::location, matter.location->toPropertyList());
  if (matter.weather) fields.insert(EntryFields::weather, matter.weather->toPropertyList());
  return ImportedEntry{{path, 1}, uuid, fields, false};
}

ImportItem TextFilesSource::itemOf(const QFileInfo& info) const {
  const QString path = info.filePath();
  Error error;
  const auto bytes = contentsOfFile(path, &error);
  if (!bytes) return ImportProblem{{path, 0}, error.localizedDescription};
  if (bytes->size() > largestNote) return ImportProblem{{path, 0}, u"it is longer than 64 MiB"_s};
  if (const qsizetype at = firstInvalidUtf8Byte(*bytes); at >= 0) {
    const int line = 1 + static_cast<int>(std::count(bytes->begin(), bytes->begin() + at, '\n'));
    return ImportProblem{{path, line}, u"it is no UTF-8 text"_s};
  }
  return entryOf(info, QString::fromUtf8(*bytes));
}

bool TextFilesSource::takeItem(const QFileInfo& info, int depth, const ImportTaker& take) const {
  const ImportPlace place{info.filePath(), 0};
  if (info.isSymLink()) return take(ImportPassedBy{place, u"it is a link, which is not followed"_s});
  if (!info.isDir()) return !isWanted(info.fileName()) || take(itemOf(info));
  if (depth >= deepestFolder) return take(ImportProblem{place, u"there are too many folders within each other"_s});
  return takeFolder(info.filePath(), depth + 1, take);
}

// Ends at the deepest folder; links, which alone could lead back up, are not followed.
bool TextFilesSource::takeFolder(const QString& path, int depth, const ImportTaker& take) const {
  if (!QFileInfo(path).isReadable()) return take(ImportProblem{{path, 0}, u"the folder cannot be read"_s});
  const auto items = QDir(path).entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
  return std::all_of(items.begin(), items.end(), [&](const QFileInfo& item) { return takeItem(item, depth, take); });
}

void TextFilesSource::forEach(const ImportTaker& take) {
  const QFileInfo info(m_path);
  if (info.isDir())
    takeFolder(m_path, 0, take);
  else
    take(itemOf(info));
}

}  // namespace quillo
