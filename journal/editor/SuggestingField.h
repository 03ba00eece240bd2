#pragma once

#include <QLineEdit>
#include <QStringList>
#include <QStringListModel>

#include <functional>

class QCompleter;

namespace quillo {

// A line that offers what could be meant while one types: Down and Up choose, Return and Tab take, Escape closes the
// list. Where one thing is typed, the first is chosen beforehand; of a list with commas between, the part at the caret
// is completed.
class SuggestingField : public QLineEdit {
  Q_OBJECT

 public:
  enum class Kind { One, List };
  // What is offered for a text, best first.
  using Source = std::function<QStringList(const QString& text)>;

  SuggestingField(Kind kind, Source source, QWidget* parent = nullptr);

  // What the source offers for the text as it is.
  [[nodiscard]] QStringList suggestions() const;
  void closeList();

  // To be called when the application's palette has changed.
  void applyColors();

 Q_SIGNALS:
  // Taken from the list; the text has it already.
  void chosen(const QString& suggestion);

 protected:
  bool event(QEvent* event) override;

 private:
  struct Part {
    qsizetype start{0};
    qsizetype end{0};
  };
  [[nodiscard]] Part partAtCaret() const;
  void suggest();
  void take(const QString& suggestion);

  Kind m_kind;
  Source m_source;
  QStringListModel m_model;
  QCompleter* m_completer;
};

}  // namespace quillo
