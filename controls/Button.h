#pragma once

#include "controls/ButtonCell.h"
#include "controls/CachedDrawing.h"

#include <QAbstractButton>

#include <memory>

namespace quillo {

// A button that is drawn by its cell. Text, checked state, enabling and pressing go on to the cell; a checkable button
// is on while it is checked.
class Button : public QAbstractButton {
  Q_OBJECT
  Q_PROPERTY(QString text READ title WRITE setTitle)
  // Names of the program's own pictures, for interface files.
  Q_PROPERTY(QString imageName READ imageName WRITE setImageName)

 public:
  // With a plain cell.
  explicit Button(QWidget* parent = nullptr);
  ~Button() override;

  [[nodiscard]] ButtonCell& buttonCell() const { return *m_cell; }
  [[nodiscard]] QString title() const;
  void setTitle(const QString& title);
  // The same; takes the place of the base's, which would leave the cell out.
  void setText(const QString& title) { setTitle(title); }

  // A number for whoever is told of the click.
  [[nodiscard]] int tag() const { return m_tag; }
  void setTag(int tag) { m_tag = tag; }

  [[nodiscard]] QString imageName() const { return m_imageName; }
  virtual void setImageName(const QString& name);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  // The new cell takes over title, state and enabling; its pictures are its own. Null changes nothing.
  void setButtonCell(std::unique_ptr<ButtonCell> cell);

  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void setPlainText(const QString& title);
  void cellNeedsDisplay();
  void drawFocusRing();

  std::unique_ptr<ButtonCell> m_cell;
  CachedDrawing m_drawing;
  QString m_imageName;
  int m_tag{0};
  bool m_showsFocusRing{false};
};

}  // namespace quillo
