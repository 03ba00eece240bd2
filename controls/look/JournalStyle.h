#pragma once

class QWidget;

namespace quillo {

struct JournalColors;

// Makes buttons, fields, menus and scroll bars of a window look like the rest of it. To be called again when the
// window's palette changes.
void applyJournalStyle(QWidget& window, const JournalColors& colors);

}  // namespace quillo
