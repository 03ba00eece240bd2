#include "preferences/controls/FormStyle.h"

#include "controls/look/JournalColors.h"
#include "controls/look/JournalStyle.h"

#include <QWidget>

namespace quillo {

using namespace Qt::StringLiterals;

QColor problemColor(const JournalColors& colors) {
  return colors.ground.lightness() < 128 ? QColor(0xff8a80) : QColor(0xb3261e);
}

void applyFormStyle(QWidget& window) {
  const JournalColors colors = JournalColors::current();
  const QString fields =
      u"QLabel { color: %text }"
      "QLabel[role=\"label\"] { color: %label }"
      "QLabel[role=\"note\"] { color: %dim }"
      "QLabel[role=\"error\"] { color: %problem }"
      "QLabel:disabled { color: %dim }"
      "QLineEdit, QSpinBox, QTimeEdit, QDateEdit, QComboBox, QPlainTextEdit { border: 1px solid %line;"
      "  border-radius: 6px; background: %paper; color: %text; padding: 4px 9px; min-height: 20px;"
      "  selection-background-color: %accent; selection-color: %onAccent }"
      "QLineEdit:focus, QSpinBox:focus, QTimeEdit:focus, QDateEdit:focus, QComboBox:focus, QPlainTextEdit:focus {"
      "  border: 2px solid %accent; padding: 3px 8px }"
      "QLineEdit:disabled, QSpinBox:disabled, QTimeEdit:disabled, QDateEdit:disabled, QComboBox:disabled {"
      "  color: %dim; background: %ground }"
      "QLineEdit[wrong=\"true\"], QDateEdit[wrong=\"true\"], QTimeEdit[wrong=\"true\"], QSpinBox[wrong=\"true\"] {"
      "  border-color: %problem }"
      "QComboBox::drop-down, QDateEdit::drop-down { border: none; width: 26px; background: transparent }"
      "QComboBox::down-arrow, QDateEdit::down-arrow { image: none }"
      "QComboBox QAbstractItemView { border: 1px solid %line; background: %paper; color: %text; padding: 3px;"
      "  selection-background-color: %accent; selection-color: %onAccent; outline: none }"
      "QListWidget, QTableView { border: 1px solid %line; border-radius: 6px; background: %list; color: %text;"
      "  gridline-color: %line; selection-background-color: %accent; selection-color: %onAccent; outline: none }"
      "QListWidget:focus, QTableView:focus { border: 2px solid %accent }"
      "QTableView QLineEdit { border-radius: 0; padding: 0 2px; min-height: 0 }"
      "QHeaderView { background: %bar }"
      "QHeaderView::section { background: %bar; color: %dim; border: none; border-bottom: 1px solid %line;"
      "  padding: 4px 3px }"
      "QTableView::item { padding: 0 4px }"
      "QListWidget::item { padding: 2px 5px }"
      "#summary { background: %list; border: 1px solid %line; border-radius: 8px }"
      "QProgressBar { border: none; border-radius: 3px; background: %shade; max-height: 6px }"
      "QProgressBar::chunk { border-radius: 3px; background: %accent }"_s;
  QString sheet = journalStyleSheet() + fields;
  sheet.replace(u"%problem"_s, problemColor(colors).name());
  sheet.replace(u"%label"_s, blended(colors.text, colors.dim, 0.35).name());
  sheet.replace(u"%ground"_s, colors.ground.name());
  sheet = styleWithColors(sheet, colors);
  if (window.styleSheet() != sheet) window.setStyleSheet(sheet);
}

}  // namespace quillo
