#include "quilloctl/ProgressLine.h"

#include <unistd.h>

#include <cstdio>

namespace quillo::ctl {

ProgressLine::~ProgressLine() {
  if (m_isShown) std::fputs("\r\x1b[K", stderr);
}

static bool isTerminal() {
  static const bool is = ::isatty(STDERR_FILENO) == 1;
  return is;
}

void ProgressLine::show(qint64 done, qint64 total) {
  if (!isTerminal() || total == 0) return;
  std::fprintf(stderr, "\r%s: %lld of %lld entries\x1b[K", m_what, static_cast<long long>(done),
               static_cast<long long>(total));
  m_isShown = true;
}

void ProgressLine::showPart(double done) {
  const int percent = static_cast<int>(done * 100);
  if (!isTerminal() || percent == m_percent) return;
  m_percent = percent;
  std::fprintf(stderr, "\r%s: %d %%\x1b[K", m_what, percent);
  m_isShown = true;
}

}  // namespace quillo::ctl
