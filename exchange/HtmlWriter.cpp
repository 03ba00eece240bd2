#include "exchange/HtmlWriter.h"

#include "exchange/EntryHeading.h"
#include "exchange/HtmlStyle.h"
#include "exchange/MarkdownHtml.h"

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

QString idOfMonth(QDate month) {
  return u"m"_s + month.toString(u"yyyy-MM"_s);
}

QString entriesInWords(qint64 count) {
  return QString::number(count) + (count == 1 ? u" entry"_s : u" entries"_s);
}

// A year a line.
QString indexOf(const QList<JournalCount>& months) {
  QString index;
  int year = 0;
  for (const JournalCount& month : months) {
    if (month.day.year() != year) {
      if (year != 0) index += u"</ul></li>\n"_s;
      year = month.day.year();
      index += u"<li><b>%1</b><ul>"_s.arg(year);
    }
    const QString name = EntryHeading::month(month.day).section(u' ', 0, 0);
    index +=
        u"<li><a href=\"#%1\">%2</a> <i>%3</i></li>"_s.arg(idOfMonth(month.day), name, QString::number(month.count));
  }
  return year == 0 ? QString() : u"<nav><ul>\n"_s + index + u"</ul></li>\n</ul></nav>\n"_s;
}

QString escaped(const QString& text) {
  return text.toHtmlEscaped();
}

QString footOf(const IndexedEntry& entry) {
  QStringList tags;
  for (const QString& tag : entry.tags) tags << u"<li>#%1</li>"_s.arg(escaped(tag));
  return tags.isEmpty() ? QString() : u"<ul class=\"tags\">"_s + tags.join(u' ') + u"</ul>\n"_s;
}

QString headOf(const IndexedEntry& entry) {
  const QDateTime time = EntryHeading::clockTime(entry.creationDate, entry.timeZone);
  QString head = u"<header><h3>%1</h3> <time datetime=\"%2\">%3</time>"_s.arg(
      EntryHeading::day(time), time.toString(Qt::ISODate), time.toString(u"HH:mm"_s));
  for (const QString& part : {EntryHeading::place(entry), EntryHeading::weather(entry)})
    if (!part.isEmpty()) head += u" <span>%1</span>"_s.arg(escaped(part));
  return head + u"</header>\n"_s;
}

}  // namespace

bool HtmlWriter::begin(const ExportOverview& overview, Error* error) {
  const QString title = escaped(overview.journalName);
  QString span;
  if (!overview.months.isEmpty()) {
    const QString first = EntryHeading::month(overview.months.first().day);
    const QString last = EntryHeading::month(overview.months.last().day);
    span = first == last ? u" · "_s + first : u" · %1 – %2"_s.arg(first, last);
  }
  const QString page =
      u"<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<meta name=\"color-scheme\" content=\"light dark\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
      "style-src 'unsafe-inline'; img-src data:; base-uri 'none'; form-action 'none'\">\n"
      "<meta name=\"referrer\" content=\"no-referrer\">\n<title>%1</title>\n<style>\n%2</style>\n"
      "</head>\n<body>\n<h1>%1</h1>\n<p class=\"about\">%3%4</p>\n%5"_s;
  // In one call: what takes the place of one mark is not looked through for the next.
  return m_sink(
      page.arg(title, QString::fromUtf8(htmlStyle), entriesInWords(overview.entries), span, indexOf(overview.months))
          .toUtf8(),
      error);
}

// Entries of other time zones may make a month come twice; the index leads to where it begins.
QString HtmlWriter::monthHeading(QDate day) {
  const QDate month(day.year(), day.month(), 1);
  if (month == m_month) return {};
  m_month = month;
  const bool isFirst = !m_shown.contains(month);
  m_shown.insert(month);
  const QString id = isFirst ? u" id=\"%1\""_s.arg(idOfMonth(month)) : QString();
  return u"<h2%1>%2</h2>\n"_s.arg(id, EntryHeading::month(month));
}

bool HtmlWriter::add(const ExportedEntry& exported, Error* error) {
  const IndexedEntry& entry = exported.entry;
  const QString before = monthHeading(entry.day) + u"<article id=\"%1\">\n"_s.arg(entry.uuid) + headOf(entry);
  return m_sink(before.toUtf8() + "<div class=\"text\">\n" + htmlOfMarkdown(entry.text) + "</div>\n" +
                    footOf(entry).toUtf8() + "</article>\n",
                error);
}

bool HtmlWriter::end(Error* error) {
  return m_sink("</body>\n</html>\n", error);
}

}  // namespace quillo
