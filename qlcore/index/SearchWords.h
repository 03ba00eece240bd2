#pragma once

#include "foundation/TextRange.h"

#include <QString>
#include <QStringView>

namespace quillo {

// Goes through the words of a text in the form in which they are compared: without case, accents and differences of
// width. A word is a run of letters and digits. Scripts that do not part their words (Chinese, Japanese, Korean, Thai
// and others) are taken character by character, so that any part of their text can be found as a sequence of words; so
// are pictures. The text must outlive the object.
class SearchWords {
 public:
  explicit SearchWords(QStringView text) : m_text(text) {}

  // Moves to the next word; false when there is none left.
  bool next();
  // The current word, at most `longest` units; valid until the next call.
  [[nodiscard]] QStringView folded() const { return m_folded; }
  // Where the current word is in the text.
  [[nodiscard]] TextRange range() const { return m_range; }
  // Whether it is a character of a script that is taken character by character, or a picture.
  [[nodiscard]] bool isCharacter() const { return m_isCharacter; }

  static constexpr qsizetype longest = 255;

 private:
  void fold(QStringView word);

  QStringView m_text;
  qsizetype m_at{0};
  QString m_folded;
  TextRange m_range;
  bool m_isCharacter{false};
};

// A name as a whole in the form in which it is compared, with its signs; runs of spaces become one.
[[nodiscard]] QString foldedName(const QString& name);

}  // namespace quillo
