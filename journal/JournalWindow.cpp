#include "journal/JournalWindow.h"

#include "entry/text/EntryViewTextView.h"
#include "journal/ShortcutsDialog.h"
#include "journal/SidebarSections.h"
#include "journal/WindowStates.h"
#include "journal/reading/ReadingView.h"
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
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QRandomGenerator>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int usualFontSize = 16;
constexpr int smallestFontSize = 9;
constexpr int largestFontSize = 40;

}  // namespace

JournalWindow::JournalWindow(const JournalWindowServices& services)
    : m_services(services),
      m_library(services.library),
      m_timeline(m_library, services.weatherText),
      m_overview(m_library),
      m_commands(*this),
      m_view(*this, m_timeline, services.editor),
      m_calendar(m_view, {.addFilter = [this](const SearchFilter& filter) { addFilter(filter); },
                          .beginEntry = [this](QDate day) { beginEntry(day); },
                          .showYear = [this](bool isShown) { showYear(isShown); }}),
      m_deletion(m_library, m_timeline, m_view, [this](const QString& identifier) { showEntry(identifier); }),
      m_exchange(*this, services.exchange,
                 {.library = m_library,
                  .search = m_search,
                  .overview = m_overview,
                  .timeline = m_timeline,
                  .view = m_view,
                  .showDamaged = [this] { showDamaged(); }}),
      m_versions(*this, m_library, m_view, [this](const QString& identifier) { return showEntry(identifier); }) {
  setMinimumSize(320, 360);
  auto* menu = new QMenu(this);
  for (QMenu* part : m_commands.menus) menu->addMenu(part);
  m_view.moreButton->setMenu(menu);
  connectCommands();
  connectViews();
  restoreWindow();
  libraryStateDidChange();
  search();
}

JournalWindow::~JournalWindow() = default;

void JournalWindow::connectCommands() {
  const auto on = [this](QAction* command, auto act) { connect(command, &QAction::triggered, this, act); };
  const auto bringToFront = [this](FoldingColumns::Column column) { m_view.columns->bringToFront(column); };
  on(m_commands.newEntry, [this] { beginEntry(); });
  on(m_commands.newEntryOnDay, [this] { beginEntry(m_view.month->currentDay()); });
  on(m_commands.details, [this] { editDetails(); });
  on(m_commands.compareVersions, [this] { m_versions.compare(); });
  on(m_commands.close, [this] { close(); });
  on(m_commands.print, [this] { m_exchange.print(m_services.weatherText); });
  on(m_commands.exportPDF, [this] { m_exchange.beginExport(u"pdf"_s); });
  on(m_commands.exportEntries, [this] { m_exchange.beginExport(); });
  on(m_commands.importEntries, [this] { m_exchange.beginImport(); });
  on(m_commands.undoImport, [this] { m_exchange.offerUndoOfImport(); });
  on(m_commands.undo, [this] { undo(); });
  on(m_commands.redo, [this] { m_view.editor->textView().redo(); });
  on(m_commands.find, [this, bringToFront] {
    if (m_view.columns->columnCount() == 1) bringToFront(FoldingColumns::Column::List);
    m_view.search->beginSearch();
  });
  on(m_commands.moveToTrash, [this] { m_deletion.moveToTrash(m_view.list->selectedIdentifiers()); });
  on(m_commands.read, [this](bool reads) { setReads(reads); });
  connect(m_view.readButton, &QPushButton::clicked, this, [this](bool reads) { setReads(reads); });
  on(m_commands.year, [this](bool isShown) { showYear(isShown); });
  on(m_commands.sidebar, [this](bool isShown) { m_view.columns->setWanted(FoldingColumns::Column::Sidebar, isShown); });
  on(m_commands.list, [this](bool isShown) { m_view.columns->setWanted(FoldingColumns::Column::List, isShown); });
  on(m_commands.larger, [this] { changeFontSize(m_services.fontSize() + 1); });
  on(m_commands.smaller, [this] { changeFontSize(m_services.fontSize() - 1); });
  on(m_commands.normalSize, [this] { changeFontSize(usualFontSize); });
  on(m_commands.allEntries, [this] {
    m_search.clear();
    showPaper();
    searchDidChange();
    m_view.list->setFocus();
  });
  on(m_commands.today, [this] { showDay(QDate::currentDate()); });
  on(m_commands.onThisDay, [this] { addFilter({SearchFilter::Kind::OnThisDay, {}, QDate::currentDate()}); });
  on(m_commands.randomEntry, [this] { randomEntry(); });
  on(m_commands.nextEntry, [this] { step(1); });
  on(m_commands.previousEntry, [this] { step(-1); });
  on(m_commands.shortcuts, [this] { ShortcutsDialog(m_commands, this).exec(); });
  on(m_commands.about, [this] { m_services.showAbout(); });

  connect(m_view.newButton, &QPushButton::clicked, m_commands.newEntry, &QAction::trigger);
  connect(m_view.sidebarButton, &QPushButton::clicked, this, [this, bringToFront] {
    const bool isShown = m_view.columns->shows(FoldingColumns::Column::Sidebar);
    if (m_view.columns->columnCount() == 3)
      m_view.columns->setWanted(FoldingColumns::Column::Sidebar, !isShown);
    else
      bringToFront(isShown ? FoldingColumns::Column::List : FoldingColumns::Column::Sidebar);
  });
  connect(m_view.backButton, &QPushButton::clicked, this,
          [bringToFront] { bringToFront(FoldingColumns::Column::List); });
  connect(m_view.columns, &FoldingColumns::arranged, this, [this] {
    m_commands.sidebar->setChecked(m_view.columns->shows(FoldingColumns::Column::Sidebar));
    m_commands.list->setChecked(m_view.columns->shows(FoldingColumns::Column::List));
  });
}

