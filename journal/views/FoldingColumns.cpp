#include "journal/views/FoldingColumns.h"

#include <QDataStream>
#include <QIODevice>
#include <QSplitterHandle>

namespace quillo {

namespace {

// In points.
constexpr int twoColumnsBelow = 700;
constexpr int oneColumnBelow = 480;
constexpr int narrowestSidebar = 200;
constexpr int narrowestList = 220;
constexpr int narrowestPaper = 240;

}  // namespace

FoldingColumns::FoldingColumns(QWidget* sidebar, QWidget* list, QWidget* paper, QWidget* parent)
    : QSplitter(Qt::Horizontal, parent), m_columns{sidebar, list, paper}, m_widths{220, 392} {
  setChildrenCollapsible(false);
  setHandleWidth(1);
  sidebar->setMinimumWidth(narrowestSidebar);
  list->setMinimumWidth(narrowestList);
  paper->setMinimumWidth(narrowestPaper);
  for (QWidget* column : m_columns) addWidget(column);
  setStretchFactor(0, 0);
  setStretchFactor(1, 0);
  setStretchFactor(2, 1);
  // The window may become narrower than all three need: then they fold.
  setMinimumWidth(narrowestPaper);
  connect(this, &QSplitter::splitterMoved, this, [this] {
    const QList<int> widths = sizes();
    for (int i = 0; i < 2; ++i)
      if (widths[i] > 0) m_widths[i] = widths[i];
    Q_EMIT arranged();
  });
  arrange();
}

bool FoldingColumns::isWanted(Column column) const {
  return m_wanted[static_cast<int>(column)];
}

void FoldingColumns::setWanted(Column column, bool isWanted) {
  if (column == Column::Paper) return;
  m_wanted[static_cast<int>(column)] = isWanted;
  if (isWanted) m_front = column;
  arrange();
}

void FoldingColumns::bringToFront(Column column) {
  m_front = column;
  arrange();
}

bool FoldingColumns::shows(Column column) const {
  return !m_columns[static_cast<int>(column)]->isHidden();
}

void FoldingColumns::arrange() {
  m_columnCount = width() < oneColumnBelow ? 1 : width() < twoColumnsBelow ? 2 : 3;
  bool shown[3];
  for (int i = 0; i < 3; ++i) {
    const bool isInFront = static_cast<int>(m_front) == i;
    if (m_columnCount == 3) shown[i] = m_wanted[i] || i == 2;
    if (m_columnCount == 1) shown[i] = isInFront;
  }
  if (m_columnCount == 2) {
    // The sidebar takes the list's place while it is in front.
    shown[0] = m_front == Column::Sidebar;
    shown[1] = !shown[0] && m_wanted[1];
    shown[2] = true;
  }
  for (int i = 0; i < 3; ++i) m_columns[i]->setVisible(shown[i]);
  QList<int> widths{m_widths[0], m_widths[1], 0};
  if (m_columnCount == 2) widths[0] = widths[1] = qMin(m_widths[1], width() / 2);
  widths[2] = qMax(narrowestPaper, width() - (shown[0] ? widths[0] : 0) - (shown[1] ? widths[1] : 0));
  setSizes(widths);
  Q_EMIT arranged();
}

void FoldingColumns::resizeEvent(QResizeEvent* event) {
  QSplitter::resizeEvent(event);
  arrange();
}

QByteArray FoldingColumns::state() const {
  QByteArray bytes;
  QDataStream(&bytes, QIODevice::WriteOnly) << qint32{1} << m_widths << m_wanted[0] << m_wanted[1];
  return bytes;
}

void FoldingColumns::restore(const QByteArray& state) {
  QDataStream stream(state);
  qint32 version = 0;
  QList<int> widths;
  bool sidebar = true;
  bool list = true;
  stream >> version;
  if (version != 1) return;
  stream >> widths >> sidebar >> list;
  if (stream.status() != QDataStream::Ok || widths.size() != 2) return;
  m_widths = {qBound(narrowestSidebar, widths[0], 2000), qBound(narrowestList, widths[1], 2000)};
  m_wanted[0] = sidebar;
  m_wanted[1] = list;
  arrange();
}

}  // namespace quillo
