#include "exchange/JrnlEntry.h"

#include "exchange/TextEntry.h"
#include "qlcore/Hashtags.h"

#include <QRegularExpression>

#include <optional>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString dayPattern = u"\\d{4}-\\d{1,2}-\\d{1,2}"_s;
const QString timePattern = u"[ T]\\d{1,2}:\\d{2}(?::\\d{2})?(?: ?[AaPp]\\.?[Mm]\\.?)?"_s;

// The line that an entry begins with. Without brackets the time must be there.
const QRegularExpression bracketed(u"^\\[(%1(?:%2)?)\\](?:[ \\t]+(.*))?$"_s.arg(dayPattern, timePattern));
const QRegularExpression plain(u"^(%1%2)[ \\t]+(\\S.*)$"_s.arg(dayPattern, timePattern));

// "4:05 pm" as a clock of 24 hours has it.
std::optional<WrittenMoment> momentOf(const QString& text) {
  static const QRegularExpression half(u"\\s?([AaPp])\\.?[Mm]\\.?$"_s);
  const auto match = half.match(text);
  auto moment = WrittenMoment::fromText(match.hasMatch() ? text.left(match.capturedStart()) : text);
  if (!moment || !match.hasMatch() || !moment->time) return moment;
  const QTime time = *moment->time;
  if (time.hour() < 1 || time.hour() > 12) return std::nullopt;
  const int afternoon = match.capturedView(1).compare(u"p"_s, Qt::CaseInsensitive) == 0 ? 12 : 0;
  moment->time = QTime(time.hour() % 12 + afternoon, time.minute(), time.second());
  return moment;
}

// One star, before or behind the title: two are emphasis.
bool takeStar(QString& title) {
  if (title.count(u'*') != 1) return false;
  const bool isBefore = title.startsWith(u'*') && title.size() > 1 && !title[1].isSpace();
  if (!isBefore && !title.endsWith(u'*')) return false;
  title = title.remove(u'*').trimmed();
  return true;
}

QString withoutSpaceBehind(QString text) {
  while (!text.isEmpty() && text.back().isSpace()) text.chop(1);
  return text;
}

// The line at `start`, which moves behind it.
QString takeLine(const QByteArray& utf8, qsizetype& start) {
  const qsizetype found = utf8.indexOf('\n', start);
  const qsizetype end = found < 0 ? utf8.size() : found;
  const qsizetype length = end > start && utf8[end - 1] == '\r' ? end - start - 1 : end - start;
  QString line = QString::fromUtf8(QByteArrayView(utf8).sliced(start, length));
  start = end + 1;
  return line;
}

// Words as those of hashtags, with another sign.
QStringList atTags(QString text) {
  return hashtags(text.replace(u'#', u' ').replace(u'@', u'#'));
}

}  // namespace

ImportItem JrnlEntries::itemOf(const JrnlEntry& entry, const QString& path) {
  const ImportPlace place{path, entry.line};
  const auto moment = momentOf(entry.moment);
  const auto date = moment ? zonedDate(*moment, {}) : std::nullopt;
  if (!moment || !date)
    return ImportProblem{
        place, u"\"%1\" is no date; one is written as 2020-06-28 18:22"_s.arg(entry.moment.left(60).simplified())};
  QString title = entry.title.trimmed();
  const bool isStarred = takeStar(title) || entry.isStarred;
  const QString body = withoutSpaceBehind(entry.body);
  if (title.isEmpty() && body.trimmed().isEmpty()) return ImportPassedBy{place, u"there is no text in it"_s};

  const QString known =
      u"jrnl\n%1 %2\n%3"_s.arg(moment->day.toString(Qt::ISODate),
                               moment->time.value_or(QTime(12, 0)).toString(u"HH:mm:ss"_s), title.simplified());
  TextEntry made{uuidOfPlace(known + u'\n' + QString::number(++m_counts[known])),
                 body.isEmpty()    ? title
                 : title.isEmpty() ? body
                                   : title + u'\n' + body,
                 *date,
                 {},
                 std::nullopt,
                 std::nullopt};
  made.addTags(entry.tags);
  if (isStarred) made.addTags({u"starred"_s});
  if (m_makesTags) made.addHashtags();
  return ImportedEntry{place, made.uuid, made.fields(), false};
}

bool forEachJrnlEntry(const QByteArray& utf8, const std::function<bool(const JrnlEntry& entry)>& take) {
  // The first entry says how the file has them: the other kind is then a line of a text.
  const QRegularExpression* used = nullptr;
  JrnlEntry entry;
  const auto give = [&] {
    if (entry.moment.isEmpty() && entry.body.trimmed().isEmpty()) return true;
    entry.tags = atTags(entry.title + u'\n' + entry.body);
    return take(entry);
  };
  int number = 0;
  // Each turn takes a line.
  for (qsizetype start = 0; start <= utf8.size();) {
    const QString words = takeLine(utf8, start);
    ++number;
    auto match = (used ? *used : bracketed).match(words);
    if (!used && !match.hasMatch()) match = plain.match(words);
    if (!match.hasMatch()) {
      if (entry.line == 0 && !words.trimmed().isEmpty()) entry.line = number;
      entry.body += words + u'\n';
      continue;
    }
    if (!used) used = words.startsWith(u'[') ? &bracketed : &plain;
    if (!give()) return false;
    entry = {number, match.captured(1), match.captured(2), {}, {}, false};
  }
  return give();
}

bool isLikeJrnl(const QString& text) {
  int plainOnes = 0;
  for (const QStringView line : QStringView(text).split(u'\n')) {
    if (line.trimmed().isEmpty()) continue;
    if (plainOnes == 0 && bracketed.match(line.toString()).hasMatch()) return true;
    if (plain.match(line.toString()).hasMatch()) ++plainOnes;
    // What does not begin with an entry is none of them.
    if (plainOnes != 1) return plainOnes > 1;
  }
  return false;
}

}  // namespace quillo
