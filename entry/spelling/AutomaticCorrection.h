#pragma once

#include <QSet>
#include <QString>
#include <QTextCursor>

#include <vector>

class QPlainTextEdit;

namespace quillo {

class SpellChecker;

// Puts right what was plainly a slip of the fingers, when the word ends: at a space or line end, where punctuation may
// stand between, or at one of ",;!?". A full stop and a colon alone do not end a word, since they may turn out to be
// inside of an address. What counts as plain is SpellChecker::confidentCorrection().
//
// A correction is an undo step of its own. A word that was typed again or brought back by undo is not touched again.
class AutomaticCorrection {
 public:
  // Both must outlive the object.
  AutomaticCorrection(QPlainTextEdit& view, SpellChecker& checker);

  // The user has typed something; the caret stands behind it.
  void userDidType();
  // The text changed, by whatever means.
  void textDidChange();
  // A new text begins: nothing before it counts any more.
  void textWasSet();

 private:
  struct Made {
    QTextCursor start;
    QString typed;
  };

  void replace(int start, const QString& typed, const QString& correction);
  [[nodiscard]] bool isBack(const Made& made) const;

  QPlainTextEdit& m_view;
  SpellChecker& m_checker;
  // The latest corrections that may still be undone.
  std::vector<Made> m_made;
  QSet<QString> m_declined;
  bool m_isReplacing{false};
};

}  // namespace quillo
