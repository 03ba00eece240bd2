#pragma once

#include <QString>

namespace quillo::ctl {

// Whether the standard output was a terminal when this was first asked: a pager that was put before it changes nothing.
[[nodiscard]] bool outputIsTerminal();
// In a terminal that has colours, unless the user wants none: see no-color.org.
[[nodiscard]] bool outputHasColors();

struct TerminalSize {
  int columns{80};
  int rows{0};  // 0: not known
};
[[nodiscard]] TerminalSize terminalSize();

enum class Style { Plain, Identifier, Time, Tag, Match, Bar };

// A line for people, put together of pieces. Control characters are taken out of them, and spaces and line breaks of
// any kind become single spaces.
class StyledLine {
 public:
  StyledLine& add(const QString& text, Style style = Style::Plain);
  StyledLine& gap(int spaces);
  [[nodiscard]] const QString& text() const { return m_text; }

 private:
  QString m_text;
};

}  // namespace quillo::ctl
