#pragma once

#include "controls/look/JournalColors.h"

#include <QFrame>
#include <QTimer>

#include <functional>

class QLabel;
class QToolButton;

namespace quillo {

// One line at the lower edge that tells what happened, with a button that takes it back or deals with it. It stays
// until it is answered or another takes its place; one that is only news goes after a while.
class NoticeBar : public QFrame {
  Q_OBJECT

 public:
  struct Action {
    QString title;
    std::function<void()> act;
  };

  explicit NoticeBar(QWidget* parent = nullptr);

  void show(const QString& text, const QList<Action>& actions = {});
  // Of the one that is shown, which goes on.
  void setText(const QString& text);
  void dismiss();
  [[nodiscard]] QString text() const;

  // To be called when the application's palette has changed.
  void applyColors();

 private:
  QLabel* m_text;
  QString m_fullText;
  QList<QToolButton*> m_buttons;
  QTimer m_timer;
  JournalColors m_colors;  // in the style sheet
};

}  // namespace quillo
