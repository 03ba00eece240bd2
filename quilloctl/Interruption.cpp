#include "quilloctl/Interruption.h"

namespace quillo::ctl {

namespace {

volatile std::sig_atomic_t asked = 0;

void ask(int) {
  asked = 1;
}

}  // namespace

Interruption::Interruption() {
  struct sigaction action {};
  action.sa_handler = ask;
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  for (size_t i = 0; i < signals.size(); ++i) {
    ::sigaction(signals[i], nullptr, &m_before[i]);
    // What is ignored stays so, as under nohup.
    if (m_before[i].sa_handler != SIG_IGN) ::sigaction(signals[i], &action, nullptr);
  }
}

Interruption::~Interruption() {
  for (size_t i = 0; i < signals.size(); ++i) ::sigaction(signals[i], &m_before[i], nullptr);
}

bool Interruption::isAsked() {
  return asked != 0;
}

}  // namespace quillo::ctl
