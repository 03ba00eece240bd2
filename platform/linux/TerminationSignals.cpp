#include "platform/linux/TerminationSignals.h"

#include <QSocketNotifier>

#include <sys/eventfd.h>
#include <unistd.h>

#include <csignal>

namespace quillo {

namespace {

constexpr int handledSignals[] = {SIGTERM, SIGINT, SIGHUP};

// Written by the handler, which may only call what is safe in one.
volatile std::sig_atomic_t wakeDescriptor = -1;

void wake(int) {
  const std::uint64_t one = 1;
  static_cast<void>(!::write(wakeDescriptor, &one, sizeof one));
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> onSignal)
    : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!m_descriptor.isOpen()) return;
  wakeDescriptor = m_descriptor.number();
  m_notifier = std::make_unique<QSocketNotifier>(m_descriptor.number(), QSocketNotifier::Read);
  QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this, onSignal] {
    m_notifier->setEnabled(false);
    onSignal();
  });
  struct sigaction action {};
  action.sa_handler = wake;
  // Back to the default after the first: a second Ctrl+C ends a program that hangs.
  action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
  for (const int signal : handledSignals) ::sigaction(signal, &action, nullptr);
}

TerminationSignals::~TerminationSignals() {
  for (const int signal : handledSignals) std::signal(signal, SIG_DFL);
  m_notifier.reset();
  wakeDescriptor = -1;
}

}  // namespace quillo
