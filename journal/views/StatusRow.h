#pragma once

#include <QWidget>

class QLabel;

namespace quillo {

class NoticeBar;

// The line under the paper: how long the text is, whether it is saved, and what happened.
class StatusRow : public QWidget {
  Q_OBJECT

 public:
  explicit StatusRow(QWidget* parent = nullptr);

  void setWords(const QString& text);
  void setState(const QString& text);
  [[nodiscard]] NoticeBar& notices() { return *m_notices; }

  // To be called when the application's palette has changed.
  void applyColors();

 private:
  QLabel* m_words;
  QLabel* m_state;
  NoticeBar* m_notices;
};

}  // namespace quillo
