#include "entry/text/HashtagCompletionList.h"

#include "controls/Fonts.h"
#include "entry/text/AccessibleCompletionList.h"

#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace quillo {

namespace {

// Points.
constexpr int rowHeight = 22;
constexpr int inset = 4;
constexpr int textInset = 8;
constexpr int narrowest = 110;
constexpr int widest = 230;
constexpr int gap = 3;
constexpr double radius = 6;

const QColor bodyTop(0x45, 0x4a, 0x52);
const QColor bodyBottom(0x33, 0x37, 0x3e);
const QColor outlineColor(0x18, 0x1a, 0x1e);
const QColor textColor(0xf2, 0xf3, 0xf5);
const QColor signColor(0x9a, 0xa1, 0xab);
const QColor selectionTop(0x4a, 0x96, 0xee);
const QColor selectionBottom(0x2b, 0x77, 0xd2);

QLinearGradient verticalGradient(const QRectF& rect, const QColor& top, const QColor& bottom) {
  QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
  gradient.setColorAt(0, top);
  gradient.setColorAt(1, bottom);
  return gradient;
}

}  // namespace

HashtagCompletionList::HashtagCompletionList(QWidget* window) : QWidget(window) {
  // Before anything that tells screen readers of the list: the first question decides what it is to them.
  AccessibleCompletionList::install();
  setObjectName(QStringLiteral("hashtagCompletionList"));
  setAccessibleName(QStringLiteral("Hashtags"));
  setFocusPolicy(Qt::NoFocus);
  setMouseTracking(true);
  setCursor(Qt::ArrowCursor);
  setFont(textFont(13));
  hide();
}

void HashtagCompletionList::showTags(const QStringList& tags, int selected, QRect word, bool rightAligned,
                                     QRect bounds) {
  const int below = bounds.bottom() - word.bottom() - gap;
  const int above = word.top() - bounds.top() - gap;
  const auto rowsIn = [](int space) { return (space - 2 * inset) / rowHeight; };
  const int wanted = std::min(static_cast<int>(tags.size()), maximumRows);
  const bool goesBelow = rowsIn(below) >= wanted || below >= above;
  const int rows = std::min(wanted, rowsIn(goesBelow ? below : above));
  m_tags = tags.mid(0, std::max(rows, 0));
  m_selected = selected < m_tags.size() ? selected : -1;
  if (m_tags.isEmpty()) {
    hide();
    return;
  }
  int width = narrowest;
  for (const QString& tag : m_tags)
    width = std::max(width, fontMetrics().horizontalAdvance(u'#' + tag) + 2 * (inset + textInset));
  width = std::min({width, widest, bounds.width()});
  const int height = rows * rowHeight + 2 * inset;
  const int left = rightAligned ? word.right() + textInset + inset - width : word.left() - textInset - inset;
  const int top = goesBelow ? word.bottom() + gap : word.top() - gap - height;
  setGeometry(std::clamp(left, bounds.left(), bounds.left() + bounds.width() - width), top, width, height);
  show();
  raise();
  update();
  AccessibleCompletionList::rowsDidChange(*this);
  AccessibleCompletionList::selectionDidMove(*this, -1, m_selected);
}

void HashtagCompletionList::select(int row) {
  if (row == m_selected) return;
  const int before = std::exchange(m_selected, row);
  update();
  AccessibleCompletionList::selectionDidMove(*this, before, row);
  if (row >= 0) Q_EMIT selectionDidMove(m_tags[row]);
}

void HashtagCompletionList::moveSelection(int by) {
  const int count = static_cast<int>(m_tags.size());
  if (count == 0) return;
  if (m_selected < 0)
    select(by > 0 ? 0 : count - 1);
  else
    select((m_selected + by % count + count) % count);
}

QRect HashtagCompletionList::rowRect(int row) const {
  return {inset, inset + row * rowHeight, width() - 2 * inset, rowHeight};
}

int HashtagCompletionList::rowAt(QPoint point) const {
  for (int row = 0; row < m_tags.size(); ++row)
    if (rowRect(row).contains(point)) return row;
  return -1;
}

void HashtagCompletionList::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF body = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
  painter.setPen(outlineColor);
  painter.setBrush(verticalGradient(body, bodyTop, bodyBottom));
  painter.drawRoundedRect(body, radius, radius);
  // A hairline of light under the upper edge.
  painter.setPen(QColor(255, 255, 255, 40));
  painter.drawLine(QPointF(radius, 1.5), QPointF(width() - radius, 1.5));
  const QString sign(u'#');
  const int signWidth = fontMetrics().horizontalAdvance(sign);
  for (int row = 0; row < m_tags.size(); ++row) {
    const QRect area = rowRect(row);
    const bool selected = row == m_selected;
    if (selected) {
      painter.setPen(Qt::NoPen);
      painter.setBrush(verticalGradient(area, selectionTop, selectionBottom));
      painter.drawRoundedRect(QRectF(area), 4, 4);
    }
    const QRect textArea = area.adjusted(textInset, 0, -textInset, 0);
    painter.setPen(selected ? QColor(255, 255, 255, 190) : signColor);
    painter.drawText(textArea, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, sign);
    const QRect tagArea = textArea.adjusted(signWidth + 1, 0, 0, 0);
    painter.setPen(selected ? QColor(Qt::white) : textColor);
    painter.drawText(tagArea, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(m_tags[row], Qt::ElideRight, tagArea.width()));
  }
}

void HashtagCompletionList::mouseMoveEvent(QMouseEvent* event) {
  if (const int row = rowAt(event->position().toPoint()); row >= 0) select(row);
}

void HashtagCompletionList::mousePressEvent(QMouseEvent* event) {
  // Kept from the window below.
  event->accept();
}

void HashtagCompletionList::mouseReleaseEvent(QMouseEvent* event) {
  const int row = rowAt(event->position().toPoint());
  if (event->button() == Qt::LeftButton && row >= 0) Q_EMIT chosen(m_tags[row]);
}

}  // namespace quillo
