#include "preferences/PreferencesWindow.h"

#include "controls/look/JournalColors.h"
#include "preferences/PageList.h"
#include "preferences/controls/FormStyle.h"
#include "preferences/pages/AdvancedPage.h"
#include "preferences/pages/BackupPage.h"
#include "preferences/pages/GeneralPage.h"
#include "preferences/pages/JournalPage.h"
#include "preferences/pages/PlacePage.h"
#include "preferences/pages/RemindersPage.h"
#include "preferences/pages/WritingPage.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollArea>
#include <QShortcut>
#include <QStackedWidget>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In points.
constexpr QSize usualSize{700, 500};
constexpr int listWidth = 176;
constexpr int listMargin = 10;
constexpr int listTop = 16;

constexpr QLatin1StringView titles[PreferencesWindow::pages] = {
    "General"_L1, "Journal"_L1, "Backup"_L1, "Reminders"_L1, "Place and Weather"_L1, "Writing"_L1, "Advanced"_L1};

}  // namespace

PreferencesWindow::PreferencesWindow(PreferencesServices services)
    : m_services(std::move(services)),
      m_store(m_services.settings),
      m_list(new PageList(this)),
      m_stack(new QStackedWidget(this)) {
  setObjectName(u"preferences"_s);
  setWindowTitle(u"Preferences"_s);
  auto* row = new QHBoxLayout(this);
  const bool isMirrored = layoutDirection() == Qt::RightToLeft;
  row->setContentsMargins(isMirrored ? 0 : listMargin, 0, isMirrored ? listMargin : 0, 0);
  row->setSpacing(listMargin);
  auto* side = new QVBoxLayout;
  side->setContentsMargins(0, listTop, 0, listTop);
  side->addWidget(m_list);
  row->addLayout(side);
  row->addWidget(m_stack, 1);
  makePageList();
  auto* close = new QShortcut(QKeySequence(u"Ctrl+W"_s), this);
  connect(close, &QShortcut::activated, this, &QWidget::close);
  setMinimumSize(620, 420);
  resize(usualSize);
  applyColors();
  m_list->setCurrentRow(General);
}

PreferencesWindow::~PreferencesWindow() = default;

void PreferencesWindow::makePageList() {
  m_list->setObjectName(u"pages"_s);
  m_list->setAccessibleName(u"Pages"_s);
  m_list->setFixedWidth(listWidth - 2 * listMargin);
  for (const QLatin1StringView title : titles) {
    m_list->addItem(title);
    // The page is made when it is first chosen.
    auto* area = new QScrollArea(m_stack);
    area->setFrameStyle(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_stack->addWidget(area);
  }
  connect(m_list, &QListWidget::currentRowChanged, this, &PreferencesWindow::pageWasChosen);
}

PreferencePage* PreferencesWindow::makePage(Page page) {
  switch (page) {
    case General:
      return new GeneralPage(m_store, m_services, this);
    case Journal:
      return new JournalPage(m_store, m_services, this);
    case Backup:
      return new BackupPage(m_store, m_services, this);
    case Reminders:
      return new RemindersPage(m_store, m_services, this);
    case PlaceAndWeather:
      return new PlacePage(m_store, this);
    case Writing:
      return new WritingPage(m_store, m_services.spellChecker, this);
    case Advanced:
      return new AdvancedPage(m_store, m_services, this);
    case pages:
      break;
  }
  return nullptr;
}

void PreferencesWindow::pageWasChosen(int index) {
  if (index < 0 || index >= pages) return;
  auto* area = qobject_cast<QScrollArea*>(m_stack->widget(index));
  if (!area->widget()) {
    PreferencePage* page = makePage(static_cast<Page>(index));
    page->setAutoFillBackground(false);
    area->setWidget(page);
    area->viewport()->setAutoFillBackground(false);
    page->setAutoFillBackground(false);
    page->orderTabs();
  }
  m_stack->setCurrentIndex(index);
}

PreferencePage* PreferencesWindow::currentPage() const {
  const auto* area = qobject_cast<QScrollArea*>(m_stack->currentWidget());
  return area ? qobject_cast<PreferencePage*>(area->widget()) : nullptr;
}

void PreferencesWindow::showPage(Page page) {
  m_list->setCurrentRow(page);
}

void PreferencesWindow::showWindow() {
  // Another program may have written them while nothing here was shown.
  m_store.reread();
  if (!isVisible()) m_list->setFocus();
  if (isMinimized()) showNormal();
  show();
  raise();
  activateWindow();
}

void PreferencesWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier)
    close();
  else
    QWidget::keyPressEvent(event);
}

void PreferencesWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) applyColors();
}

void PreferencesWindow::applyColors() {
  applyFormStyle(*this);
  m_list->setStyleSheet(u"QListWidget { background: transparent; border: none }"_s);
  m_stack->setStyleSheet(u"QStackedWidget, QScrollArea { background: transparent }"_s);
  update();
}

void PreferencesWindow::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.fillRect(rect(), colors.ground);
  const QRect side = layoutDirection() == Qt::RightToLeft ? QRect(width() - listWidth, 0, listWidth, height())
                                                          : QRect(0, 0, listWidth, height());
  painter.fillRect(side, colors.sidebar);
  painter.setPen(colors.line);
  const int edge = layoutDirection() == Qt::RightToLeft ? side.left() : side.right();
  painter.drawLine(edge, 0, edge, height());
}

}  // namespace quillo
