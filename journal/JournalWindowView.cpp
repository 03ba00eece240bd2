#include "journal/JournalWindowView.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "controls/look/JournalStyle.h"
#include "foundation/UserDefaults.h"
#include "journal/reading/ReadingView.h"
#include "journal/versions/VersionsBar.h"
#include "journal/views/FoldingColumns.h"
#include "journal/views/MonthView.h"
#include "journal/views/NoticeBar.h"
#include "journal/views/SearchField.h"
#include "journal/views/SidebarList.h"
#include "journal/views/StatePage.h"
#include "journal/views/StatusRow.h"
#include "journal/views/TimelineView.h"
#include "journal/views/YearHeatMap.h"
#include "journal/views/YearPage.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString geometryKey = u"JournalWindowGeometry"_s;
const QString columnsKey = u"JournalWindowColumns"_s;

// In points.
constexpr int barHeight = 53;
constexpr int sidebarMargin = 18;

QPushButton* button(const QString& title, const QString& description) {
  auto* made = new QPushButton(title);
  made->setFont(textFont(13));
  made->setToolTip(description);
  made->setAccessibleName(description);
  // The keyboard stays where one reads or writes; Tab still reaches it.
  made->setFocusPolicy(Qt::TabFocus);
  return made;
}

}  // namespace

JournalWindowView::JournalWindowView(QWidget& window, TimelineSource& timeline, const EditorServices& editorServices)
    : QObject(&window), m_window(window) {
  QWidget* bar = buildBar();
  QWidget* sidebarColumn = buildSidebar();
  QWidget* listColumn = buildList(timeline);
  QWidget* paperColumn = buildPaper(editorServices);
  columns = new FoldingColumns(sidebarColumn, listColumn, paperColumn);
  auto* rows = new QVBoxLayout(&window);
  rows->setContentsMargins(0, 0, 0, 0);
  rows->setSpacing(0);
  rows->addWidget(bar);
  rows->addWidget(columns, 1);
  connect(columns, &FoldingColumns::arranged, this, &JournalWindowView::alignBar);
  alignBar();
  applyColors();
}

QWidget* JournalWindowView::buildBar() {
  m_bar = new QWidget(&m_window);
  m_bar->setFixedHeight(barHeight);
  m_barStart = new QWidget;
  sidebarButton = button(u"\u2630"_s, u"Sidebar"_s);
  title = new QLabel;
  title->setFont(textFont(14, QFont::DemiBold));
  title->setTextFormat(Qt::PlainText);
  auto* start = new QHBoxLayout(m_barStart);
  start->setContentsMargins(12, 0, 8, 0);
  start->setSpacing(10);
  start->addWidget(sidebarButton);
  start->addWidget(title, 1);

  search = new SearchField;
  backButton = button(u"\u2039 List"_s, u"Back to the list"_s);
  readButton = button(u"Read"_s, u"Read or write"_s);
  readButton->setCheckable(true);
  moreButton = button(u"\u22EF"_s, u"Menu"_s);
  newButton = button(u"New Entry"_s, u"New entry"_s);
  newButton->setObjectName(u"primary"_s);
  auto* row = new QHBoxLayout(m_bar);
  row->setContentsMargins(0, 0, 14, 0);
  row->setSpacing(10);
  row->addWidget(m_barStart);
  row->addWidget(backButton);
  row->addWidget(search);
  row->addStretch(1);
  for (QPushButton* made : {readButton, moreButton, newButton}) row->addWidget(made);
  return m_bar;
}

QWidget* JournalWindowView::buildSidebar() {
  m_sidebarColumn = new QWidget;
  month = new MonthView;
  sidebar = new SidebarList;
  heatMap = new YearHeatMap(/*isLabelled=*/false);
  streak = new QLabel;
  streak->setFont(textFont(12));
  streak->setWordWrap(true);
  auto* column = new QVBoxLayout(m_sidebarColumn);
  column->setContentsMargins(sidebarMargin - 6, 8, sidebarMargin - 6, 14);
  column->setSpacing(8);
  column->addWidget(month, 0, Qt::AlignHCenter);
  column->addWidget(sidebar, 1);
  column->addWidget(heatMap);
  column->addWidget(streak);
  return m_sidebarColumn;
}

