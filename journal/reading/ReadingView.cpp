#include "journal/reading/ReadingView.h"

#include "controls/Fonts.h"
#include "journal/reading/EntryDecorations.h"
#include "journal/reading/WordMatches.h"

#include <QCoreApplication>
#include <QEvent>
#include <QMimeData>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextFrame>
#include <QtMath>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int smallestFont = 6;
constexpr int largestFont = 96;
// A line that can be read without losing the next.
constexpr int longestLine = 66;
// In points.
constexpr int widestMargin = 56;
constexpr int topMargin = 30;
constexpr int bottomMargin = 48;
// More would not be told from a page that is marked all over.
constexpr int mostMatches = 2000;

double columnWidth(int fontSize) {
  // Every letter about as often as it is written.
  const QString sample = u"the light was already gone but the water kept a little of it, and I stood"_s;
  return QFontMetricsF(textFont(fontSize)).horizontalAdvance(sample) / static_cast<double>(sample.size()) * longestLine;
}

}  // namespace

ReadingView::ReadingView(QWidget* parent) : QTextBrowser(parent) {
  setFrameShape(QFrame::NoFrame);
  setOpenLinks(false);
  setTextInteractionFlags(Qt::TextBrowserInteraction | Qt::TextSelectableByKeyboard);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setAccessibleName(u"Entry"_s);
  connect(this, &QTextBrowser::anchorClicked, this, &ReadingView::follow);
  // The outline of a link that the keyboard is at goes with the cursor.
  connect(this, &QTextEdit::cursorPositionChanged, viewport(), qOverload<>(&QWidget::update));
  connect(this, &QTextEdit::selectionChanged, viewport(), qOverload<>(&QWidget::update));
  rebuild();
}

void ReadingView::setEntry(const EntryContent& content) {
  m_content = content;
  setAccessibleName(content.title.isEmpty() ? u"Entry"_s : u"Entry, "_s + content.title);
  rebuild();
  verticalScrollBar()->setValue(0);
}

void ReadingView::setFontSize(int points) {
  points = std::clamp(points, smallestFont, largestFont);
  if (points == m_fontSize) return;
  m_fontSize = points;
  rebuild();
}

void ReadingView::setSearchedWords(const QStringList& words) {
  if (words == m_words) return;
  m_words = words;
  findMatches();
}

void ReadingView::showMatch(int index) {
  if (index < 0 || index >= m_matches.size()) return;
  QTextCursor cursor(m_entry);
  cursor.setPosition(m_matches[index].start);
  setTextCursor(cursor);
  ensureCursorVisible();
}

void ReadingView::rebuild() {
  m_colors = JournalColors::forPalette(palette());
  const double scrolled = verticalScrollBar()->maximum() > 0
                              ? static_cast<double>(verticalScrollBar()->value()) / verticalScrollBar()->maximum()
                              : 0;
  const QPointer<EntryDocument> old = m_entry;
  m_entry = new EntryDocument(m_content, {.colors = m_colors, .fontSize = m_fontSize}, this);
  QTextFrameFormat page = m_entry->rootFrame()->frameFormat();
  page.setTopMargin(topMargin);
  page.setBottomMargin(bottomMargin);
  m_entry->rootFrame()->setFrameFormat(page);
  setDocument(m_entry);
  delete old;
  QPalette paper = viewport()->palette();
  paper.setColor(QPalette::Base, m_colors.paper);
  paper.setColor(QPalette::Window, m_colors.paper);
  viewport()->setPalette(paper);
  findMatches();
  const int margin = sideMargin();
  setViewportMargins(margin, 0, margin, 0);
  verticalScrollBar()->setValue(qRound(scrolled * verticalScrollBar()->maximum()));
  viewport()->update();
}

void ReadingView::findMatches() {
  m_matches.clear();
  for (QTextBlock block = m_entry->firstTextBlock(); block.isValid() && !m_words.isEmpty(); block = block.next()) {
    for (const WordMatch& match : wordMatches(block.text(), m_words)) {
      if (m_matches.size() == mostMatches) break;
      m_matches.append({block.position() + static_cast<int>(match.start), static_cast<int>(match.length)});
    }
  }
  viewport()->update();
}

void ReadingView::follow(const QUrl& link) {
  if (const QString tag = tagOfLink(link); !tag.isEmpty())
    Q_EMIT tagActivated(tag);
  else
    Q_EMIT linkActivated(link);
}

