#include "exchange/TextFilesSource.h"

#include "exchange/FrontMatter.h"
#include "exchange/SourceFiles.h"
#include "exchange/TextEntry.h"
#include "foundation/TimeZone.h"
#include "qlcore/StorableValues.h"

#include <QDateTime>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

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
  ImportProblem problem;
  const auto bytes = utf8OfFile(info.filePath(), &problem);
  if (!bytes) return problem;
  if (bytes->size() > largestNote) return ImportProblem{{info.filePath(), 0}, u"it is longer than 64 MiB"_s};
  return entryOf(info, QString::fromUtf8(*bytes));
}

void TextFilesSource::forEach(const ImportTaker& take) {
  const QFileInfo info(m_path);
  if (!info.isDir()) {
    take(itemOf(info));
    return;
  }
  const SourceFolder folder([this](const QFileInfo& file) { return isWanted(file.fileName()); });
  folder.forEachFile(
      m_path, [&](const QFileInfo& file) { return take(itemOf(file)); }, take);
}

}  // namespace quillo
