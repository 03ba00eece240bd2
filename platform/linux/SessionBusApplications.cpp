#include "platform/linux/SessionBusApplications.h"

#include "foundation/Log.h"

#include <QCoreApplication>
#include <QDBusServiceWatcher>

#include <unistd.h>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestBusName = 255;
constexpr int askMilliseconds = 3000;
constexpr int terminateMilliseconds = 1000;

const QString path = u"/com/quilloapp/Application"_s;
const QString interface = u"com.quilloapp.Application"_s;
const QString ownUserOnly = u"it takes requests of its own user only"_s;

// Two parts or more, of ASCII letters, digits, _ and -; none begins with a digit.
bool canBePartOfBusName(const QString& bundleIdentifier) {
  const QStringList parts = bundleIdentifier.split(u'.');
  const auto isLetter = [](QChar c) { return c < QChar(0x80) && (c.isLetter() || c == u'_' || c == u'-'); };
  return bundleIdentifier.size() < longestBusName && parts.size() >= 2 &&
         std::all_of(parts.begin(), parts.end(), [&isLetter](const QString& part) {
           return !part.isEmpty() && isLetter(part[0]) && std::all_of(part.begin(), part.end(), [&isLetter](QChar c) {
             return isLetter(c) || (c < QChar(0x80) && c.isDigit());
           });
         });
}

// A bus numbers its connections in the order in which they were made: ":1.42". 0 for a name of any other form.
qulonglong connectionNumber(const QString& uniqueName) {
  return uniqueName.sliced(uniqueName.lastIndexOf(u'.') + 1).toULongLong();
}

}  // namespace

std::optional<QString> busNameOfApplication(const RunningApplication& application) {
  if (application.processIdentifier <= 0 || !canBePartOfBusName(application.bundleIdentifier)) return {};
  // A part of a bus name must not begin with a digit, hence the letter.
  const QString name = application.bundleIdentifier + u".p"_s + QString::number(application.processIdentifier);
  if (name.size() > longestBusName) return {};
  return name;
}

std::optional<RunningApplication> applicationOfBusName(const QString& name, const QString& bundleIdentifier) {
  const QString prefix = bundleIdentifier + u".p"_s;
  if (!name.startsWith(prefix)) return {};
  const RunningApplication application{bundleIdentifier, name.mid(prefix.size()).toLongLong()};
  // Only the one spelling that we would use ourselves.
  if (busNameOfApplication(application) != name) return {};
  return application;
}

SessionBusApplications::SessionBusApplications()
    : m_bus(u"applications"_s, [this](QDBusConnection& connection) {
        // The first connection is made before there is a name to claim; each later one claims it again.
        if (!m_ownName.isEmpty()) claim(connection);
      }) {}

SessionBusApplications::~SessionBusApplications() {
  for (QDBusPendingCall& request : m_requests) request.waitForFinished();
}

bool SessionBusApplications::claim(QDBusConnection& connection) {
  return connection.registerObject(path, this, QDBusConnection::ExportScriptableInvokables) &&
         connection.registerService(m_ownName);
}

bool SessionBusApplications::registerSelf(const QString& bundleIdentifier, std::function<void()> onTerminate) {
  m_onTerminate = std::move(onTerminate);
  const auto name = busNameOfApplication({bundleIdentifier, currentProcessIdentifier()});
  if (!name) {
    QLLogError(u"Other programs cannot find this one: \"%1\" is no bundle identifier"_s.arg(bundleIdentifier));
    return false;
  }
  if (!m_bus.connect()) {
    QLLogWarn(u"Other programs cannot find this one: there is no session bus"_s);
    m_ownName = *name;
    return false;
  }
  auto connection = m_bus.connection();
  if (!m_ownName.isEmpty()) {
    connection.unregisterService(m_ownName);
    connection.unregisterObject(path);
  }
  m_ownName = *name;
  if (claim(connection)) return true;
  QLLogWarn(u"Other programs cannot find this one: the session bus refused the name %1"_s.arg(m_ownName));
  return false;
}

QList<RunningApplication> SessionBusApplications::running(const QString& bundleIdentifier) const {
  QList<RunningApplication> found;
  const auto names = m_bus.askBus(u"ListNames"_s).value_or(QVariant()).toStringList();
  for (const auto& name : names)
    if (auto application = applicationOfBusName(name, bundleIdentifier)) found << *application;
  std::sort(found.begin(), found.end(),
            [](const auto& a, const auto& b) { return a.processIdentifier < b.processIdentifier; });
  return found;
}

