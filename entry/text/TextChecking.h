#pragma once

#include <QObject>
#include <QUrl>

#include <memory>

class QTextBlock;

namespace quillo {

class AutomaticCorrection;
class GrammarReviewer;
class PlainTextView;
class SpellChecker;
class SpellingHighlighter;
class UserDefaults;

// What of a text is looked at while it is written.
struct WritingSwitches {
  bool checksSpelling{false};
  bool checksGrammar{false};
  bool correctsSpelling{false};
};

// Has the text of a view checked, and corrected while the user types, as the switches say; all of them are off at
// first. Nothing is loaded before begin().
class TextChecking : public QObject {
  Q_OBJECT

 public:
  // All must outlive the object. Where the grammar server is, is read from `defaults`.
  TextChecking(PlainTextView& view, SpellChecker& checker, const UserDefaults& defaults);
  ~TextChecking() override;

  [[nodiscard]] const WritingSwitches& switches() const { return m_switches; }
  void setSwitches(const WritingSwitches& switches);

  // The same after the settings have changed, where the grammar server may be another, too.
  void settingsDidChange(const WritingSwitches& switches);

  // Loads what the switches ask for. At a key press, and not before: showing the view is not to wait for a dictionary.
  void begin();

  // Whether changes of the text from now on are the user typing at the caret.
  void setTyping(bool typing);
  // The user has typed something; the caret stands behind it.
  void userDidType();
  // The word that was typed has ended, as the user went elsewhere.
  void endTyping();
  // The user is back at the text.
  void tryAgain();

  // Underlines a block again where something else has replaced its underlines.
  void redraw(const QTextBlock& block);

  [[nodiscard]] SpellChecker& checker() const { return m_checker; }
  // Null before there was something to check; the document's.
  [[nodiscard]] SpellingHighlighter* highlighter() const { return m_highlighter; }
  // Made where there is none yet.
  [[nodiscard]] GrammarReviewer& grammarReviewer();

 private:
  void applySwitches();
  SpellingHighlighter& ensureHighlighter();
  void caretDidMove();
  void somethingToReview();

  PlainTextView& m_view;
  SpellChecker& m_checker;
  const UserDefaults& m_defaults;
  WritingSwitches m_switches;
  SpellingHighlighter* m_highlighter{nullptr};
  std::unique_ptr<AutomaticCorrection> m_correction;
  QUrl m_grammarServer;
  std::unique_ptr<GrammarReviewer> m_grammar;
};

}  // namespace quillo
