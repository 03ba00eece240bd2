#include "journal/printing/EntryPages.h"

#include "controls/Fonts.h"
#include "journal/printing/PlainLetters.h"
#include "journal/reading/EntryDecorations.h"
#include "journal/reading/EntryFormat.h"

#include <QAbstractTextDocumentLayout>
#include <QPagedPaintDevice>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QTextTable>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In points.
constexpr double pointsPerInch = 72;
constexpr double footHeight = 26;
constexpr int footSize = 9;
constexpr double spaceBetweenEntries = 30;
constexpr double smallestPage = 36;

// Ink on white.
EntryLook lookOfPaper(int fontSize) {
  JournalColors colors = JournalColors::forPalette(QPalette(QColor(0xef, 0xef, 0xef)));
  colors.paper = Qt::white;
  colors.text = QColor(0x1c1e21);
  colors.dim = QColor(0x66635c);
  colors.accent = QColor(0x1f5fa8);
  colors.line = QColor(0xc4c0b6);
  return {.colors = colors, .fontSize = std::clamp(fontSize, 6, 48), .linksTags = false};
}

QRectF rectOf(const EntryDocument& document, const QTextBlock& block) {
  return document.documentLayout()->blockBoundingRect(block);
}

bool isCodeLine(const QTextBlock& block) {
  return block.isValid() && block.blockFormat().boolProperty(EntryFormat::Code);
}

void addLines(const EntryDocument& document, const QTextBlock& block, QList<PageUnit>& units) {
  const QTextBlockFormat format = block.blockFormat();
  const QTextLayout* layout = block.layout();
  const QRectF rect = rectOf(document, block);
  const double height = std::max(1.0, format.lineHeight());
  const int count = std::max(1, layout->lineCount());
  const bool isCode = format.boolProperty(EntryFormat::Code);
  const bool beginsCode = isCode && !isCodeLine(block.previous());
  const bool endsCode = isCode && !isCodeLine(block.next());
  const double panel = 0.6 * document.look().fontSize;
  const bool isHeading = format.headingLevel() > 0 || format.boolProperty(EntryFormat::Heading);
  for (int line = 0; line < count; ++line) {
    const double top = rect.top() + line * height;
    // Of a paragraph neither the first line alone stands at a page's end nor the last alone at the next one's top.
    const bool isNearEdge = count > 1 && (line == 0 || line == count - 2);
    const bool isNearCodeEdge = isCode && !endsCode && (beginsCode || !isCodeLine(block.next().next()));
    units.append(
        {beginsCode && line == 0 ? top - panel : top, top + height, isHeading || isNearEdge || isNearCodeEdge});
  }
  if (endsCode) units.last().bottom += panel;
}

void addRows(const EntryDocument& document, const QTextTable& table, QList<PageUnit>& units) {
  const double padding = table.format().cellPadding() + 1;
  for (int row = 0; row < table.rows(); ++row) {
    PageUnit unit{.top = 0, .bottom = 0, .keepsWithNext = row == 0 && table.rows() > 1};
    for (int column = 0; column < table.columns(); ++column) {
      const QTextTableCell cell = table.cellAt(row, column);
      const QRectF first = rectOf(document, cell.firstCursorPosition().block());
      const QRectF last = rectOf(document, cell.lastCursorPosition().block());
      unit.top = column == 0 ? first.top() : std::min(unit.top, first.top());
      unit.bottom = std::max(unit.bottom, last.bottom());
    }
    unit.top -= padding;
    unit.bottom += padding;
    units << unit;
  }
}

}  // namespace

QList<PageUnit> pageUnits(const EntryDocument& document) {
  QList<PageUnit> units;
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    if (const QTextTable* table = QTextCursor(block).currentTable()) {
      addRows(document, *table, units);
      block = table->lastCursorPosition().block();
    } else {
      addLines(document, block, units);
    }
  }
  return units;
}