bool SessionBusApplications::terminate(const RunningApplication& application) {
  const auto name = busNameOfApplication(application);
  if (!name) return false;
  const QString owner = m_bus.askBus(u"GetNameOwner"_s, {*name}).value_or(QVariant()).toString();
  if (owner.isEmpty()) return false;
  if (isNewerCopy(application, owner)) {
    endSoon();
    return true;
  }
  auto call = QDBusMessage::createMethodCall(*name, path, interface, u"Terminate"_s);
  // The name may go in this very moment; nothing is to be started for it then.
  call.setAutoStartService(false);
  if (!m_bus.connect()) return false;
  m_requests.removeIf([](const QDBusPendingCall& request) { return request.isFinished(); });
  m_requests << m_bus.connection().asyncCall(call, terminateMilliseconds);
  return !m_requests.back().isError();
}

qint64 SessionBusApplications::currentProcessIdentifier() const {
  return QCoreApplication::applicationPid();
}

bool SessionBusApplications::isNewerCopy(const RunningApplication& application, const QString& owner) const {
  const auto own = busNameOfApplication({application.bundleIdentifier, currentProcessIdentifier()});
  return own == m_ownName && connectionNumber(owner) > connectionNumber(m_bus.connection().baseService());
}

void SessionBusApplications::Terminate() {
  if (!calledByOwnUser()) return sendErrorReply(QDBusError::AccessDenied, ownUserOnly);
  endSoon();
}

void SessionBusApplications::endSoon() {
  if (m_terminating) return;
  m_terminating = true;
  // The answer leaves when this returns; a callback that quits at once must come after it.
  QMetaObject::invokeMethod(
      this,
      [this] {
        m_terminating = false;
        // A copy, as the callback may register another.
        if (const auto onTerminate = m_onTerminate) onTerminate();
      },
      Qt::QueuedConnection);
}

bool SessionBusApplications::ask(QStringView method, const RunningApplication& application, QString* reason) {
  const auto name = busNameOfApplication(application);
  if (!name || !m_bus.connect()) {
    *reason = u"there is no session bus"_s;
    return false;
  }
  auto call = QDBusMessage::createMethodCall(*name, path, interface, method.toString());
  call.setAutoStartService(false);
  const QDBusMessage reply = m_bus.connection().call(call, QDBus::Block, askMilliseconds);
  if (reply.type() == QDBusMessage::ReplyMessage) return true;
  *reason = reply.errorMessage();
  return false;
}

std::unique_ptr<QObject> SessionBusApplications::watch(const QString& bundleIdentifier,
                                                       std::function<void()> onChange) {
  if (!m_bus.connect()) return nullptr;
  // The asterisk: every name below this one.
  auto watcher = std::make_unique<QDBusServiceWatcher>(bundleIdentifier + u'*', m_bus.connection(),
                                                       QDBusServiceWatcher::WatchForOwnerChange);
  connect(watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, watcher.get(), std::move(onChange));
  return watcher;
}

bool SessionBusApplications::answers(const RunningApplication& application, const QDeadlineTimer& deadline) {
  const auto name = busNameOfApplication(application);
  if (!name || !m_bus.connect()) return false;
  // Of an object that exists even this is answered in its own thread.
  auto call = QDBusMessage::createMethodCall(*name, path, u"org.freedesktop.DBus.Peer"_s, u"Ping"_s);
  call.setAutoStartService(false);
  const int milliseconds = std::max(1, static_cast<int>(deadline.remainingTime()));
  return m_bus.connection().call(call, QDBus::Block, milliseconds).type() == QDBusMessage::ReplyMessage;
}

// A bus may be open to others, such as the administrator.
bool SessionBusApplications::calledByOwnUser() {
  const auto user = m_bus.askBus(u"GetConnectionUnixUser"_s, {message().service()});
  return user && user->toUInt() == ::getuid();
}

void SessionBusApplications::Toggle() {
  doSoon(m_onToggle, u"it has nothing to toggle"_s);
}

void SessionBusApplications::Remind() {
  doSoon(m_onRemind, u"it gives no reminders"_s);
}

void SessionBusApplications::doSoon(const std::function<void()>& what, const QString& refusal) {
  if (!calledByOwnUser()) return sendErrorReply(QDBusError::AccessDenied, ownUserOnly);
  if (!what) return sendErrorReply(QDBusError::NotSupported, refusal);
  // By its address, as it may be taken away before its turn; a copy then, as it may set another.
  QMetaObject::invokeMethod(
      this,
      [callback = &what] {
        if (const auto now = *callback) now();
      },
      Qt::QueuedConnection);
}

}  // namespace quillo
