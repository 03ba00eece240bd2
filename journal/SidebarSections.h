#pragma once

#include "journal/views/SidebarList.h"

#include <QDate>
#include <QList>

namespace quillo {

class JournalOverview;

// What the sidebar lists of a journal; `damaged` is how many of its entries cannot be read.
[[nodiscard]] QList<SidebarSection> sidebarSections(const JournalOverview& overview, qsizetype damaged, QDate today);

}  // namespace quillo
