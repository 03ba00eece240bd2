#pragma once

#include "journal/CalendarLinks.h"
#include "journal/EntryDeletion.h"
#include "journal/JournalCommands.h"
#include "journal/JournalExchange.h"
#include "journal/JournalVersions.h"
#include "journal/JournalWindowView.h"
#include "journal/editor/EditorPane.h"
#include "journal/model/JournalLibrary.h"
#include "journal/model/JournalOverview.h"
#include "journal/model/JournalSearch.h"
#include "journal/model/Timeline.h"

#include <QUrl>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

class UserDefaults;
struct SidebarItem;

// What the window works with; it must outlive it.
struct JournalWindowServices {
  JournalLibrary& library;
  EditorServices editor;
  // Where the window's place and sizes are kept.
  UserDefaults& defaults;
  std::function<QString(const QLWeather&)> weatherText;
  // Of the text in points, from the settings; the setter keeps it.
  std::function<int()> fontSize;
  std::function<void(int)> setFontSize;
  // Asks for all that a first start decides; without that makes a journal at the usual place, or lets the person choose
  // one.
  std::function<void()> setUp;
  std::function<void()> createJournal;
  std::function<void(QWidget& window)> chooseJournal;
  // In the desktop's file manager.
  std::function<void(const QString& folder)> showFolder;
  std::function<void(const QUrl& url)> openURL;
  std::function<void()> showAbout;
  JournalExchangeServices exchange;
};

// The journal's window: calendar and sidebar, the list of entries with the search above it, and the entry. Knows of
// entries and questions only.
class JournalWindow : public QWidget {
  Q_OBJECT

 public:
  explicit JournalWindow(const JournalWindowServices& services);
  ~JournalWindow() override;

  // Of the quillo: URLs. False where there is no such entry, which the window says.
  bool showEntry(const QString& identifier);
  // The same, with the keyboard in its text.
  void editEntry(const QString& identifier);
  // Now, or on another day at this time of the day.
  void beginEntry(std::optional<QDate> day = std::nullopt);
  // The settings may have another size of the text.
  void applyFontSize();
  void beginImport() { m_exchange.beginImport(); }
  // Before the program ends: saves, asks nobody.
  void saveText();

  [[nodiscard]] JournalCommands& commands() { return m_commands; }
  [[nodiscard]] JournalWindowView& view() { return m_view; }

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void connectCommands();
  void connectViews();
  void restoreWindow();

  void search();
  void markSidebar();
  void searchDidChange();
  void addFilter(const SearchFilter& filter);
  void showListState();
  void showOverview();
  void showSidebar();
  void sidebarChosen(const SidebarItem& item);
  void entryChosen(const QString& identifier);
  void showDamaged();
  void showDay(QDate day);
  void showYear(bool isShown);
  void showPaper();
  void setReads(bool reads);
  void editDetails();
  void undo();
  void step(int rows);
  void randomEntry();
  void changeFontSize(int points);
  void libraryStateDidChange();
  void showOtherJournal(const QUrl& url);

  JournalWindowServices m_services;
  JournalLibrary& m_library;
  Timeline m_timeline;
  JournalOverview m_overview;
  JournalSearch m_search;
  QString m_problem;  // with the words of the search
  JournalCommands m_commands;
  JournalWindowView m_view;
  CalendarLinks m_calendar;
  EntryDeletion m_deletion;
  JournalExchange m_exchange;
  JournalVersions m_versions;
  QUrl m_journal;
  QList<IndexedDamage> m_damaged;
  // What the list shows first once it is known: the newest entry, or the one asked for.
  bool m_showsFirst{true};
  // A day that was chosen, whose first entry is to be shown once the list has it.
  QDate m_dayToShow;
};

}  // namespace quillo
