#include "exchange/MarkdownHtml.h"

#include <QByteArrayView>

#include <md4c-html.h>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// The reader's work grows with the square of the marks in a paragraph and of the levels of quotes and lists. In UTF-8
// units; a written diary stays far below.
constexpr qsizetype longestText = qsizetype{512} * 1024;
constexpr qsizetype mostMarksInParagraph = 2000;
constexpr qsizetype mostMarks = 20000;

bool isMark(char c) {
  return QByteArrayView("*_`[]()<>!~|&:@.\\$").contains(c) || c == '\t';
}

bool isTooTangled(const QByteArray& source) {
  qsizetype all = 0;
  qsizetype inParagraph = 0;
  bool isLineEmpty = true;
  for (const char c : source) {
    if (c == '\n') {
      if (isLineEmpty) inParagraph = 0;
      isLineEmpty = true;
    } else if (c != ' ') {
      isLineEmpty = false;
    }
    if (isMark(c) && (++all > mostMarks || ++inParagraph > mostMarksInParagraph)) return true;
  }
  return false;
}

// Two spaces at the end of a line make its break one that is drawn.
QByteArray withHardBreaks(const QString& text) {
  QByteArray source = text.toUtf8();
  source.replace("\r\n", "\n");
  source.replace('\r', '\n');
  return source.replace("\n", "  \n");
}

QByteArray paragraphs(const QString& text) {
  return "<p class=\"plain\">" + text.toHtmlEscaped().toUtf8() + "</p>\n";
}

void append(const MD_CHAR* piece, MD_SIZE size, void* html) {
  static_cast<QByteArray*>(html)->append(piece, static_cast<qsizetype>(size));
}

bool begins(QByteArrayView address, QByteArrayView scheme) {
  return address.size() >= scheme.size() && address.first(scheme.size()).compare(scheme, Qt::CaseInsensitive) == 0;
}

// Links lead to pages and people, to nothing that a reader could run.
bool isLink(QByteArrayView address) {
  return begins(address, "http:") || begins(address, "https:") || begins(address, "mailto:");
}

// To fetch a picture tells somebody who reads.
bool isPicture(QByteArrayView address) {
  return begins(address, "data:image/");
}

// The HTML with the addresses behind each `beginning` taken out that are not `allowed`. Quotes in texts are escaped:
// what looks like a beginning is one.
QByteArray withAllowedAddresses(const QByteArray& html, QByteArrayView beginning, bool (*allowed)(QByteArrayView)) {
  QByteArray safe;
  qsizetype done = 0;
  for (qsizetype at = html.indexOf(beginning); at >= 0; at = html.indexOf(beginning, done)) {
    const qsizetype address = at + beginning.size();
    const qsizetype end = html.indexOf('"', address);
    if (end < 0) break;
    safe += QByteArrayView(html).sliced(done, address - done);
    if (const auto link = QByteArrayView(html).sliced(address, end - address); allowed(link)) safe += link;
    done = end;
  }
  return safe + html.sliced(done);
}

// The value behind `name="` from `at` on, up to `end`; empty where there is none. Quotes in values are escaped.
QByteArrayView attribute(QByteArrayView html, QByteArrayView beginning, qsizetype at, qsizetype end) {
  const qsizetype begin = html.indexOf(beginning, at);
  if (begin < 0 || begin + beginning.size() > end) return {};
  const qsizetype value = begin + beginning.size();
  return html.sliced(value, html.indexOf('"', value) - value);
}

// The last part of an address in HTML, as HTML.
QByteArray nameIn(QByteArrayView address) {
  QByteArray name = address.sliced(address.lastIndexOf('/') + 1).toByteArray();
  name.replace("&amp;", "&");
  return QString::fromUtf8(QByteArray::fromPercentEncoding(name)).toHtmlEscaped().toUtf8();
}

// Pictures that are not shown are named: by their description, else by the end of their address.
QByteArray withNamedPictures(const QByteArray& html) {
  constexpr QByteArrayView beginning{"<img src=\""};
  QByteArray named;
  qsizetype done = 0;
  for (qsizetype at = html.indexOf(beginning); at >= 0; at = html.indexOf(beginning, done)) {
    // A ">" within a value is escaped, too.
    const qsizetype end = html.indexOf('>', at);
    if (end < 0) break;
    const QByteArrayView address = attribute(html, beginning, at, end);
    named += QByteArrayView(html).sliced(done, at - done);
    done = end + 1;
    if (isPicture(address)) {
      named += QByteArrayView(html).sliced(at, done - at);
      continue;
    }
    const QByteArrayView description = attribute(html, " alt=\"", at, end);
    named += "<span class=\"picture\">" +
             (description.trimmed().isEmpty() ? nameIn(address) : description.toByteArray()) + "</span>";
  }
  return named + html.sliced(done);
}

// Lists and quotes run the way of their own text: their marks stand where it begins.
QByteArray withDirections(QByteArray html) {
  for (const QByteArrayView tag : {"<ul", "<ol", "<blockquote", "<table"})
    html.replace(tag, tag.toByteArray() + " dir=\"auto\"");
  return html;
}

QByteArray safeHtml(const QByteArray& html) {
  return withDirections(withNamedPictures(withAllowedAddresses(html, "<a href=\"", isLink)));
}

}  // namespace

QByteArray htmlOfMarkdown(const QString& text) {
  if (text.size() > longestText) return paragraphs(text);
  const QByteArray source = withHardBreaks(text);
  if (isTooTangled(source)) return paragraphs(text);
  QByteArray html;
  const unsigned flags = MD_DIALECT_GITHUB | MD_FLAG_NOHTML;
  const int result = md_html(source.constData(), static_cast<MD_SIZE>(source.size()), append, &html, flags, 0);
  return result == 0 ? safeHtml(html) : paragraphs(text);
}

}  // namespace quillo
