#pragma once

#include <QString>

class QWidget;

namespace quillo {

struct JournalColors;

// A style sheet with the colours in the place of their names: "%paper", "%text" and so on.
[[nodiscard]] QString styleWithColors(QString style, const JournalColors& colors);

// Makes buttons, fields, menus and scroll bars of a window look like the rest of it. To be called again when the
// window's palette changes.
void applyJournalStyle(QWidget& window, const JournalColors& colors);

}  // namespace quillo
