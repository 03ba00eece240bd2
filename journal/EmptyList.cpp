#include "journal/EmptyList.h"

#include "journal/CalendarLinks.h"
#include "journal/model/JournalSearch.h"
#include "journal/views/StatePage.h"

namespace quillo {

using namespace Qt::StringLiterals;

void showEmptyList(StatePage& page, const JournalSearch& search, const EmptyListActions& actions) {
  if (search.isEmpty()) {
    page.show(u"Nothing written yet"_s, u"The first entry is a key away: Ctrl+N."_s,
              {{u"New Entry"_s, [begin = actions.beginEntry] { begin(std::nullopt); }}});
    return;
  }
  QList<StatePage::Action> offers;
  const QList<SearchFilter>& filters = search.filters();
  const bool isOfDay =
      filters.size() == 1 && filters.first().kind == SearchFilter::Kind::Day && search.words().trimmed().isEmpty();
  if (isOfDay)
    offers.append({CalendarLinks::newEntryTitle(filters.first().day),
                   [begin = actions.beginEntry, day = filters.first().day] { begin(day); }});
  for (qsizetype i = 0; i < filters.size() && !isOfDay; ++i)
    offers.append({u"Without %1"_s.arg(filters[i].text()), [remove = actions.removeFilter, i] { remove(i); }});
  offers.append({u"Show all entries"_s, actions.showAll});
  if (isOfDay)
    page.show(u"Nothing written"_s, u"The journal has no entry of %1."_s.arg(filters.first().text()), offers);
  else
    page.show(u"Nothing found"_s, u"No entry has all of this."_s, offers);
}

}  // namespace quillo
