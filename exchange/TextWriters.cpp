#include "exchange/TextWriters.h"

#include "exchange/EntryHeading.h"

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

QString clock(const QDateTime& time) {
  return time.toString(u"HH:mm"_s);
}

// With one line break at its end.
QString ended(const QString& text) {
  return text.endsWith(u'\n') ? text : text + u'\n';
}

// What is known of an entry beside date and text; tags as a reader writes them.
QString particulars(const IndexedEntry& entry, const QString& separator) {
  QStringList parts;
  if (const QString place = EntryHeading::place(entry); !place.isEmpty()) parts << place;
  if (const QString weather = EntryHeading::weather(entry); !weather.isEmpty()) parts << weather;
  QStringList tags;
  for (const QString& tag : entry.tags) tags << u'#' + tag.simplified();
  if (!tags.isEmpty()) parts << tags.join(u' ');
  return parts.join(separator);
}

// A line of our own in Markdown, in which nothing is to be drawn as a mark.
QString escapedMarkdown(const QString& text) {
  QString escaped;
  for (const QChar c : text) {
    if (u"\\`*_[]<>&#|~"_s.contains(c)) escaped += u'\\';
    escaped += c;
  }
  return escaped;
}

}  // namespace

bool TextWriter::begin(const ExportOverview& overview, Error* error) {
  return m_sink((overview.journalName + u"\n\n"_s).toUtf8(), error);
}

bool TextWriter::add(const ExportedEntry& exported, Error* error) {
  const IndexedEntry& entry = exported.entry;
  const QDateTime time = EntryHeading::clockTime(entry.creationDate, entry.timeZone);
  const QString heading = EntryHeading::day(time) + u", "_s + clock(time);
  const QString more = particulars(entry, u" · "_s);
  QString text = m_isEmpty ? QString() : u"\n\n"_s;
  m_isEmpty = false;
  text += heading + u'\n' + QString(heading.size(), u'-') + u'\n';
  if (!more.isEmpty()) text += more + u'\n';
  return m_sink((text + u'\n' + ended(entry.text)).toUtf8(), error);
}

bool TextWriter::end(Error*) {
  return true;
}

bool MarkdownWriter::begin(const ExportOverview& overview, Error* error) {
  return m_sink(u"# %1\n"_s.arg(escapedMarkdown(overview.journalName)).toUtf8(), error);
}

bool MarkdownWriter::add(const ExportedEntry& exported, Error* error) {
  const IndexedEntry& entry = exported.entry;
  const QDateTime time = EntryHeading::clockTime(entry.creationDate, entry.timeZone);
  const QString more = particulars(entry, u" · "_s);
  QString text = u"\n## %1, %2\n"_s.arg(EntryHeading::day(time), clock(time));
  if (!more.isEmpty()) text += u"\n*%1*\n"_s.arg(escapedMarkdown(more));
  return m_sink((text + u'\n' + ended(entry.text)).toUtf8(), error);
}

bool MarkdownWriter::end(Error*) {
  return true;
}

}  // namespace quillo