QWidget* JournalWindowView::buildList(TimelineSource& timeline) {
  m_listColumn = new QWidget;
  listStack = new QStackedWidget;
  list = new TimelineView(timeline);
  listState = new StatePage;
  listStack->addWidget(list);
  listStack->addWidget(listState);
  progress = new QLabel;
  progress->setFont(textFont(12));
  progress->setContentsMargins(18, 6, 18, 6);
  progress->hide();
  auto* column = new QVBoxLayout(m_listColumn);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(listStack, 1);
  column->addWidget(progress);
  return m_listColumn;
}

QWidget* JournalWindowView::buildPaper(const EditorServices& services) {
  auto* whole = new QWidget;
  status = new StatusRow;
  versions = new VersionsBar;
  paper = new QStackedWidget;
  editor = new EditorPane(services, *status);
  reading = new ReadingView;
  reading->setFrameStyle(QFrame::NoFrame);
  year = new YearPage;
  paperState = new StatePage;
  const QList<QWidget*> pages{editor, reading, year, paperState};
  for (QWidget* page : pages) paper->addWidget(page);
  auto* column = new QVBoxLayout(whole);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(versions);
  column->addWidget(paper, 1);
  column->addWidget(status);
  return whole;
}

void JournalWindowView::restorePlaces(const UserDefaults& defaults) {
  m_window.resize(1200, 760);
  if (const auto geometry = defaults.dataForKey(geometryKey)) m_window.restoreGeometry(*geometry);
  if (const auto kept = defaults.dataForKey(columnsKey)) columns->restore(*kept);
}

void JournalWindowView::keepPlaces(UserDefaults& defaults) const {
  defaults.setObjectForKey(PropertyListValue(m_window.saveGeometry()), geometryKey);
  defaults.setObjectForKey(PropertyListValue(columns->state()), columnsKey);
}

EntryContent JournalWindowView::editedContent() const {
  return {editor->title(), editor->details(), editor->text()};
}

void JournalWindowView::refreshReading() {
  const EntryContent content = editedContent();
  if (paper->currentWidget() != reading || reading->content() == content) return;
  const int place = reading->verticalScrollBar()->value();
  reading->setEntry(content);
  reading->verticalScrollBar()->setValue(place);
}

void JournalWindowView::alignBar() {
  const bool hasSidebar = columns->shows(FoldingColumns::Column::Sidebar);
  const bool hasList = columns->shows(FoldingColumns::Column::List);
  const bool isNarrow = columns->columnCount() < 3;
  const QList<int> widths = columns->sizes();
  // The search stands above the list, as wide as it.
  title->setVisible(!isNarrow);
  m_barStart->setFixedWidth(isNarrow ? sidebarButton->sizeHint().width() + 20 : hasSidebar ? widths[0] : 220);
  const int searchWidth = std::max(180, widths[1] - 20);
  search->setMinimumWidth(!isNarrow && hasList ? searchWidth : 120);
  search->setMaximumWidth(!isNarrow && hasList ? searchWidth : 500);
  const bool isOne = columns->columnCount() == 1;
  backButton->setVisible(isOne && !hasList);
  search->setVisible(!isOne || hasList);
  newButton->setText(isNarrow ? u"+"_s : u"New Entry"_s);
  m_window.update();
}

void JournalWindowView::applyColors() {
  const JournalColors colors = JournalColors::current();
  applyJournalStyle(m_window, colors);
  editor->applyColors();
  status->applyColors();
  versions->applyColors();
  status->notices().applyColors();
  search->applyColors();
  sidebar->applyColors();
  year->applyColors();
  listState->applyColors();
  paperState->applyColors();
  for (const auto& [label, color] :
       {std::pair(title, colors.text), std::pair(streak, colors.dim), std::pair(progress, colors.dim)}) {
    QPalette own = label->palette();
    own.setColor(QPalette::WindowText, color);
    label->setPalette(own);
  }
  m_window.update();
}

void JournalWindowView::paintGrounds(QPainter& painter) const {
  const JournalColors colors = JournalColors::current();
  const QRect whole = m_window.rect();
  painter.fillRect(whole, colors.paper);
  painter.fillRect(0, 0, whole.width(), barHeight, colors.bar);
  const auto ground = [&](const QWidget& column, const QColor& color) {
    if (!column.isVisible()) return;
    painter.fillRect(QRect(column.mapTo(&m_window, QPoint(0, 0)), column.size()), color);
  };
  ground(*m_sidebarColumn, colors.sidebar);
  ground(*m_listColumn, colors.list);
  painter.fillRect(0, barHeight - 1, whole.width(), 1, colors.line);
}

}  // namespace quillo
