#pragma once

#include <QColor>
#include <QPalette>

namespace quillo {

// The colours of our windows: a light and a dark set of our own, or the desktop's where it asks for high contrast.
struct JournalColors {
  QColor ground;
  QColor bar;
  QColor sidebar;
  QColor list;
  QColor paper;
  QColor line;
  QColor text;
  QColor dim;         // text that says something about other text
  QColor accent;      // the selection, links, tags
  QColor accentText;  // on the accent
  QColor match;       // behind words that were searched for
  QColor shade;       // behind what is chosen, where the accent would be too loud

  // The set that goes with a palette of the desktop: dark where its windows are.
  [[nodiscard]] static JournalColors forPalette(const QPalette& palette);
  // The one that goes with the application's palette: a widget's own is also what its parts have made of it.
  [[nodiscard]] static JournalColors current();

  bool operator==(const JournalColors&) const = default;
};

// `part` of the one and the rest of the other; 0 to 1.
[[nodiscard]] QColor blended(const QColor& one, const QColor& other, double part);

}  // namespace quillo
