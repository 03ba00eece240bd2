#pragma once

#include <QString>

class QWidget;

namespace quillo {

struct JournalColors;

// Makes buttons, fields, menus and scroll bars of a window look like the rest of it. To be called again when the
// window's palette changes.
void applyJournalStyle(QWidget& window, const JournalColors& colors);

// The same as a style sheet with names in place of colours, for windows that have more to say; and such a sheet with
// the colours in the place of their names: "%paper", "%text" and so on.
[[nodiscard]] QString journalStyleSheet();
[[nodiscard]] QString styleWithColors(QString style, const JournalColors& colors);

}  // namespace quillo
