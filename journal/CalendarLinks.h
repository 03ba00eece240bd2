#pragma once

#include <QDate>
#include <QObject>
#include <QPoint>

#include <functional>

namespace quillo {

class JournalWindowView;
struct SearchFilter;

// What the calendars of the window lead to: a day, a month or a year that is chosen narrows the list to it, and a day's
// menu begins an entry there.
class CalendarLinks : public QObject {
  Q_OBJECT

 public:
  struct Actions {
    std::function<void(const SearchFilter&)> addFilter;
    std::function<void(QDate)> beginEntry;
    std::function<void(bool)> showYear;
  };

  // The view must outlive the links.
  CalendarLinks(JournalWindowView& view, Actions actions);

  // "New Entry on 12 March"; with the year where it is not this one.
  [[nodiscard]] static QString newEntryTitle(QDate day);

 private:
  void showMenu(QDate day, QPoint globalPosition);

  JournalWindowView& m_view;
  Actions m_actions;
};

}  // namespace quillo
