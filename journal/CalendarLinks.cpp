#include "journal/CalendarLinks.h"

#include "journal/JournalWindowView.h"
#include "journal/model/JournalSearch.h"
#include "journal/views/MonthView.h"
#include "journal/views/YearHeatMap.h"
#include "journal/views/YearPage.h"

#include <QLocale>
#include <QMenu>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

CalendarLinks::CalendarLinks(JournalWindowView& view, Actions actions) : m_view(view), m_actions(std::move(actions)) {
  using Kind = SearchFilter::Kind;
  const auto narrow = [this](Kind kind) { return [this, kind](QDate day) { m_actions.addFilter({kind, {}, day}); }; };
  connect(m_view.month, &MonthView::dayActivated, this, narrow(Kind::Day));
  connect(m_view.month, &MonthView::monthActivated, this, narrow(Kind::Month));
  connect(m_view.month, &MonthView::yearActivated, this, narrow(Kind::Year));
  connect(m_view.month, &MonthView::contextMenuWanted, this, &CalendarLinks::showMenu);
  connect(m_view.heatMap, &YearHeatMap::dayActivated, this, narrow(Kind::Day));
  const auto leaveYear = [this](Kind kind) {
    return [this, kind](QDate day) {
      m_actions.showYear(false);
      m_actions.addFilter({kind, {}, day});
    };
  };
  connect(m_view.year, &YearPage::dayActivated, this, leaveYear(Kind::Day));
  connect(m_view.year, &YearPage::yearActivated, this, leaveYear(Kind::Year));
}

QString CalendarLinks::newEntryTitle(QDate day) {
  const bool isThisYear = day.year() == QDate::currentDate().year();
  return u"New Entry on "_s + QLocale().toString(day, isThisYear ? u"d MMMM"_s : u"d MMMM yyyy"_s);
}

void CalendarLinks::showMenu(QDate day, QPoint globalPosition) {
  QMenu menu(m_view.month);
  menu.addAction(newEntryTitle(day), this, [this, day] { m_actions.beginEntry(day); });
  menu.addAction(u"Entries of This Day"_s, this, [this, day] {
    m_actions.addFilter({SearchFilter::Kind::Day, {}, day});
  });
  menu.exec(globalPosition);
}

}  // namespace quillo
