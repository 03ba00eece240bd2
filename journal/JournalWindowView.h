#pragma once

#include "journal/editor/EditorPane.h"
#include "journal/reading/EntryDocument.h"

#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>

namespace quillo {

class FoldingColumns;
class MonthView;
class SearchField;
class ReadingView;
class SidebarList;
class StatePage;
class StatusRow;
class TimelineSource;
class TimelineView;
class UserDefaults;
class VersionsBar;
class YearHeatMap;
class YearPage;

// What the journal's window is made of, and where it stands: a bar over three columns. The widgets are children of the
// window.
class JournalWindowView : public QObject {
  Q_OBJECT

 public:
  JournalWindowView(QWidget& window, TimelineSource& timeline, const EditorServices& editor);

  // In the bar.
  QPushButton* sidebarButton;
  QLabel* title;
  SearchField* search;
  QPushButton* backButton;  // to the list, where only one column shows
  QPushButton* readButton;
  QPushButton* moreButton;
  QPushButton* newButton;
  // The sidebar.
  MonthView* month;
  SidebarList* sidebar;
  YearHeatMap* heatMap;
  QLabel* streak;
  // The list, and what stands in its place where it is empty.
  QStackedWidget* listStack;
  TimelineView* list;
  StatePage* listState;
  QLabel* progress;
  // The paper.
  VersionsBar* versions;
  QStackedWidget* paper;
  EditorPane* editor;
  ReadingView* reading;
  YearPage* year;
  StatePage* paperState;
  StatusRow* status;

  FoldingColumns* columns;

  // Draws the grounds and lines of bar and columns.
  void paintGrounds(QPainter& painter) const;
  void applyColors();
  // Where the window stands and how wide its columns are, as the settings have it from the last time.
  void restorePlaces(const UserDefaults& defaults);
  void keepPlaces(UserDefaults& defaults) const;
  // The entry as the editor has it.
  [[nodiscard]] EntryContent editedContent() const;
  // Takes in what has changed in the entry that is being read, and stays at its place.
  void refreshReading();
  // To be called when columns have moved: the search field stands above the list.
  void alignBar();

 private:
  [[nodiscard]] QWidget* buildBar();
  [[nodiscard]] QWidget* buildSidebar();
  [[nodiscard]] QWidget* buildList(TimelineSource& timeline);
  [[nodiscard]] QWidget* buildPaper(const EditorServices& services);

  QWidget& m_window;
  QWidget* m_bar;
  QWidget* m_barStart;
  QWidget* m_sidebarColumn;
  QWidget* m_listColumn;
};

}  // namespace quillo
