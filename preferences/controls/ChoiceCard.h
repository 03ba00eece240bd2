#pragma once

#include <QRadioButton>

class QPushButton;

namespace quillo {

// One of a few ways to go on, as a card: a title, a line that explains it, and a button where there is more to choose.
// It is a radio button to everything but the eye; the cards of one parent exclude one another, and the arrow keys go
// from one to the next.
class ChoiceCard : public QRadioButton {
  Q_OBJECT

 public:
  ChoiceCard(const QString& title, const QString& explanation, QWidget* parent = nullptr);

  [[nodiscard]] QString explanation() const { return m_explanation; }
  void setExplanation(const QString& text);
  // At the end of the card; its click does not choose the card. Null before the first call.
  QPushButton* addButton(const QString& title);
  [[nodiscard]] QPushButton* button() const { return m_button; }

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;
  [[nodiscard]] bool hitButton(const QPoint& position) const override { return rect().contains(position); }

 private:
  void placeButton();

  QString m_explanation;
  QPushButton* m_button{nullptr};
};

}  // namespace quillo