void JournalWindow::connectViews() {
  connect(m_view.search, &SearchField::wordsChanged, this, [this](const QString& words) {
    m_search.setWords(words);
    search();
  });
  connect(m_view.search, &SearchField::chipRemoved, this, [this](int index) {
    m_search.removeFilter(index);
    searchDidChange();
  });
  connect(m_view.search, &SearchField::cleared, m_commands.allEntries, &QAction::trigger);
  connect(m_view.search, &SearchField::leftForResults, this, [this] {
    if (m_view.list->currentRow() < 0 && m_timeline.total() > 0) m_view.list->setCurrentRow(0);
    m_view.list->setFocus();
  });
  connect(m_view.sidebar, &SidebarList::itemChosen, this, &JournalWindow::sidebarChosen);
  connect(m_view.list, &TimelineView::currentEntryChanged, this, &JournalWindow::entryChosen);
  connect(m_view.list, &TimelineView::entryActivated, this, [this] {
    m_view.columns->bringToFront(FoldingColumns::Column::Paper);
    m_view.editor->setFocus();
  });
  connect(m_view.list, &TimelineView::deletionWanted, m_commands.moveToTrash, &QAction::trigger);
  connect(m_view.list, &TimelineView::contextMenuWanted, this, [this](QPoint at) {
    QMenu menu(this);
    menu.addActions({m_commands.moveToTrash, m_commands.print, m_commands.exportPDF});
    menu.exec(at);
  });
  connect(m_view.reading, &ReadingView::tagActivated, this,
          [this](const QString& tag) { addFilter(SearchFilter::tag(tag)); });
  connect(m_view.reading, &ReadingView::linkActivated, this, [this](const QUrl& link) { m_services.openURL(link); });
  connect(&m_timeline, &Timeline::didReset, this, &JournalWindow::showListState);
  connect(&m_overview, &JournalOverview::didChange, this, &JournalWindow::showOverview);
  connect(&m_versions, &JournalVersions::countDidChange, this, &JournalWindow::showSidebar);
  connect(&m_library, &JournalLibrary::stateDidChange, this, &JournalWindow::libraryStateDidChange);
  connect(&m_library, &JournalLibrary::didChange, m_view.editor, &EditorPane::refresh);
  connect(&m_library, &JournalLibrary::didChange, &m_view, &JournalWindowView::refreshReading);
  connect(&m_library, &JournalLibrary::progressed, this, [this](qsizetype done, qsizetype total) {
    m_view.progress->setVisible(done < total);
    m_view.progress->setText(u"Reading the journal: %1 of %2"_s.arg(locale().toString(done), locale().toString(total)));
  });
  connect(m_view.editor, &EditorPane::entrySaved, this, [this](const QString& identifier) {
    m_library.entryDidChange(identifier);
    if (m_view.list->currentIdentifier().isEmpty()) m_view.list->setCurrentEntry(identifier);
  });
  connect(m_view.editor, &EditorPane::entryMoved, this, [this](const QString& identifier, QDate day) {
    if (m_view.list->currentIdentifier() == identifier) m_view.list->followCurrentEntry(day);
    m_view.month->setSelectedDay(day);
  });
  connect(m_view.editor, &EditorPane::deletionWanted, this,
          [this](const QString& identifier) { m_deletion.moveToTrash({identifier}); });
}

