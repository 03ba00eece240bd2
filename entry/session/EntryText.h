#pragma once

#include <QString>

namespace quillo {

// The text that an entry is written in: an editor's, whatever it looks like.
class EntryText {
 public:
  virtual ~EntryText() = default;

  // With "\n" at line ends.
  [[nodiscard]] virtual QString text() const = 0;
  // Replaces the text, with the caret at its end. Not an edit by the user: nobody is told of it.
  virtual void setText(const QString& text) = 0;
  // Makes text of what an input method has not committed yet, as text() is without it.
  virtual void commitComposition() = 0;
};

}  // namespace quillo
