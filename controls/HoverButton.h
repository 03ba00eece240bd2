#pragma once

#include "controls/Button.h"
#include "controls/HoverButtonCell.h"

namespace quillo {

// A button with a hover cell. Shown again or moved to another window, it starts with its picture at rest.
class HoverButton : public Button {
  Q_OBJECT
  // For interface files: "plain", "blue" or "dark".
  Q_PROPERTY(QString cellStyle READ cellStyle WRITE setCellStyle)

 public:
  explicit HoverButton(QWidget* parent = nullptr);

  [[nodiscard]] HoverButtonCell& cell() const;
  // As setButtonCell() says; null changes nothing.
  void setCell(std::unique_ptr<HoverButtonCell> cell);

  [[nodiscard]] QString cellStyle() const { return m_cellStyle; }
  // Replaces the cell; an unknown style is plain.
  void setCellStyle(const QString& style);
  // The picture at rest.
  void setImageName(const QString& name) override;

 protected:
  bool event(QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  QString m_cellStyle;
};

}  // namespace quillo