qsizetype unitsThatFit(const QList<PageUnit>& units, qsizetype first, double top, double room, bool isPageEmpty) {
  qsizetype count = 0;
  while (first + count < units.size() && units[first + count].bottom - top <= room) ++count;
  if (first + count == units.size()) return count;
  qsizetype kept = count;
  while (kept > 0 && units[first + kept - 1].keepsWithNext) --kept;
  if (kept > 0) return kept;
  // Everything here would keep with the next, or nothing fits: a fresh page is better, but it must go on on that one.
  return isPageEmpty ? std::max<qsizetype>(count, 1) : 0;
}

void setUpPdf(QPdfWriter& writer, const QPageLayout& layout, const QString& title) {
  // Fine enough for the letters of a small text.
  constexpr int resolution = 1200;
  writer.setResolution(resolution);
  writer.setPageLayout(layout);
  writer.setCreator(u"Quillo"_s);
  writer.setTitle(title);
}

EntryPages::EntryPages(QPagedPaintDevice& device, int fontSize, const PageRange& range)
    : m_device(device), m_painter(&device), m_look(lookOfPaper(fontSize)), m_range(range) {
  const QSizeF page = device.pageLayout().paintRect(QPageLayout::Point).size();
  m_width = std::max(smallestPage, page.width());
  m_height = std::max(smallestPage, page.height() - footHeight);
}

EntryPages::~EntryPages() = default;

bool EntryPages::startPage() {
  paintFoot();
  ++m_page;
  m_y = 0;
  // The device's own first page is for the first one that is wanted.
  return !m_range.contains(m_page) || m_page == m_range.first || m_device.newPage();
}

bool EntryPages::add(const PrintedEntry& entry, const std::function<bool()>& turnPage) {
  EntryDocument document({entry.title, entry.details, entry.text}, m_look);
  drawLettersPlainly(document);
  document.setTextWidth(m_width);
  const QList<PageUnit> units = pageUnits(document);
  if (m_y > 0) m_y += spaceBetweenEntries * m_look.fontSize / 11;
  // Each time round either units are put down or an empty page is begun, on which some are.
  for (qsizetype first = 0; first < units.size();) {
    const double top = units[first].top;
    const qsizetype count = unitsThatFit(units, first, top, m_height - m_y, m_y == 0);
    if (count > 0) {
      const double height = std::min(units[first + count - 1].bottom - top, m_height - m_y);
      paintSlice(document, top, height);
      m_y += height;
      first += count;
    }
    if (first < units.size() && (!startPage() || !turnPage())) return false;
  }
  return true;
}

bool EntryPages::finish() {
  paintFoot();
  return m_painter.end();
}

void EntryPages::paintSlice(const EntryDocument& document, double top, double height) {
  if (!m_range.contains(m_page)) return;
  m_painter.save();
  m_painter.scale(m_device.logicalDpiX() / pointsPerInch, m_device.logicalDpiY() / pointsPerInch);
  m_painter.translate(0, m_y - top);
  // Slanted letters reach a little out of the column, as marks of searched words and code do.
  const QRectF slice(-4, top, m_width + 8, height);
  m_painter.setClipRect(slice);
  paintDecorations(m_painter, document, slice);
  QAbstractTextDocumentLayout::PaintContext context;
  context.clip = slice;
  context.palette.setColor(QPalette::Text, m_look.colors.text);
  document.documentLayout()->draw(&m_painter, context);
  m_painter.restore();
}

void EntryPages::paintFoot() {
  if (!m_range.contains(m_page)) return;
  m_painter.save();
  m_painter.scale(m_device.logicalDpiX() / pointsPerInch, m_device.logicalDpiY() / pointsPerInch);
  m_painter.setFont(textFont(footSize));
  m_painter.setPen(m_look.colors.dim);
  m_painter.drawText(QRectF(0, m_height, m_width, footHeight), Qt::AlignHCenter | Qt::AlignBottom,
                     QString::number(m_page));
  m_painter.restore();
}

}  // namespace quillo
