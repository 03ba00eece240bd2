#pragma once

#include <QFrame>
#include <QList>
#include <QString>

class QHBoxLayout;
class QLabel;
class QLineEdit;
class QToolButton;

namespace quillo {

// What is searched for: words being typed, after filters that stand as chips before them. Backspace at the beginning
// takes the last chip away, and so does its cross; Escape clears all.
class SearchField : public QFrame {
  Q_OBJECT

 public:
  explicit SearchField(QWidget* parent = nullptr);

  [[nodiscard]] QString words() const;
  void setWords(const QString& words);
  // As shown, in the order in which they came.
  void setChips(const QStringList& chips);
  // At the right end: how many were found, or what is wrong with the words.
  void setStatus(const QString& text, bool isProblem);

  // Puts the keyboard into the words and selects them.
  void beginSearch();

  // To be called when the application's palette has changed.
  void applyColors();

 Q_SIGNALS:
  void wordsChanged(const QString& words);
  void chipRemoved(int index);
  // Escape: everything is to go.
  void cleared();
  // Return or an arrow downwards: on to what was found.
  void leftForResults();

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QHBoxLayout* m_chipRow;
  QLineEdit* m_edit;
  QLabel* m_status;
  QList<QToolButton*> m_chips;
  bool m_isProblem{false};
};

}  // namespace quillo
