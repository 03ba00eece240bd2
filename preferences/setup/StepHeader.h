#pragma once

#include <QWidget>

class QLabel;

namespace quillo {

// The dark head of a step: the quill, the question, and a line or two about it.
class StepHeader : public QWidget {
  Q_OBJECT

 public:
  // As wide as its parent, whose width does not change.
  explicit StepHeader(QWidget* parent);

  void setTexts(const QString& title, const QString& about);
  [[nodiscard]] QString title() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QLabel* m_title;
  QLabel* m_about;
};

}  // namespace quillo
