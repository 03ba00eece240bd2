#include "controls/look/JournalStyle.h"

#include "controls/look/JournalColors.h"

#include <QWidget>

namespace quillo {

using namespace Qt::StringLiterals;

QString journalStyleSheet() {
  return u"QPushButton { border: 1px solid %line; border-radius: 6px; background: %paper; color: %text;"
         "  padding: 5px 13px; min-height: 20px }"
         "QPushButton:hover { background: %bar }"
         "QPushButton:pressed { background: %shade }"
         "QPushButton:checked { background: %shade }"
         "QPushButton:focus { border: 2px solid %accent; padding: 4px 12px; outline: none }"
         "QPushButton:disabled { color: %dim }"
         "QPushButton::menu-indicator { image: none; width: 0 }"
         "QPushButton#primary { background: %accent; border-color: %accent; color: %onAccent; font-weight: 600 }"
         "QPushButton#primary:hover { background: %accentDark }"
         "QPushButton#primary:disabled { background: %shade; border-color: %shade; color: %dim }"
         "QPushButton#primary:focus { border-color: %text }"
         // The field around it is drawn by us.
         "QLineEdit#searchWords { background: transparent; border: none; color: %text }"
         "QScrollBar:vertical { background: transparent; width: 10px; margin: 0 }"
         "QScrollBar::handle:vertical { background: %shade; border-radius: 4px; min-height: 32px; margin: 1px 2px }"
         "QScrollBar::handle:vertical:hover { background: %dim }"
         "QScrollBar::add-line, QScrollBar::sub-line { height: 0; width: 0 }"
         "QScrollBar::add-page, QScrollBar::sub-page { background: transparent }"
         "QSplitter::handle { background: %line }"
         "QToolTip { color: %text; background: %paper; border: 1px solid %line; padding: 3px }"_s;
}

QString styleWithColors(QString sheet, const JournalColors& colors) {
  const std::pair<QString, QColor> names[] = {
      {u"%line"_s, colors.line},
      {u"%list"_s, colors.list},
      {u"%paper"_s, colors.paper},
      {u"%text"_s, colors.text},
      {u"%bar"_s, colors.bar},
      {u"%shade"_s, colors.shade},
      // The longer name first, or the shorter would take its beginning.
      {u"%accentDark"_s, blended(colors.accent, QColor(Qt::black), 0.88)},
      {u"%accent"_s, colors.accent},
      {u"%dim"_s, colors.dim},
      {u"%onAccent"_s, colors.accentText},
  };
  for (const auto& [name, color] : names) sheet.replace(name, color.name());
  return sheet;
}

void applyJournalStyle(QWidget& window, const JournalColors& colors) {
  const QString sheet = styleWithColors(journalStyleSheet(), colors);
  if (window.styleSheet() != sheet) window.setStyleSheet(sheet);
}

}  // namespace quillo
