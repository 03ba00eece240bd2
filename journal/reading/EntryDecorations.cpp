#include "journal/reading/EntryDecorations.h"

#include "controls/Fonts.h"
#include "journal/reading/EntryDocument.h"
#include "journal/reading/EntryFormat.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextBlock>
#include <QTextFrame>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// The decorations of one document on one painter.
class Decorator {
 public:
  Decorator(QPainter& painter, const EntryDocument& document, const QRectF& clip)
      : m_painter(painter),
        m_document(document),
        m_colors(document.look().colors),
        m_clip(clip),
        m_size(document.look().fontSize) {}

  void paint();

 private:
  void paintBehind(const QTextBlock& block, const QRectF& rect);
  void paintQuoteBars(const QTextBlock& block, const QRectF& rect);
  void paintCodeSpans(const QTextBlock& block);
  void paintMark(const QTextBlock& block, const QRectF& rect);
  void paintTask(const QRectF& box, bool isDone);
  [[nodiscard]] QColor panel() const { return blended(m_colors.text, m_colors.paper, 0.06); }

  QPainter& m_painter;
  const EntryDocument& m_document;
  const JournalColors& m_colors;
  QRectF m_clip;
  double m_size;
};

bool isCode(const QTextBlock& block) {
  return block.isValid() && block.blockFormat().boolProperty(EntryFormat::Code);
}

int quoteLevel(const QTextBlock& block) {
  return block.isValid() ? block.blockFormat().intProperty(QTextFormat::BlockQuoteLevel) : 0;
}

// From the top of the first line to the bottom of the last, with the height that lines are given.
QRectF linesOf(const EntryDocument& document, const QTextBlock& block) {
  const QRectF bounds = document.documentLayout()->blockBoundingRect(block);
  const double height = std::max(1, block.layout()->lineCount()) * block.blockFormat().lineHeight();
  return {0, bounds.top(), document.textWidth(), height};
}

void Decorator::paint() {
  m_painter.save();
  m_painter.setRenderHint(QPainter::Antialiasing);
  for (QTextBlock block = firstBlockAt(m_document, m_clip.top()); block.isValid(); block = block.next()) {
    const QRectF rect = linesOf(m_document, block);
    // A code panel and a quote's bar reach above their block.
    if (rect.top() > m_clip.bottom() + 3 * m_size) break;
    paintBehind(block, rect);
    paintQuoteBars(block, rect);
    paintCodeSpans(block);
    paintMark(block, rect);
  }
  m_painter.restore();
}

void Decorator::paintBehind(const QTextBlock& block, const QRectF& rect) {
  const QTextBlockFormat format = block.blockFormat();
  if (format.boolProperty(EntryFormat::Rule)) {
    const double y = std::round(rect.center().y());
    m_painter.fillRect(QRectF(0, y, rect.width(), 1), m_colors.line);
  }
  if (!isCode(block)) return;
  const double padding = 0.6 * m_size;
  QRectF box = rect.adjusted(format.leftMargin() - padding, 0, 0, 0);
  // Each line draws the panel from its own top to the next line's, and the ends have the corners.
  const bool isFirst = !isCode(block.previous());
  const bool isLast = !isCode(block.next());
  const double corner = 0.4 * m_size;
  box.setTop(isFirst ? box.top() - padding : box.top());
  box.setBottom(isLast ? box.bottom() + padding : linesOf(m_document, block.next()).top());
  m_painter.save();
  m_painter.setClipRect(box, Qt::IntersectClip);
  m_painter.setPen(Qt::NoPen);
  m_painter.setBrush(panel());
  m_painter.drawRoundedRect(box.adjusted(0, isFirst ? 0 : -2 * corner, 0, isLast ? 0 : 2 * corner), corner, corner);
  m_painter.restore();
}

void Decorator::paintQuoteBars(const QTextBlock& block, const QRectF& rect) {
  const int level = quoteLevel(block);
  if (level == 0) return;
  const QTextBlockFormat format = block.blockFormat();
  const bool isRightToLeft = block.textDirection() == Qt::RightToLeft && !isCode(block);
  const double width = std::max(2.0, 0.19 * m_size);
  for (int bar = 0; bar < level; ++bar) {
    // Down to the next block where the quote goes on there.
    const bool goesOn = quoteLevel(block.next()) > bar;
    const double bottom = goesOn ? linesOf(m_document, block.next()).top() : rect.bottom();
    const double inset = bar * 1.6 * m_size;
    const double x = isRightToLeft ? rect.right() - inset - width : inset;
    m_painter.fillRect(QRectF(x, rect.top(), width, bottom - rect.top()), blended(m_colors.dim, m_colors.paper, 0.45));
  }
}

