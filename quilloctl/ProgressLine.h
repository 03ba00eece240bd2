#pragma once

#include <QString>

namespace quillo::ctl {

// A line on the error stream that is written over, and gone in the end; nothing where that is no terminal.
class ProgressLine {
 public:
  // `what` is what is going on, "Reading the journal".
  explicit ProgressLine(const char* what) : m_what(what) {}
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // So many of so many entries; nothing is shown of none.
  void show(qint64 done, qint64 total);
  // So much of the whole, from 0 to 1.
  void showPart(double done);

 private:
  const char* m_what;
  bool m_isShown{false};
  int m_percent{-1};
};

}  // namespace quillo::ctl
