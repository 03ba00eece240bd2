#include "journal/views/TimelineRowPainter.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "journal/model/TimelineSource.h"

#include <QFontMetricsF>
#include <QLocale>
#include <QPainter>
#include <QTextLayout>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In points.
constexpr int margin = 18;
constexpr int timeWidth = 52;
constexpr int lineHeight = 20;
constexpr int textLines = 2;
constexpr int signSize = 13;

}  // namespace

QRectF TimelineRowPainter::mirrored(const QRectF& rect, const QRect& in) const {
  if (!m_isMirrored) return rect;
  return {in.left() + in.right() + 1 - rect.right(), rect.y(), rect.width(), rect.height()};
}

void TimelineRowPainter::paintHeading(const QRect& rect, const QString& title, bool hasLine) {
  if (hasLine) m_painter.fillRect(rect.x(), rect.y(), rect.width(), 1, m_colors.line);
  m_painter.setFont(textFont(12, QFont::DemiBold));
  m_painter.setPen(m_colors.dim);
  m_painter.drawText(rect.adjusted(margin, 8, -margin, 0),
                     (m_isMirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter, title);
}

void TimelineRowPainter::paintPlaceholder(const QRect& rect) {
  m_painter.setPen(Qt::NoPen);
  m_painter.setBrush(blended(m_colors.text, m_colors.list, 0.06));
  const double width = rect.width() - 2 * margin - timeWidth;
  for (const auto& [y, part] : {std::pair(12, 0.9), std::pair(32, 0.7), std::pair(54, 0.4)})
    m_painter.drawRoundedRect(mirrored(QRectF(rect.x() + margin + timeWidth, rect.y() + y, width * part, 10), rect), 4,
                              4);
}

void TimelineRowPainter::paintRow(const QRect& rect, const TimelineRow& row, QDate headingDay, bool isSelected,
                                  bool hasKeyboard) {
  m_ground = !isSelected ? m_colors.list : hasKeyboard ? m_colors.accent : blended(m_colors.accent, m_colors.list, 0.8);
  if (isSelected) m_painter.fillRect(rect, m_ground);
  m_painter.setFont(textFont(13));
  m_painter.setPen(isSelected ? m_colors.accentText : m_colors.dim);
  const QRectF time = mirrored(QRectF(rect.x() + margin, rect.y() + 9, timeWidth, 18), rect);
  m_painter.drawText(time, (m_isMirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter,
                     row.day == headingDay ? row.time : QLocale().toString(row.day, u"d MMM"_s));
  if (row.otherVersions > 0)
    paintVersionsSign(mirrored(QRectF(rect.x() + margin, rect.y() + 33, signSize, signSize), rect), isSelected);
  const double x = rect.x() + margin + timeWidth;
  const double width = rect.right() + 1 - margin - x;
  const int lines = paintText(mirrored(QRectF(x, rect.y() + 8, width, 42), rect), row, isSelected);
  paintDetails(mirrored(QRectF(x, rect.y() + 10 + lines * lineHeight, width, 18), rect), row, isSelected);
}

// Two sheets, one behind the other.
void TimelineRowPainter::paintVersionsSign(const QRectF& rect, bool isSelected) {
  const QSizeF sheet(rect.width() - 4, rect.height() - 3);
  m_painter.save();
  m_painter.setRenderHint(QPainter::Antialiasing);
  m_painter.setPen(QPen(isSelected ? m_colors.accentText : m_colors.dim, 1.2));
  m_painter.setBrush(m_ground);
  m_painter.drawRoundedRect(QRectF(rect.topLeft() + QPointF(4, 0), sheet), 2, 2);
  m_painter.drawRoundedRect(QRectF(rect.topLeft() + QPointF(0, 3), sheet), 2, 2);
  m_painter.restore();
}

int TimelineRowPainter::paintText(const QRectF& rect, const TimelineRow& row, bool isSelected) {
  QTextLayout layout(row.damage.isEmpty() ? row.text : row.damage, textFont(14));
  QTextOption option;
  // Each text in its own direction.
  option.setTextDirection(Qt::LayoutDirectionAuto);
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  QList<QTextLayout::FormatRange> formats;
  for (const TextRange& match : row.matches) {
    QTextCharFormat format;
    format.setBackground(isSelected ? blended(m_colors.accentText, m_ground, 0.35) : m_colors.match);
    formats.append({static_cast<int>(match.location), static_cast<int>(match.length), format});
  }
  layout.setFormats(formats);
  // Two lines, and of a third only that it is there.
  layout.beginLayout();
  double y = 0;
  qsizetype shown = 0;
  for (int i = 0; i < textLines; ++i) {
    QTextLine line = layout.createLine();
    if (!line.isValid()) break;
    line.setLineWidth(rect.width());
    line.setPosition({0, y});
    y += lineHeight;
    shown = line.textStart() + line.textLength();
  }
  layout.endLayout();
  m_painter.setPen(isSelected ? m_colors.accentText : row.damage.isEmpty() ? m_colors.text : m_colors.dim);
  layout.draw(&m_painter, rect.topLeft());
  if (shown >= layout.text().size()) return layout.lineCount();
  // Over the end of the last line.
  const QTextLine last = layout.lineAt(layout.lineCount() - 1);
  const QFontMetricsF metrics(layout.font());
  const double dots = metrics.horizontalAdvance(u'…');
  // Behind the last character that leaves room for them, none of which is cut through.
  const bool isRightToLeft = layout.text().isRightToLeft();
  const double furthest = isRightToLeft ? rect.width() - last.naturalTextWidth() + dots : rect.width() - dots;
  const int fitting = last.xToCursor(furthest, QTextLine::CursorOnCharacter);
  const double end = std::min(last.cursorToX(fitting), rect.width());
  const QRectF corner = isRightToLeft ? QRectF(rect.x(), rect.y() + last.y(), end, lineHeight)
                                      : QRectF(rect.x() + end, rect.y() + last.y(), rect.width() - end, lineHeight);
  m_painter.fillRect(corner, m_ground);
  const double x = isRightToLeft ? corner.right() - dots : corner.x();
  m_painter.drawText(QPointF(x, corner.y() + last.ascent()), u"…"_s);
  return layout.lineCount();
}

void TimelineRowPainter::paintDetails(const QRectF& rect, const TimelineRow& row, bool isSelected) {
  const QFont font = textFont(12);
  const QFontMetricsF metrics(font);
  m_painter.setFont(font);
  double left = rect.width();
  // From the beginning of the line; what does not fit is cut, and what comes after it left out.
  const auto put = [&](const QString& text, const QColor& color) {
    if (text.isEmpty() || left < 24) return;
    const QString shown = metrics.elidedText(text, Qt::ElideRight, left);
    const double width = metrics.horizontalAdvance(shown);
    const double x = m_isMirrored ? rect.x() + left - width : rect.right() - left;
    m_painter.setPen(color);
    m_painter.drawText(QRectF(x, rect.y(), width + 1, rect.height()), Qt::AlignLeft | Qt::AlignVCenter, shown);
    left -= width + 9;
  };
  put(row.placeAndWeather, isSelected ? m_colors.accentText : m_colors.dim);
  for (const QString& tag : row.tags) put(tag, isSelected ? m_colors.accentText : m_colors.accent);
}

}  // namespace quillo
