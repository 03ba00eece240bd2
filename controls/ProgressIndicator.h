#pragma once

#include <QBasicTimer>
#include <QColor>
#include <QWidget>

namespace quillo {

// A small wheel that turns while something is sought. It shows nothing, and no timer runs, while it is stopped or not
// on the screen.
class ProgressIndicator : public QWidget {
  Q_OBJECT

 public:
  explicit ProgressIndicator(QWidget* parent = nullptr) : QWidget(parent) {}

  void startAnimation();
  void stopAnimation();
  [[nodiscard]] bool isAnimating() const { return m_isAnimating; }
  [[nodiscard]] bool isTurning() const { return m_timer.isActive(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void updateTimer();

  bool m_isAnimating{false};
  int m_step{0};
  QBasicTimer m_timer;
};

}  // namespace quillo