void JournalWindow::restoreWindow() {
  m_view.restorePlaces(m_services.defaults);
  applyFontSize();
  m_view.list->setFocus();
}

void JournalWindow::searchDidChange() {
  m_view.search->setWords(m_search.words());
  m_view.search->setChips(m_search.texts());
  search();
}

// Also where a click has marked another one whose page or filter is gone by now.
void JournalWindow::markSidebar() {
  const auto item = sidebarItem(m_search);
  m_view.sidebar->setChosen(item ? &*item : nullptr);
}

void JournalWindow::search() {
  m_problem.clear();
  markSidebar();
  m_dayToShow = {};
  const auto question = m_search.question(QDate::currentDate(), &m_problem);
  if (question) {
    m_timeline.show(*question);
    return;
  }
  // What was found last stays while the words are being put right.
  m_view.search->setStatus(m_problem, /*isProblem=*/true);
}

void JournalWindow::addFilter(const SearchFilter& filter) {
  m_search.addFilter(filter);
  searchDidChange();
  if (filter.kind != SearchFilter::Kind::Day) return;
  m_view.month->setSelectedDay(filter.day);
  m_dayToShow = filter.day;
}

void JournalWindow::showListState() {
  const qint64 all = m_overview.total();
  if (m_problem.isEmpty() && m_timeline.isCounted())
    m_view.search->setStatus(m_search.isEmpty() || all == 0
                                 ? QString()
                                 : u"%1 of %2"_s.arg(locale().toString(m_timeline.total()), locale().toString(all)),
                             /*isProblem=*/false);
  const bool isEmpty =
      m_timeline.isKnown() && m_timeline.total() == 0 && m_library.state() == JournalLibrary::State::Open;
  // The keyboard goes over to what takes the place of the list.
  const QWidget* focused = focusWidget();
  const bool hasKeyboard = focused == m_view.list || m_view.listState->isAncestorOf(focused);
  QWidget* const page = isEmpty ? static_cast<QWidget*>(m_view.listState) : m_view.list;
  m_view.listStack->setCurrentWidget(page);
  if (isEmpty)
    showEmptyList(*m_view.listState, m_search,
                  {.beginEntry = [this](std::optional<QDate> day) { beginEntry(day); },
                   .removeFilter =
                       [this](qsizetype index) {
                         m_search.removeFilter(index);
                         searchDidChange();
                       },
                   .showAll = [this] { m_commands.allEntries->trigger(); }});
  if (hasKeyboard) page->setFocus();
  if (m_timeline.total() == 0) return;
  if (std::exchange(m_showsFirst, false)) m_view.list->setCurrentRow(0);
  if (m_view.list->rows().firstRowOfDay(m_dayToShow) >= 0) m_view.list->showDay(std::exchange(m_dayToShow, {}));
  m_deletion.showNext();
}

void JournalWindow::showOverview() {
  const QDate today = QDate::currentDate();
  const QHash<QDate, int> entries = m_overview.entriesByDay();
  m_view.month->setMarkedDays({entries.keyBegin(), entries.keyEnd()});
  m_view.month->setToday(today);
  m_view.heatMap->setAmounts(entries, u"entries"_s);
  m_view.year->setEntriesByDay(entries, today);
  const WritingStreak streak = m_overview.streak(today);
  m_view.streak->setText(
      streak.daysWritten == 0
          ? QString()
          : (streak.daysWritten == 1 ? u"%1 day written, %2 in a row"_s : u"%1 days written, %2 in a row"_s)
                .arg(locale().toString(streak.daysWritten), locale().toString(streak.current)));
  m_library.listDamaged(this, [this](const QList<IndexedDamage>& damaged) {
    m_damaged = damaged;
    showSidebar();
  });
  showListState();
}

void JournalWindow::showSidebar() {
  if (!m_overview.isKnown()) return;
  m_view.sidebar->setSections(sidebarSections(m_overview, m_damaged.size(), m_versions.count(), QDate::currentDate()));
}