void Decorator::paintCodeSpans(const QTextBlock& block) {
  m_painter.setPen(Qt::NoPen);
  m_painter.setBrush(panel());
  for (auto at = block.begin(); !at.atEnd(); ++at) {
    const QTextFragment fragment = at.fragment();
    if (!fragment.charFormat().boolProperty(EntryFormat::CodeSpan)) continue;
    for (const QRectF& rect :
         rectsOfCharacters(m_document, block, fragment.position() - block.position(), fragment.length()))
      m_painter.drawRoundedRect(rect.adjusted(-2, 0, 2, 1), 0.2 * m_size, 0.2 * m_size);
  }
}

void Decorator::paintMark(const QTextBlock& block, const QRectF& rect) {
  const QTextBlockFormat format = block.blockFormat();
  const QString mark = format.stringProperty(EntryFormat::ListMark);
  const bool isTask = format.hasProperty(EntryFormat::TaskMark);
  if (mark.isEmpty() && !isTask) return;
  const bool isRightToLeft = block.textDirection() == Qt::RightToLeft;
  const double gap = 0.5 * m_size;
  const double edge = isRightToLeft ? rect.right() - format.rightMargin() + gap : format.leftMargin() - gap;
  // Where a line of fixed height has its baseline, and small letters their middle.
  const double height = format.lineHeight();
  const double baseline = rect.top() + height * 0.8;
  const double middle = baseline - 0.27 * m_size;
  if (isTask) {
    const double side = 0.85 * m_size;
    const double x = isRightToLeft ? edge : edge - side;
    paintTask({x, middle - side / 2 - 0.06 * m_size, side, side}, format.boolProperty(EntryFormat::TaskMark));
    return;
  }
  if (mark == u"\u2022" || mark == u"\u25E6") {
    const double radius = 0.16 * m_size;
    const double x = isRightToLeft ? edge + 2 * radius : edge - 2 * radius;
    m_painter.setPen(mark == u"\u2022" ? Qt::NoPen : QPen(m_colors.dim, 0.075 * m_size));
    m_painter.setBrush(mark == u"\u2022" ? QBrush(m_colors.dim) : QBrush(Qt::NoBrush));
    m_painter.drawEllipse(QPointF(x, middle), radius, radius);
    return;
  }
  const QFont font = m_document.defaultFont();
  m_painter.setFont(font);
  m_painter.setPen(m_colors.dim);
  const double width = QFontMetricsF(font).horizontalAdvance(mark);
  m_painter.drawText(QPointF(isRightToLeft ? edge : edge - width, baseline), mark);
}

void Decorator::paintTask(const QRectF& box, bool isDone) {
  const double corner = 0.2 * m_size;
  m_painter.setPen(isDone ? Qt::NoPen : QPen(m_colors.dim, 0.09 * m_size));
  m_painter.setBrush(isDone ? QBrush(m_colors.accent) : QBrush(Qt::NoBrush));
  m_painter.drawRoundedRect(isDone ? box : box.adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
  if (!isDone) return;
  m_painter.setPen(QPen(m_colors.accentText, 0.12 * m_size, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  const auto at = [&box](double x, double y) { return box.topLeft() + QPointF(x * box.width(), y * box.height()); };
  m_painter.setBrush(Qt::NoBrush);
  m_painter.drawPolyline(QPolygonF{at(0.25, 0.53), at(0.43, 0.71), at(0.76, 0.31)});
}

}  // namespace

void paintDecorations(QPainter& painter, const EntryDocument& document, const QRectF& clip) {
  Decorator(painter, document, clip).paint();
}

QList<QRectF> rectsOfCharacters(const EntryDocument& document, const QTextBlock& block, int start, int length) {
  QList<QRectF> rects;
  const QPointF origin = document.documentLayout()->blockBoundingRect(block).topLeft();
  const QTextLayout* layout = block.layout();
  for (int at = start; at < start + length;) {
    const QTextLine line = layout->lineForTextPosition(at);
    if (!line.isValid() || line.textLength() == 0) break;
    const int end = std::min(start + length, line.textStart() + line.textLength());
    if (end <= at) break;
    const double one = line.cursorToX(at);
    const double other = line.cursorToX(end);
    rects << QRectF(std::min(one, other), line.y(), std::abs(other - one), line.height()).translated(origin);
    at = end;
  }
  return rects;
}

QTextBlock firstBlockAt(const EntryDocument& document, double y) {
  const int position = document.documentLayout()->hitTest(QPointF(0, std::max(0.0, y)), Qt::FuzzyHit);
  QTextBlock block = document.findBlock(std::max(0, position));
  // What stands in a row of a table stands beside what comes before it.
  while (block.isValid() && block.previous().isValid() &&
         document.documentLayout()->blockBoundingRect(block).top() > y - 64)
    block = block.previous();
  return block.isValid() ? block : document.begin();
}

}  // namespace quillo
