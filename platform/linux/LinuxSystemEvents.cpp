#include "platform/linux/LinuxSystemEvents.h"

#include "foundation/Log.h"

#include <QFile>
#include <QSocketNotifier>

#include <limits.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr const char* zoneLink = "localtime";
constexpr const char* zoneName = "timezone";

double secondsOf(clockid_t clock) {
  timespec now{};
  ::clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// How long the machine has slept since it was started: one of the clocks stands still meanwhile.
double secondsAsleep() {
  return secondsOf(CLOCK_BOOTTIME) - secondsOf(CLOCK_MONOTONIC);
}

}  // namespace

LinuxSystemEvents::LinuxSystemEvents(const QDBusConnection& systemBus, const QString& zoneDirectory)
    : m_clockTimer([this](TimerDescriptor::Outcome outcome) {
        if (outcome == TimerDescriptor::Outcome::ClockWasSet) clockWasSet();
      }),
      m_secondsAsleep(secondsAsleep()),
      m_zoneDirectory(zoneDirectory) {
  if (!m_clockTimer.isValid() || !m_clockTimer.armForClockChanges())
    QLLogInfo(u"Changes of the clock go unnoticed: the kernel does not tell"_s);
  watchTimeZone();
  QDBusConnection bus = systemBus;
  const bool connected = bus.isConnected() && bus.connect(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
                                                          u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s,
                                                          this, SLOT(prepareForSleep(bool)));
  if (!connected) QLLogInfo(u"Waking is noticed by the clock alone: there is no system bus"_s);
}

LinuxSystemEvents::~LinuxSystemEvents() = default;

void LinuxSystemEvents::setReceiver(std::function<void(SystemEvent)> receiver) {
  m_receiver = std::move(receiver);
}

void LinuxSystemEvents::send(SystemEvent event) {
  const auto receiver = m_receiver;
  if (receiver) receiver(event);
}

void LinuxSystemEvents::clockWasSet() {
  m_clockTimer.armForClockChanges();
  // The kernel gives this notice after sleep, too; then the time asleep has grown. The two clocks are read one after
  // the other, hence the tolerance.
  static constexpr double tolerance = 0.05;
  const double asleep = secondsAsleep();
  if (asleep - m_secondsAsleep < tolerance) return send(SystemEvent::ClockDidChange);
  m_secondsAsleep = asleep;
  m_saidAwake = true;
  send(SystemEvent::DidWake);
}

void LinuxSystemEvents::prepareForSleep(bool goingToSleep) {
  if (goingToSleep) {
    m_saidAwake = false;
    return;
  }
  // Told already by the clock's notice. Each waking is announced once: a second notice would have a snoozed reminder
  // armed once more.
  if (std::exchange(m_saidAwake, false)) return;
  m_saidAwake = true;
  m_secondsAsleep = secondsAsleep();
  send(SystemEvent::DidWake);
}

void LinuxSystemEvents::watchTimeZone() {
  m_zoneState = zoneState();
  m_zoneDescriptor = FileDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  // The directory, because the link in it is replaced and not written to.
  static constexpr uint32_t changes = IN_CREATE | IN_MOVED_TO | IN_CLOSE_WRITE | IN_DELETE;
  const QByteArray directory = QFile::encodeName(m_zoneDirectory);
  if (!m_zoneDescriptor.isOpen() ||
      ::inotify_add_watch(m_zoneDescriptor.number(), directory.constData(), changes) < 0) {
    QLLogInfo(u"Changes of the time zone go unnoticed: cannot watch %1"_s.arg(m_zoneDirectory));
    return;
  }
  m_zoneNotifier = std::make_unique<QSocketNotifier>(m_zoneDescriptor.number(), QSocketNotifier::Read);
  connect(m_zoneNotifier.get(), &QSocketNotifier::activated, this, [this] { zoneDirectoryChanged(); });
}

void LinuxSystemEvents::zoneDirectoryChanged() {
  alignas(inotify_event) char buffer[4096];
  bool concerned = false;
  // Ends: each turn takes events out of the kernel's queue, and an empty queue gives -1.
  for (ssize_t size = 0; (size = ::read(m_zoneDescriptor.number(), buffer, sizeof buffer)) > 0;) {
    for (ssize_t at = 0; at < size;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
      at += static_cast<ssize_t>(sizeof(inotify_event)) + event->len;
      // An overflowing queue may have lost the one that matters.
      concerned =
          concerned || (event->mask & IN_Q_OVERFLOW) ||
          (event->len > 0 && (std::strcmp(event->name, zoneLink) == 0 || std::strcmp(event->name, zoneName) == 0));
    }
  }
  if (!concerned) return;
  QByteArray state = zoneState();
  if (state == m_zoneState) return;
  m_zoneState = std::move(state);
  // The C library keeps the zone that it has read until it is told.
  ::tzset();
  send(SystemEvent::TimeZoneDidChange);
}

QByteArray LinuxSystemEvents::zoneState() const {
  const QByteArray link = QFile::encodeName(m_zoneDirectory + u'/' + QLatin1StringView(zoneLink));
  char target[PATH_MAX] = {};
  const ssize_t length = ::readlink(link.constData(), target, sizeof target - 1);
  struct stat status {};
  const bool isThere = ::stat(link.constData(), &status) == 0;
  QByteArray state(target, std::max<ssize_t>(0, length));
  // A link says by itself which zone it is; the name in the other file follows a moment later and would make the same
  // change a second one. That name counts where the link is a copy of the zone or leads nowhere.
  const bool linkNamesZone = isThere && state.contains("/zoneinfo/");
  state += '\n' + QByteArray::number(quint64{status.st_dev}) + ':' + QByteArray::number(quint64{status.st_ino}) + ':' +
           QByteArray::number(qint64{status.st_mtime}) + '\n';
  if (linkNamesZone) return state;
  QFile name(m_zoneDirectory + u'/' + QLatin1StringView(zoneName));
  static constexpr qint64 longestName = 256;
  if (name.open(QIODevice::ReadOnly)) state += name.read(longestName);
  return state;
}

}  // namespace quillo
