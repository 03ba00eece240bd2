#pragma once

#include "entry/text/EntryTextServices.h"
#include "entry/text/PlainTextView.h"
#include "foundation/TextRange.h"
#include "platform/Registration.h"

#include <QStringList>

#include <functional>
#include <memory>

class QAction;
class QMenu;

namespace quillo {

class HashtagCompleter;
class TextChecking;
struct WritingSwitches;

// What ended a completion, or moved through the list of them.
enum class TextMovement { Other, Return, Tab, Up, Down };

// The text view for writing an entry. It remembers its spelling, grammar and correction switches in the user defaults,
// wraps the selection in Markdown's emphasis and completes hashtags. Nothing can be dropped into it.
class EntryViewTextView : public PlainTextView {
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

  // The types that such a view takes. Asking for them also turns off dropping altogether, since an entry is
  // plain text that files and pictures have no place in.
  QStringList acceptableDragTypes();

  // The setters also store the switch in the user defaults.
  void setContinuousSpellCheckingEnabled(bool enabled);
  void setGrammarCheckingEnabled(bool enabled);
  void setAutomaticSpellingCorrectionEnabled(bool enabled);
  // Tells the switches as they are.
  [[nodiscard]] TextChecking& checking() const { return *m_checking; }

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

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void setSwitch(bool WritingSwitches::*which, bool enabled, const QString& key);
  [[nodiscard]] bool canFormatSelection() const;

  // What setServices() was given.
  UserDefaults* m_defaults{nullptr};
  NotificationCenter* m_localCenter{nullptr};
  std::unique_ptr<TextChecking> m_checking;
  std::unique_ptr<HashtagCompleter> m_completer;
  std::unique_ptr<Registration> m_prefsObservation;
  bool m_isAwake{false};
};

}  // namespace quillo
