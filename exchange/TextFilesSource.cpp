#include "exchange/TextFilesSource.h"

#include "exchange/FrontMatter.h"
#include "exchange/TextEntry.h"
#include "foundation/FileContents.h"
#include "foundation/TimeZone.h"
#include "foundation/Utf8.h"
#include "qlcore/StorableValues.h"

#include <QDateTime>
#include <QDir>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int deepestFolder = 64;
constexpr qsizetype largestNote = qsizetype{64} * 1024 * 1024;

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

  TextEntry entry{matter.uuid.value_or(uuidOfPlace(info.canonicalFilePath())),
                  text,
                  *date,
                  matter.tags,
                  matter.location,
                  matter.weather};
  // A zone that is told and not known here may be known elsewhere.
  if (!matter.timeZone.isEmpty()) entry.date.timeZone = matter.timeZone;
  if (!matter.uuid && m_options.makesTagsOfHashtags) entry.addHashtags();
  return ImportedEntry{{path, 1}, entry.uuid, entry.fields(), false};
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
