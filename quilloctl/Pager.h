#pragma once

#include <QByteArray>

namespace quillo::ctl {

// The user's pager, $PAGER or else less, between us and a terminal that is too short for what is printed. What would
// fit goes straight to the terminal, whichever pager it is.
class Pager {
 public:
  // From now on the output of this process may be paged. For commands that print and end; does nothing where the output
  // is no terminal.
  static void begin();
  // Whether the terminal is, or may yet be, a pager's: what is said to it otherwise is to wait for end().
  [[nodiscard]] static bool isInUse();

  // What is to be written to the standard output now that `bytes` have been printed: nothing while it still fits.
  [[nodiscard]] static QByteArray passOn(const QByteArray& bytes);
  // What was held back to the end, for it fits.
  [[nodiscard]] static QByteArray rest();
  // Closes the standard output of a pager that runs, and waits until the user has left it.
  static void end();
};

}  // namespace quillo::ctl
