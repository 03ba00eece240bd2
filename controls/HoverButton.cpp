#include "controls/HoverButton.h"

#include "controls/ButtonCellStyles.h"

#include <QEvent>
#include <QShowEvent>

namespace quillo {

using namespace Qt::StringLiterals;

HoverButton::HoverButton(QWidget* parent) : Button(parent), m_cellStyle(u"plain"_s) {
  setButtonCell(std::make_unique<HoverButtonCell>());
}

HoverButtonCell& HoverButton::cell() const {
  // The constructor and setCell() give it no other kind.
  return static_cast<HoverButtonCell&>(buttonCell());
}

void HoverButton::setCell(std::unique_ptr<HoverButtonCell> cell) {
  setButtonCell(std::move(cell));
}

void HoverButton::setCellStyle(const QString& style) {
  m_cellStyle = style;
  if (style == "blue"_L1) {
    setCell(std::make_unique<BlueOnDarkButtonCell>());
  } else if (style == "dark"_L1) {
    setCell(std::make_unique<DarkButtonCell>());
  } else {
    setCell(std::make_unique<HoverButtonCell>());
  }
}

void HoverButton::setImageName(const QString& name) {
  Button::setImageName(name);
  cell().setStandardImage(Image::imageNamed(name));
}

bool HoverButton::event(QEvent* event) {
  const bool handled = Button::event(event);
  if (event->type() == QEvent::ParentChange) cell().setImage(cell().standardImage());
  return handled;
}

void HoverButton::showEvent(QShowEvent* event) {
  Button::showEvent(event);
  // A disabled button may have been given its picture before it was first shown; hover cannot have touched it.
  if (!event->spontaneous() && cell().isEnabled()) cell().setImage(cell().standardImage());
}

}  // namespace quillo
