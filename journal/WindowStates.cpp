#include "journal/WindowStates.h"

#include "journal/CalendarLinks.h"
#include "journal/model/JournalSearch.h"
#include "journal/views/StatePage.h"
#include "qlcore/index/IndexedEntry.h"

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

void showMissingJournal(StatePage& page, const std::optional<QString>& problem, const MissingJournalActions& actions) {
  if (problem)
    page.show(u"The journal cannot be reached"_s, *problem,
              {{u"Try Again"_s, actions.tryAgain}, {u"Choose Another…"_s, actions.choose}});
  else
    page.show(
        u"No journal yet"_s, u"A journal is a folder of plain files on your disk."_s,
        {{u"Set Up Quillo…"_s, actions.setUp}, {u"Create One"_s, actions.create}, {u"Choose One…"_s, actions.choose}});
}

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

void showDamagedEntries(StatePage& page, const QList<IndexedDamage>& damaged, std::function<void()> showFiles) {
  // More than fit on the page help nobody; quilloctl lists them all.
  constexpr qsizetype mostShown = 8;
  QStringList reasons;
  for (const IndexedDamage& damage : damaged.first(std::min(mostShown, damaged.size()))) reasons << damage.reason;
  if (damaged.size() > mostShown) reasons << u"… and %1 more"_s.arg(damaged.size() - mostShown);
  page.show(u"Entries that cannot be read"_s, u"Their files are left as they are.\n\n"_s + reasons.join(u"\n\n"_s),
            {{u"Show the Files"_s, std::move(showFiles)}});
}

}  // namespace quillo