int ReadingView::sideMargin() const {
  // As if the scroll bar stood there always: a text must not get narrower for becoming longer.
  const int available = width() - verticalScrollBar()->sizeHint().width();
  const int most = std::clamp(available / 11, 8, widestMargin);
  return std::max(most, (available - qCeil(columnWidth(m_fontSize))) / 2);
}

void ReadingView::resizeEvent(QResizeEvent* event) {
  const int margin = sideMargin();
  if (viewportMargins().left() != margin) {
    // Gives the viewport its width, and comes here again.
    setViewportMargins(margin, 0, margin, 0);
    if (viewport()->width() != event->size().width()) return;
  }
  QTextBrowser::resizeEvent(event);
}

void ReadingView::changeEvent(QEvent* event) {
  QTextBrowser::changeEvent(event);
  const QEvent::Type type = event->type();
  const bool isOfColors = type == QEvent::PaletteChange || type == QEvent::StyleChange;
  if (isOfColors && JournalColors::forPalette(palette()) != m_colors) rebuild();
  // Qt has put the widget's font into the document.
  if (m_entry && (type == QEvent::FontChange || type == QEvent::ApplicationFontChange)) rebuild();
}

bool ReadingView::event(QEvent* event) {
  // The margins beside the column are not the viewport's.
  if (event->type() == QEvent::Paint) QPainter(this).fillRect(rect(), m_colors.paper);
  if (event->type() == QEvent::Wheel) return QCoreApplication::sendEvent(verticalScrollBar(), event);
  return QTextBrowser::event(event);
}

QPointF ReadingView::origin() const {
  return {-static_cast<double>(horizontalScrollBar()->value()), -static_cast<double>(verticalScrollBar()->value())};
}

void ReadingView::paintEvent(QPaintEvent* event) {
  {
    QPainter painter(viewport());
    painter.translate(origin());
    const QRectF clip = QRectF(event->rect()).translated(-origin());
    paintDecorations(painter, *m_entry, clip);
    paintMatches(painter, clip);
  }
  QTextBrowser::paintEvent(event);
  QPainter painter(viewport());
  painter.translate(origin());
  paintFocusedLink(painter);
}

void ReadingView::paintMatches(QPainter& painter, const QRectF& clip) const {
  if (m_matches.isEmpty()) return;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(m_colors.match);
  const int first = firstBlockAt(*m_entry, clip.top()).position();
  const auto before = [](const Match& match, int position) { return match.start + match.length < position; };
  auto match = std::lower_bound(m_matches.begin(), m_matches.end(), first, before);
  for (; match != m_matches.end(); ++match) {
    const QTextBlock block = m_entry->findBlock(match->start);
    const QList<QRectF> rects = rectsOfCharacters(*m_entry, block, match->start - block.position(), match->length);
    for (const QRectF& rect : rects) painter.drawRoundedRect(rect.adjusted(-1, 0, 1, 0), 3, 3);
    if (!rects.isEmpty() && rects.first().top() > clip.bottom()) break;
  }
}

void ReadingView::paintFocusedLink(QPainter& painter) const {
  const QTextCursor cursor = textCursor();
  if (!hasFocus() || !cursor.hasSelection()) return;
  const QTextBlock block = m_entry->findBlock(cursor.selectionStart());
  const int start = cursor.selectionStart() - block.position();
  const int end = cursor.selectionEnd() - block.position();
  QTextCursor inside = cursor;
  inside.setPosition(cursor.selectionStart() + 1);
  if (end >= block.length() || !inside.charFormat().isAnchor()) return;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(m_colors.accent, 2));
  painter.setBrush(Qt::NoBrush);
  for (const QRectF& rect : rectsOfCharacters(*m_entry, block, start, end - start))
    painter.drawRoundedRect(rect.adjusted(-2, -1, 2, 2), 4, 4);
}

QMimeData* ReadingView::createMimeDataFromSelection() const {
  auto* copied = new QMimeData;
  const QTextCursor cursor = textCursor();
  copied->setText(m_entry->plainText(cursor.selectionStart(), cursor.selectionEnd()));
  return copied;
}

QVariant ReadingView::loadResource(int, const QUrl&) {
  return {};
}

}  // namespace quillo
