#pragma once

#include <QString>

class QWidget;

namespace quillo {

struct JournalColors;

// Makes buttons, fields, menus and scroll bars of a window look like the rest of it. To be called again when the
// window's palette changes.
void applyJournalStyle(QWidget& window, const JournalColors& colors);

// The same as a style sheet with names in place of colours, %paper for one, for windows that have more to say; and such
// a sheet with the colours in it.
[[nodiscard]] QString journalStyleSheet();
[[nodiscard]] QString withColors(QString sheet, const JournalColors& colors);

}  // namespace quillo
