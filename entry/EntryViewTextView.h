#pragma once

#include <QPlainTextEdit>

namespace quillo {

// The text view of the entry window: plain text only, whatever is pasted, and nothing can be dropped into it.
class EntryViewTextView : public QPlainTextEdit {
  Q_OBJECT

 public:
  explicit EntryViewTextView(QWidget* parent = nullptr);

  // The text with "\n" at line ends; every other character as it was typed, no-break spaces included.
  [[nodiscard]] QString string() const;
  // Replaces the text and forgets what could be undone. Not an edit by the user: textDidChange() stays silent.
  void setString(const QString& text);

  // In points, on each side.
  void setTextContainerInset(QSizeF inset);

 Q_SIGNALS:
  // The user changed the text, by whatever means.
  void textDidChange();

 protected:
  [[nodiscard]] bool canInsertFromMimeData(const QMimeData* source) const override;
  void insertFromMimeData(const QMimeData* source) override;

 private:
  void contentsChanged();

  QString m_lastString;
  bool m_isSettingString{false};
};

}  // namespace quillo
