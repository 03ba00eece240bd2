#include "quilloctl/Terminal.h"

#include "quilloctl/Streams.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

QString codeOf(Style style) {
  switch (style) {
    case Style::Plain:
      return {};
    case Style::Identifier:
      return u"33"_s;
    case Style::Time:
      return u"36"_s;
    case Style::Tag:
      return u"32"_s;
    case Style::Match:
      return u"1;31"_s;
    case Style::Bar:
      return u"34"_s;
  }
  return {};
}

}  // namespace

bool outputIsTerminal() {
  static const bool isTerminal = ::isatty(STDOUT_FILENO) == 1;
  return isTerminal;
}

bool outputHasColors() {
  static const bool hasColors =
      outputIsTerminal() && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
  return hasColors;
}

TerminalSize terminalSize() {
  winsize size{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return {};
  return {size.ws_col, size.ws_row};
}

StyledLine& StyledLine::add(const QString& text, Style style) {
  QString clean;
  for (const QChar c : withoutControls(text)) {
    const bool isSpace = c.isSpace();
    if (!isSpace || !clean.endsWith(u' ')) clean += isSpace ? QChar(u' ') : c;
  }
  const QString code = outputHasColors() ? codeOf(style) : QString();
  m_text += code.isEmpty() || clean.isEmpty() ? clean : u"\x1b["_s + code + u'm' + clean + u"\x1b[m"_s;
  return *this;
}

StyledLine& StyledLine::gap(int spaces) {
  m_text += QString(spaces, u' ');
  return *this;
}

}  // namespace quillo::ctl
