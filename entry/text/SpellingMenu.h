#pragma once

#include "foundation/TextRange.h"

#include <QStringList>

class QAction;
class QMenu;
class QTextCursor;

namespace quillo {

class EntryViewTextView;
class TextChecking;

// Puts into a context menu of the text what checking has to say: guesses for a word, and the switches. The items act on
// the view by themselves, so this need not outlive the call; the menu must go before the view does.
class SpellingMenu {
 public:
  SpellingMenu(EntryViewTextView& view, QMenu& menu);

  // First in the menu: guesses for the misspelled word at this position of the document, and what to make of it; then
  // what the grammar server says of the place.
  void addGuesses(int position);
  // Last in the menu so far: "Spelling and Grammar".
  void addSwitches();

 private:
  void addMisspelling(TextRange range);
  void addReplacements(const QStringList& replacements, const QTextCursor& place);
  void followServer(QAction& item);

  EntryViewTextView& m_view;
  TextChecking& m_checking;
  QMenu& m_menu;
  QAction* m_before;  // the first of the menu's own items
};

}  // namespace quillo
