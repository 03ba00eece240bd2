#include "platform/linux/SessionBusHelper.h"

#include "foundation/DetachedProcess.h"
#include "platform/linux/SessionBusApplications.h"

#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>

#include <poll.h>

// The header of this C library does not say that it is C.
extern "C" {
#include <sys/pidfd.h>
}

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// One that ends saves what is written in its window first.
constexpr int endMilliseconds = 5000;
// A start takes some tenths of a second; this is for a machine that is busy with the rest of a login.
constexpr int answerMilliseconds = 15000;

const QString noBus = u"there is no session bus on which it would answer"_s;

}  // namespace

SessionBusHelper::SessionBusHelper(SessionBusApplications& applications, LoginHelper helper)
    : m_applications(applications), m_helper(std::move(helper)) {}

QList<RunningApplication> SessionBusHelper::running() const {
  return m_applications.running(m_helper.bundleIdentifier);
}

bool SessionBusHelper::launch(const QString& program, const QStringList& arguments) {
  Launch launch{false, running(), {}};
  if (const auto process = startDetached(program, arguments, u"/"_s)) {
    launch.succeeded = true;
    launch.process = FileDescriptor(::pidfd_open(static_cast<pid_t>(*process), 0));
  }
  m_launch = std::move(launch);
  return m_launch->succeeded;
}

bool SessionBusHelper::start(QString* reason) {
  // Where nobody can tell what runs, each start would be one more.
  const bool isOnBus = m_applications.isOnBus();
  if (isOnBus && launch(m_helper.program, m_helper.arguments)) return true;
  *reason = isOnBus ? couldNotBeStarted() : noBus;
  return false;
}

QString SessionBusHelper::couldNotBeStarted() const {
  return u"%1 could not be started"_s.arg(m_helper.program);
}

QList<RunningApplication> SessionBusHelper::awaited() const {
  QList<RunningApplication> found = running();
  if (m_launch) found.removeIf([this](const auto& one) { return m_launch->before.contains(one); });
  return found;
}

bool SessionBusHelper::launchedHasEnded() const {
  if (!m_launch) return false;
  pollfd ended{m_launch->process.number(), POLLIN, 0};
  return !m_launch->process.isOpen() || ::poll(&ended, 1, 0) > 0;
}

bool SessionBusHelper::waitUntil(const std::function<bool()>& condition, const QDeadlineTimer& deadline) {
  QEventLoop loop;
  const auto look = [&loop, &condition] {
    if (condition()) loop.quit();
  };
  const auto watch = m_applications.watch(m_helper.bundleIdentifier, look);
  std::optional<QSocketNotifier> process;
  if (m_launch && m_launch->process.isOpen()) {
    process.emplace(m_launch->process.number(), QSocketNotifier::Read);
    QObject::connect(&*process, &QSocketNotifier::activated, &loop, [&process, look] {
      process->setEnabled(false);
      look();
    });
  }
  // Asked once the watch stands, so that nothing falls between.
  if (condition()) return true;
  QTimer::singleShot(static_cast<int>(deadline.remainingTime()), &loop, &QEventLoop::quit);
  loop.exec();
  return condition();
}

bool SessionBusHelper::waitForAnswer(QString* reason) {
  if (m_launch && !m_launch->succeeded) {
    *reason = couldNotBeStarted();
    return false;
  }
  if (!m_applications.isOnBus()) {
    *reason = noBus;
    return false;
  }
  const QDeadlineTimer deadline(answerMilliseconds);
  waitUntil([this] { return !awaited().isEmpty() || launchedHasEnded(); }, deadline);
  for (const RunningApplication& one : awaited())
    if (m_applications.answers(one, deadline)) return true;
  *reason = launchedHasEnded() ? u"it ended at once; started in a terminal, %1 says why"_s.arg(m_helper.program)
                               : u"it did not answer within %1 seconds"_s.arg(answerMilliseconds / 1000);
  return false;
}

bool SessionBusHelper::end(QString* reason) {
  for (const RunningApplication& one : running()) m_applications.terminate(one);
  if (waitUntil([this] { return running().isEmpty(); }, QDeadlineTimer(endMilliseconds))) return true;
  *reason = u"it was asked to end, and still runs"_s;
  return false;
}

}  // namespace quillo
