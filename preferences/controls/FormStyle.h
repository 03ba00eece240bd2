#pragma once

#include <QColor>

class QWidget;

namespace quillo {

struct JournalColors;

// Makes a window of forms look like the journal's: buttons, fields, lists, notes and errors. To be called again when
// the application's palette changes.
void applyFormStyle(QWidget& window);

// Of the text that tells why something could not be saved.
[[nodiscard]] QColor problemColor(const JournalColors& colors);

}  // namespace quillo
