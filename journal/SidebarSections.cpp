#include "journal/SidebarSections.h"

#include "journal/model/JournalOverview.h"

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Of tags and places each; who has more finds them by the search.
constexpr qsizetype mostListed = 200;

SidebarSection section(const QString& title, SidebarItem::Kind kind, const QList<JournalCount>& counts) {
  SidebarSection section{title, {}};
  for (const JournalCount& count : counts.first(std::min(mostListed, counts.size())))
    section.items.append({kind, count.name, static_cast<int>(count.count)});
  return section;
}

}  // namespace

QList<SidebarSection> sidebarSections(const JournalOverview& overview, qsizetype damaged, QDate today) {
  using Kind = SidebarItem::Kind;
  SidebarSection journal{u"Journal"_s,
                         {{Kind::AllEntries, u"All entries"_s, static_cast<int>(overview.total())},
                          {Kind::OnThisDay, u"On this day"_s, overview.onThisDay(today)},
                          {Kind::YearInReview, u"Year"_s}}};
  if (damaged > 0) journal.items.append({Kind::Damaged, u"Damaged"_s, static_cast<int>(damaged)});
  return {journal, section(u"Tags"_s, Kind::Tag, overview.tags()),
          section(u"Places"_s, Kind::Place, overview.places())};
}

}  // namespace quillo