void JournalWindow::sidebarChosen(const SidebarItem& item) {
  using Kind = SidebarItem::Kind;
  if (item.kind == Kind::YearInReview) return showYear(true);
  if (item.kind == Kind::Damaged) return showDamaged();
  if (item.kind == Kind::Versions) return m_versions.showNext();
  m_search.clear();
  if (item.kind == Kind::OnThisDay) m_search.addFilter({SearchFilter::Kind::OnThisDay, {}, QDate::currentDate()});
  if (item.kind == Kind::Tag) m_search.addFilter(SearchFilter::tag(item.name));
  if (item.kind == Kind::Place) m_search.addFilter(SearchFilter::place(item.name));
  showPaper();
  searchDidChange();
  if (m_view.columns->columnCount() < 3) m_view.columns->bringToFront(FoldingColumns::Column::List);
}

void JournalWindow::showDamaged() {
  showDamagedEntries(*m_view.paperState, m_damaged, [this] { m_services.showFolder(m_library.entriesFolder()); });
  m_view.paper->setCurrentWidget(m_view.paperState);
  m_view.columns->bringToFront(FoldingColumns::Column::Paper);
}

void JournalWindow::showDay(QDate day) {
  // All entries, with that day's in view; where it has none, nothing to go to.
  if (!m_search.isEmpty()) {
    m_search.clear();
    searchDidChange();
  }
  m_view.list->showDay(day);
  m_view.month->setSelectedDay(day);
}

void JournalWindow::entryChosen(const QString& identifier) {
  m_view.month->setSelectedDay(m_view.list->rows().dayOfRow(m_view.list->currentRow()));
  if (identifier.isEmpty()) return;
  const QLJournalEntryFile* shown = m_view.editor->entry();
  if (shown && shown->uuid() == identifier) return;
  showEntry(identifier);
}

bool JournalWindow::showEntry(const QString& identifier) {
  Error error;
  const auto entry = m_library.entry(identifier, &error);
  if (!entry) {
    m_view.status->notices().show(error.localizedDescription);
    return false;
  }
  m_showsFirst = false;
  if (!m_view.editor->open(entry)) return false;
  if (m_view.list->currentIdentifier() != entry->uuid()) m_view.list->setCurrentEntry(entry->uuid());
  showPaper();
  return true;
}

void JournalWindow::editEntry(const QString& identifier) {
  if (!showEntry(identifier)) return;
  setReads(false);
  m_view.columns->bringToFront(FoldingColumns::Column::Paper);
  m_view.editor->setFocus();
}

void JournalWindow::beginEntry(std::optional<QDate> day) {
  m_showsFirst = false;
  if (!m_view.editor->beginEntry(day)) return;
  m_view.list->setCurrentEntry({});
  setReads(false);
  m_view.columns->bringToFront(FoldingColumns::Column::Paper);
  m_view.editor->setFocus();
}

void JournalWindow::editDetails() {
  if (m_library.state() != JournalLibrary::State::Open) return;
  if (m_commands.read->isChecked()) setReads(false);
  showPaper();
  m_view.columns->bringToFront(FoldingColumns::Column::Paper);
  m_view.editor->editDetails();
}

void JournalWindow::saveText() {
  m_view.editor->commitDetails();
  m_view.editor->save();
}

void JournalWindow::showYear(bool isShown) {
  m_commands.year->setChecked(isShown);
  if (isShown) {
    m_view.year->showYear(m_view.month->month().year());
    m_view.paper->setCurrentWidget(m_view.year);
    m_view.columns->bringToFront(FoldingColumns::Column::Paper);
    m_view.year->setFocus();
  } else {
    showPaper();
  }
}

void JournalWindow::showPaper() {
  m_commands.year->setChecked(false);
  markSidebar();
  const bool isOpen = m_library.state() == JournalLibrary::State::Open;
  QWidget* page = m_view.paperState;
  if (isOpen && m_commands.read->isChecked()) {
    page = m_view.reading;
    m_view.reading->setEntry(m_view.editedContent());
    m_view.reading->setSearchedWords(m_search.searchedWords(QDate::currentDate()));
  } else if (isOpen) {
    page = m_view.editor;
  }
  m_view.paper->setCurrentWidget(page);
  m_versions.followEntry();
}

void JournalWindow::setReads(bool reads) {
  m_view.editor->save();
  m_commands.read->setChecked(reads);
  m_view.readButton->setChecked(reads);
  showPaper();
  m_view.paper->currentWidget()->setFocus();
}

