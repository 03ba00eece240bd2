#include "journal/SidebarSections.h"

#include "journal/model/JournalOverview.h"
#include "journal/model/JournalSearch.h"

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Of tags and places each; who has more finds them by the search.
constexpr qsizetype mostListed = 200;

const QString allEntries = u"All entries"_s;
const QString onThisDay = u"On this day"_s;

SidebarSection section(const QString& title, SidebarItem::Kind kind, const QList<JournalCount>& counts) {
  SidebarSection section{title, {}};
  for (const JournalCount& count : counts.first(std::min(mostListed, counts.size())))
    section.items.append({kind, count.name, static_cast<int>(count.count)});
  return section;
}

}  // namespace

QList<SidebarSection> sidebarSections(const JournalOverview& overview, qsizetype damaged, qsizetype conflicted,
                                      QDate today) {
  using Kind = SidebarItem::Kind;
  SidebarSection journal{u"Journal"_s,
                         {{Kind::AllEntries, allEntries, static_cast<int>(overview.total())},
                          {Kind::OnThisDay, onThisDay, overview.onThisDay(today)},
                          {Kind::YearInReview, u"Year"_s}}};
  if (conflicted > 0) journal.items.append({Kind::Versions, u"Several versions"_s, static_cast<int>(conflicted)});
  if (damaged > 0) journal.items.append({Kind::Damaged, u"Damaged"_s, static_cast<int>(damaged)});
  return {journal, section(u"Tags"_s, Kind::Tag, overview.tags()),
          section(u"Places"_s, Kind::Place, overview.places())};
}

std::optional<SidebarItem> sidebarItem(const JournalSearch& search) {
  using Kind = SidebarItem::Kind;
  if (search.isEmpty()) return SidebarItem{Kind::AllEntries, allEntries, -1};
  if (!search.words().trimmed().isEmpty() || search.filters().size() != 1) return std::nullopt;
  const SearchFilter& filter = search.filters().first();
  if (filter.kind == SearchFilter::Kind::Tag) return SidebarItem{Kind::Tag, filter.name, -1};
  if (filter.kind == SearchFilter::Kind::Place) return SidebarItem{Kind::Place, filter.name, -1};
  if (filter.kind == SearchFilter::Kind::OnThisDay) return SidebarItem{Kind::OnThisDay, onThisDay, -1};
  return std::nullopt;
}

}  // namespace quillo
