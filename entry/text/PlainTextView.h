#pragma once

#include "foundation/TextRange.h"

#include <QPlainTextEdit>
#include <QTextBlock>

#include <memory>

class QMenu;

namespace quillo {

class ParagraphSeams;

// Edits plain text, whatever is pasted, with paragraphs of any length: one that is too long to be laid out at once is
// held in several blocks. What stands between those, a seam, is no part of the text, and neither the caret, the
// clipboard nor undo stops at it.
//
// Positions are the document's: they count UTF-16 units of string(), and the seams.
class PlainTextView : public QPlainTextEdit {
  Q_OBJECT

 public:
  explicit PlainTextView(QWidget* parent = nullptr);
  ~PlainTextView() override;

  // The text with "\n" at line ends; every other character as it was typed, no-break spaces included.
  [[nodiscard]] QString string() const;
  // Replaces the text and forgets what could be undone. Not an edit by the user: textDidChange() stays silent.
  void setString(const QString& text);
  // Takes over a text that came from elsewhere: only what differs is replaced, as a step that can be undone, and the
  // caret stays with the words around it. Not an edit by the user either.
  void updateString(const QString& text);
  // Replaced as one undo step that nothing typed before or after joins. Nothing for what is no range of the document.
  void replaceCharacters(TextRange range, const QString& text);
  // Hide the base class's, which would also stop at a seam that came or went: there is nothing to see of those steps.
  void undo();
  void redo();
  // Makes text of what an input method has not committed yet, as string() is without it.
  void commitComposition();

  // In points, on each side.
  void setTextContainerInset(QSizeF inset);

  // Those on the screen, in order.
  [[nodiscard]] QList<QTextBlock> visibleBlocks() const;
  // The base class's context menu; never null. It must go before the view does.
  [[nodiscard]] std::unique_ptr<QMenu> standardMenu(QPoint position);

 Q_SIGNALS:
  // The user changed the text, by whatever means.
  void textDidChange();
  // setString() or updateString() did.
  void stringWasSet();

 protected:
  // What a key does to the text.
  enum class KeyEffect { Other, Types, Deletes };
  [[nodiscard]] static KeyEffect effectOf(const QKeyEvent& event);

  [[nodiscard]] QMimeData* createMimeDataFromSelection() const override;
  [[nodiscard]] bool canInsertFromMimeData(const QMimeData* source) const override;
  void insertFromMimeData(const QMimeData* source) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;

 private:
  void contentsChanged();
  void undoUntilTextChanges(void (QPlainTextEdit::*step)(), bool (QTextDocument::*isAvailable)() const);
  bool handleEditingKey(const QKeyEvent& event);
  void passOnKey(QKeyEvent* event, KeyEffect effect);
  void stepOverSeam(QTextCursor::MoveOperation direction);

  std::unique_ptr<ParagraphSeams> m_seams;
  QString m_lastText;
  bool m_isSettingString{false};
  bool m_isUndoing{false};
};

}  // namespace quillo
