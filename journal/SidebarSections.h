#pragma once

#include "journal/views/SidebarList.h"

#include <QDate>
#include <QList>

#include <optional>

namespace quillo {

class JournalOverview;
class JournalSearch;

// What the sidebar lists of a journal; `damaged` is how many of its entries cannot be read, and `conflicted` of how
// many there are several versions.
[[nodiscard]] QList<SidebarSection> sidebarSections(const JournalOverview& overview, qsizetype damaged,
                                                    qsizetype conflicted, QDate today);

// The item that asks for just what is searched for; its count is unknown.
[[nodiscard]] std::optional<SidebarItem> sidebarItem(const JournalSearch& search);

}  // namespace quillo
