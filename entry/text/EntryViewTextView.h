#pragma once

#include "entry/document/TextRange.h"
#include "entry/text/EntryTextServices.h"
#include "platform/Registration.h"

#include <QPlainTextEdit>
#include <QStringList>
#include <QTextBlock>

#include <functional>
#include <memory>
#include <optional>

class QAction;
class QMenu;

namespace quillo {

class AutomaticCorrection;
class GrammarReviewer;
class HashtagCompleter;
class ParagraphSeams;
class SpellingHighlighter;

// What ended a completion, or moved through the list of them.
enum class TextMovement { Other, Return, Tab, Up, Down };

// The text view of the entry window: plain text only, whatever is pasted, and nothing can be dropped into it. It
// remembers its spelling, grammar and correction switches in the user defaults, wraps the selection in Markdown's
// emphasis and completes hashtags. Locations are the document's: they count UTF-16 units of string() and, where a
// paragraph is too long to be laid out at once, the seams in it.
class EntryViewTextView : public QPlainTextEdit {
  Q_OBJECT

 public:
  // Registers what the three switches are where the user has not set them. Every view does so.
  static void initialize(UserDefaults& defaults);

  explicit EntryViewTextView(const EntryTextServices& services, QWidget* parent = nullptr);
  // For the interface file, which can give it nothing but its parent: setServices() is to follow before anything else.
  explicit EntryViewTextView(QWidget* parent);
  void setServices(const EntryTextServices& services);
  ~EntryViewTextView() override;

  // Reads the switches and follows their changes from then on. To be called once the view stands in its window; a view
  // that is shown before does it itself. Only the first call does anything.
  void awakeFromNib();
  void startObservingPrefChanges();
  void stopObservingPrefChanges();
  // Takes the switches from the user defaults, without writing them back.
  void prefsChanged();

  // The text with "\n" at line ends; every other character as it was typed, no-break spaces included.
  [[nodiscard]] QString string() const;
  // Replaces the text and forgets what could be undone. Not an edit by the user: textDidChange() stays silent.
  void setString(const QString& text);
  // Hide the base class's, which would also stop at a seam that came or went: there is nothing to see of those steps.
  void undo();
  void redo();
  // Makes text of what an input method has not committed yet, as string() is without it.
  void commitComposition();

  // In points, on each side.
  void setTextContainerInset(QSizeF inset);

  // The types that such a view takes. Asking for them also turns off dropping altogether, since an entry is
  // plain text that files and pictures have no place in.
  QStringList acceptableDragTypes();

  // The setters also store the switch in the user defaults.
  void setContinuousSpellCheckingEnabled(bool enabled);
  void setGrammarCheckingEnabled(bool enabled);
  void setAutomaticSpellingCorrectionEnabled(bool enabled);
  [[nodiscard]] bool isContinuousSpellCheckingEnabled() const { return m_checksSpelling; }
  [[nodiscard]] bool isGrammarCheckingEnabled() const { return m_checksGrammar; }
  [[nodiscard]] bool isAutomaticSpellingCorrectionEnabled() const { return m_correctsSpelling; }

  // Puts `marker` on both sides of the selection, in one undo step; markers that are there already are not looked for.
  void surroundSelectionWithString(const QString& marker);
  void makeSelectionBold() { surroundSelectionWithString(QStringLiteral("**")); }
  void makeSelectionItalic() { surroundSelectionWithString(QStringLiteral("*")); }

  // The context menu: guesses for the word under the pointer, the standard commands, "Spelling and Grammar", and
  // "Format" last. It must go before the view does.
  [[nodiscard]] std::unique_ptr<QMenu> menuForEvent(const QContextMenuEvent& event);
  void addFormatSubmenuToMenu(QMenu& menu);
  // Takes out what would turn the text on its side, should the base class offer it.
  static void removeLayoutFromMenu(QMenu& menu);
  // Whether a command is on offer: Bold and Italic with Markdown enabled and something selected, others as they are.
  [[nodiscard]] bool validateMenuItem(const QAction& item) const;

  // Tags in use, most used first, without the "#"; asked for when a hashtag begins. None at first.
  void setCompletionSource(std::function<QStringList()> source);
  // To be called when the source has tags that it did not have yet.
  void completionSourceDidChange();
  // The word around `location`, between spaces or line ends; it may be empty.
  [[nodiscard]] TextRange currentWordRangeForCursorLocation(qsizetype location) const;
  // What a completion would replace: the hashtag, with its "#", that ends at the caret. Nowhere with a selection,
  // inside of a hashtag, and for other words.
  [[nodiscard]] TextRange rangeForUserCompletion() const;
  // Replaces the range, in one undo step. Only final completions: trying others in the text while the user moves
  // through the list is suppressed.
  void insertCompletion(const QString& completion, TextRange range, TextMovement movement, bool isFinal);

  // Null until the first key press with something to check.
  [[nodiscard]] SpellingHighlighter* spellingHighlighter() const { return m_highlighter; }
  GrammarReviewer& grammarReviewer();

 Q_SIGNALS:
  // The user changed the text, by whatever means.
  void textDidChange();

 protected:
  [[nodiscard]] QMimeData* createMimeDataFromSelection() const override;
  [[nodiscard]] bool canInsertFromMimeData(const QMimeData* source) const override;
  void insertFromMimeData(const QMimeData* source) override;
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void contentsChanged();
  void caretDidMove();
  void undoUntilTextChanges(void (QPlainTextEdit::*step)(), bool (QTextDocument::*isAvailable)() const);
  // What a key does to the text.
  enum class KeyEffect { Other, Types, Deletes };
  [[nodiscard]] static KeyEffect effectOf(const QKeyEvent& event);
  bool handleEditingKey(const QKeyEvent& event);
  void passOnKey(QKeyEvent* event, KeyEffect effect);
  void stepOverSeam(QTextCursor::MoveOperation direction);
  void beginChecking();
  void applySwitches();
  SpellingHighlighter& ensureHighlighter();
  [[nodiscard]] bool canFormatSelection() const;
  void addGuessesToMenu(QMenu& menu, int position);
  void addMisspellingToMenu(QMenu& menu, QAction* before, TextRange range);
  void addReplacementsToMenu(QMenu& menu, QAction* before, const QStringList& replacements, const QTextCursor& place);
  void addSpellingSubmenuToMenu(QMenu& menu);
  void makeUndoSkipSeams(const QMenu& menu);
  void replaceCharacters(TextRange range, const QString& text);
  [[nodiscard]] QList<QTextBlock> visibleBlocks() const;

  std::optional<EntryTextServices> m_services;
  std::unique_ptr<ParagraphSeams> m_seams;
  QString m_lastText;
  bool m_isSettingString{false};
  bool m_isUndoing{false};
  bool m_isAwake{false};
  bool m_checksSpelling{false};
  bool m_checksGrammar{false};
  bool m_correctsSpelling{false};
  SpellingHighlighter* m_highlighter{nullptr};  // the document's
  std::unique_ptr<AutomaticCorrection> m_correction;
  std::unique_ptr<GrammarReviewer> m_grammar;
  std::unique_ptr<HashtagCompleter> m_completer;
  std::unique_ptr<Registration> m_prefsObservation;
};

}  // namespace quillo