void JournalWindow::undo() {
  // The details' and the text's own steps first, while one writes there.
  if (m_view.editor->detailsView().isAncestorOf(QApplication::focusWidget()) && m_view.editor->undoDetails()) return;
  EntryViewTextView& text = m_view.editor->textView();
  if (text.hasFocus() && text.document()->isUndoAvailable()) return text.undo();
  // Those of the entry that is shown are later than a deletion, which showed another entry.
  if (!m_view.editor->undoDetails()) m_deletion.undo();
}

void JournalWindow::step(int rows) {
  if (m_timeline.total() == 0) return;
  m_view.list->setCurrentRow(std::clamp(m_view.list->currentRow() + rows, 0, m_timeline.total() - 1));
}

void JournalWindow::randomEntry() {
  if (!m_search.isEmpty()) {
    m_search.clear();
    searchDidChange();
  }
  const auto total = m_overview.total();
  if (total == 0) return;
  JournalQuestion question;
  question.offset = QRandomGenerator::global()->bounded(total);
  question.limit = 1;
  m_library.ask(this, question, [this](const JournalAnswer& answer) {
    if (!answer.entries.isEmpty()) showEntry(answer.entries.first().uuid);
  });
}

void JournalWindow::changeFontSize(int points) {
  m_services.setFontSize(std::clamp(points, smallestFontSize, largestFontSize));
  applyFontSize();
}

void JournalWindow::applyFontSize() {
  m_view.editor->setFontSize(m_services.fontSize());
  m_view.reading->setFontSize(m_services.fontSize());
}

void JournalWindow::libraryStateDidChange() {
  using State = JournalLibrary::State;
  const State state = m_library.state();
  const bool isOpen = state == State::Open;
  for (QWidget* part : {static_cast<QWidget*>(m_view.search), static_cast<QWidget*>(m_view.newButton),
                        static_cast<QWidget*>(m_view.readButton)})
    part->setEnabled(isOpen);
  if (!isOpen)
    showMissingJournal(*m_view.paperState, state == State::Away ? std::optional(m_library.problem()) : std::nullopt,
                       {.setUp = [this] { m_services.setUp(); },
                        .create = [this] { m_services.createJournal(); },
                        .choose = [this] { m_services.chooseJournal(*this); },
                        .tryAgain = [this] { m_library.reopen(); }});
  const QString name = isOpen ? m_library.name() : QString();
  m_view.title->setText(name.isEmpty() ? u"Quillo"_s : name);
  setWindowTitle(name.isEmpty() ? u"Quillo"_s : name + u" \u2014 Quillo"_s);
  if (isOpen) showOtherJournal(m_library.package()->url());
  if (isOpen) m_view.editor->restoreDraft();
  showPaper();
  showListState();
}

// An entry of the journal before is none of this one's; what is not saved of it stays, and goes into this one.
void JournalWindow::showOtherJournal(const QUrl& url) {
  const QUrl before = std::exchange(m_journal, url);
  if (before == url || m_view.editor->isUnsaved()) return;
  m_view.editor->clear();
  m_view.list->setCurrentEntry({});
  m_timeline.clear();
  m_deletion.forget();
  m_showsFirst = true;
}

void JournalWindow::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange) m_view.applyColors();
  // A drive may have been plugged in or out.
  if (event->type() == QEvent::ActivationChange && isActiveWindow()) m_library.reopen();
  if (event->type() == QEvent::ActivationChange && !isActiveWindow()) m_view.editor->save();
  QWidget::changeEvent(event);
}

void JournalWindow::closeEvent(QCloseEvent* event) {
  saveText();
  m_view.keepPlaces(m_services.defaults);
  QWidget::closeEvent(event);
}

// From the paper to the list, and from there to all entries.
void JournalWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Escape || event->modifiers() != Qt::NoModifier) return QWidget::keyPressEvent(event);
  const bool isInList = m_view.list->hasFocus() || m_view.listState->isAncestorOf(QApplication::focusWidget());
  if (isInList && !m_search.isEmpty()) return m_commands.allEntries->trigger();
  if (m_view.paper->currentWidget() == m_view.year) showYear(false);
  m_view.columns->bringToFront(FoldingColumns::Column::List);
  m_view.list->setFocus();
}

void JournalWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  m_view.paintGrounds(painter);
}

}  // namespace quillo
