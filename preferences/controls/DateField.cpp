#include "preferences/controls/DateField.h"

#include "controls/Fonts.h"
#include "preferences/controls/ChoiceBox.h"
#include "preferences/controls/WheelGuard.h"

namespace quillo {

DateField::DateField(QWidget* parent) : QDateEdit(parent) {
  setFont(textFont(13));
  // A mirrored field would show the parts of its format in the opposite order.
  setLayoutDirection(Qt::LeftToRight);
  setCalendarPopup(true);
  setDisplayFormat(QStringLiteral("d MMMM yyyy"));
  // The language of the text around it.
  setLocale(QLocale(QLocale::English, QLocale::UnitedKingdom));
  new WheelGuard(*this);
}

QSize DateField::sizeHint() const {
  constexpr int frameAndMark = 56;
  const int text =
      fontMetrics().horizontalAdvance(QLocale(QLocale::English).toString(QDate(2026, 9, 30), displayFormat()));
  return {text + frameAndMark, QDateEdit::sizeHint().height()};
}

void DateField::paintEvent(QPaintEvent* event) {
  QDateEdit::paintEvent(event);
  drawChevron(*this);
}

}  // namespace quillo
