#pragma once

#include <QList>
#include <QWidget>

#include <functional>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace quillo {

// In the place of what is not there: what is the matter, why, and what to do about it with a button.
class StatePage : public QWidget {
  Q_OBJECT

 public:
  struct Action {
    QString title;
    std::function<void()> act;
  };

  explicit StatePage(QWidget* parent = nullptr);

  // The first action is the default one.
  void show(const QString& title, const QString& reason, const QList<Action>& actions);

  // To be called when the application's palette has changed.
  void applyColors();

 private:
  QLabel* m_title;
  QLabel* m_reason;
  QVBoxLayout* m_buttonColumn;
  QList<QPushButton*> m_buttons;
};

}  // namespace quillo
