#include "quilloctl/ProgressLine.h"

#include <unistd.h>

#include <cstdio>

namespace quillo::ctl {

ProgressLine::~ProgressLine() {
  if (m_isShown) std::fputs("\r\x1b[K", stderr);
}

void ProgressLine::show(qint64 done, qint64 total) {
  static const bool isTerminal = ::isatty(STDERR_FILENO) == 1;
  if (!isTerminal || total == 0) return;
  std::fprintf(stderr, "\r%s: %lld of %lld entries\x1b[K", m_what, static_cast<long long>(done),
               static_cast<long long>(total));
  m_isShown = true;
}

}  // namespace quillo::ctl
