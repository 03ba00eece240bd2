#pragma once

#include <QColor>
#include <QWidget>

namespace quillo {

// Fills itself with one colour, over what lies behind it.
class PlainColorView : public QWidget {
  Q_OBJECT
  Q_PROPERTY(QColor color READ color WRITE setColor)

 public:
  explicit PlainColorView(QWidget* parent = nullptr) : QWidget(parent) {}

  [[nodiscard]] QColor color() const { return m_color; }
  // Does not redraw: the new colour shows with the next drawing, whatever brings it about.
  void setColor(const QColor& color) { m_color = color; }
  // Never, even in an opaque colour: what lies behind is always drawn first.
  [[nodiscard]] bool isOpaque() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QColor m_color;
};

// Makes its area of the window wholly transparent. The window itself must have a translucent background.
class ClearColorView : public QWidget {
  Q_OBJECT

 public:
  explicit ClearColorView(QWidget* parent = nullptr) : QWidget(parent) {}

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillo
