#include "platform/linux/SingleInstance.h"

#include "foundation/Log.h"

#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int handOverMilliseconds = 3000;
constexpr int endingMilliseconds = 3000;
const QString interface = u"org.freedesktop.Application"_s;
// Where desktops leave the token of the click that started a program.
constexpr const char* tokenVariables[] = {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"};

QVariantMap ownPlatformData() {
  for (const char* variable : tokenVariables)
    if (const QString token = qEnvironmentVariable(variable); !token.isEmpty())
      return {{u"activation-token"_s, token}, {u"desktop-startup-id"_s, token}};
  return {};
}

}  // namespace

SingleInstance::SingleInstance(QString name)
    : m_name(std::move(name)),
      m_path(u'/' + QString(m_name).replace(u'.', u'/').replace(u'-', u'_')),
      m_bus(u"instance"_s, [this](QDBusConnection& connection) {
        // A bus that came back knows nobody.
        if (m_isFirst) claim(connection);
      }) {}

bool SingleInstance::claim(QDBusConnection& connection) {
  return connection.registerObject(m_path, this, QDBusConnection::ExportScriptableInvokables) &&
         connection.registerService(m_name);
}

SingleInstance::Role SingleInstance::join(const QStringList& urls) {
  if (!m_bus.connect()) {
    QLLogWarn(u"A second start cannot be handed over: there is no session bus"_s);
    return Role::First;
  }
  QDBusConnection connection = m_bus.connection();
  QDBusServiceWatcher watcher(m_name, connection, QDBusServiceWatcher::WatchForUnregistration);
  QEventLoop untilFree;
  QObject::connect(&watcher, &QDBusServiceWatcher::serviceUnregistered, &untilFree, &QEventLoop::quit);
  for (bool isLast = false;; isLast = true) {
    m_isFirst = claim(connection);
    if (m_isFirst) return Role::First;
    connection.unregisterObject(m_path);
    if (handOver(connection, urls)) return Role::HandedOver;
    if (isLast) return Role::Refused;
    // One that is just ending answers nobody, and its name is free soon.
    QTimer::singleShot(endingMilliseconds, &untilFree, &QEventLoop::quit);
    untilFree.exec(QEventLoop::ExcludeUserInputEvents);
  }
}

bool SingleInstance::handOver(QDBusConnection& connection, const QStringList& urls) const {
  auto call = QDBusMessage::createMethodCall(m_name, m_path, interface, urls.isEmpty() ? u"Activate"_s : u"Open"_s);
  if (!urls.isEmpty()) call << urls;
  call << ownPlatformData();
  call.setAutoStartService(false);
  return connection.call(call, QDBus::Block, handOverMilliseconds).type() == QDBusMessage::ReplyMessage;
}

void SingleInstance::setOnOpen(Opened onOpen) {
  m_onOpen = std::move(onOpen);
  if (!m_onOpen) return;
  for (const Request& request : std::exchange(m_waiting, {})) m_onOpen(request.urls, request.activationToken);
}

void SingleInstance::receive(const QStringList& urls, const QVariantMap& platformData) {
  QString token = platformData.value(u"activation-token"_s).toString();
  if (token.isEmpty()) token = platformData.value(u"desktop-startup-id"_s).toString();
  // Starts before the program is ready; nobody needs many.
  constexpr qsizetype mostWaiting = 100;
  if (m_waiting.size() < mostWaiting) m_waiting.append({urls, token});
  QMetaObject::invokeMethod(
      this,
      [this] {
        // A copy, as the callback may set another.
        if (const Opened onOpen = m_onOpen) setOnOpen(onOpen);
      },
      Qt::QueuedConnection);
}

void SingleInstance::Activate(const QVariantMap& platformData) {
  receive({}, platformData);
}

void SingleInstance::Open(const QStringList& urls, const QVariantMap& platformData) {
  receive(urls, platformData);
}

void SingleInstance::ActivateAction(const QString& action, const QVariantList&, const QVariantMap& platformData) {
  // The desktop file's own: each is a URL of ours.
  receive({u"quillo://"_s + action}, platformData);
}

}  // namespace quillo
