#include "platform/linux/PortalHotKeys.h"

#include "foundation/Log.h"

#include <QDBusArgument>
#include <QDBusMetaType>

#include <algorithm>

namespace quillo {

// A shortcut as the portal takes and gives it: its name and what is known of it.
struct PortalShortcut {
  QString name;
  QVariantMap properties;
};

static QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut) {
  argument.beginStructure();
  argument << shortcut.name << shortcut.properties;
  argument.endStructure();
  return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut) {
  argument.beginStructure();
  argument >> shortcut.name >> shortcut.properties;
  argument.endStructure();
  return argument;
}

}  // namespace quillo

Q_DECLARE_METATYPE(quillo::PortalShortcut)

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;
const QString sessionInterface = u"org.freedesktop.portal.Session"_s;

QDBusMessage callToPortal(const QString& method) {
  return QDBusMessage::createMethodCall(Portal::service, Portal::path, shortcutsInterface, method);
}

// A string by the portal's documentation; some send the object path that it stands for.
QString sessionOf(const QVariantMap& results) {
  const QVariant handle = results.value(u"session_handle"_s);
  return handle.canConvert<QDBusObjectPath>() ? handle.value<QDBusObjectPath>().path() : handle.toString();
}

bool contains(const QVariant& shortcuts, const QString& name) {
  if (!shortcuts.canConvert<QDBusArgument>()) return false;
  const auto argument = shortcuts.value<QDBusArgument>();
  if (argument.currentSignature() != u"a(sa{sv})") return false;
  const auto list = qdbus_cast<QList<PortalShortcut>>(argument);
  return std::any_of(list.begin(), list.end(), [&](const PortalShortcut& shortcut) { return shortcut.name == name; });
}

}  // namespace

QString PortalHotKeys::trigger(quint32 modifiers, const QByteArray& keysymName) {
  if (keysymName.isEmpty()) return {};
  QStringList parts;
  if (modifiers & HotKeyModifier::control) parts << u"CTRL"_s;
  if (modifiers & HotKeyModifier::option) parts << u"ALT"_s;
  if (modifiers & HotKeyModifier::shift) parts << u"SHIFT"_s;
  if (modifiers & HotKeyModifier::command) parts << u"LOGO"_s;
  if (parts.isEmpty()) return {};
  return (parts << QString::fromLatin1(keysymName)).join(u'+');
}

PortalHotKeys::PortalHotKeys(QString description, QString applicationIdentifier, KeysymName keysymName)
    : m_description(std::move(description)),
      m_applicationIdentifier(std::move(applicationIdentifier)),
      m_keysymName(std::move(keysymName)) {
  // Qt knows its own types only once one was sent; a slot that takes one would not be found before.
  qDBusRegisterMetaType<QDBusObjectPath>();
  qDBusRegisterMetaType<PortalShortcut>();
  qDBusRegisterMetaType<QList<PortalShortcut>>();
}

PortalHotKeys::~PortalHotKeys() {
  for (const auto& claim : m_claims) closeSession(claim->session);
}

void PortalHotKeys::attach(QDBusConnection& connection) {
  const bool heard =
      connection.connect(Portal::service, Portal::path, shortcutsInterface, u"Activated"_s, this,
                         SLOT(activated(QDBusObjectPath, QString, qulonglong, QVariantMap))) &&
      connection.connect(Portal::service, Portal::path, shortcutsInterface, u"Deactivated"_s, this,
                         SLOT(deactivated(QDBusObjectPath, QString, qulonglong, QVariantMap))) &&
      connection.connect(Portal::service, {}, sessionInterface, u"Closed"_s, this, SLOT(sessionClosed(QDBusMessage)));
  if (!heard) QLLogError(u"The desktop's shortcuts cannot be heard: %1"_s.arg(connection.lastError().message()));
  m_watcher =
      std::make_unique<QDBusServiceWatcher>(Portal::service, connection, QDBusServiceWatcher::WatchForOwnerChange);
  connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString& before, const QString& now) {
            if (!before.isEmpty()) portalGone();
            if (!now.isEmpty()) portalCame();
          });
  // Tells the portal which program this is, where it cannot find out. Older ones do not know the call.
  auto call = QDBusMessage::createMethodCall(Portal::service, Portal::path, u"org.freedesktop.host.portal.Registry"_s,
                                             u"Register"_s);
  call << m_applicationIdentifier << QVariantMap();
  connection.send(call);
}

OSStatus PortalHotKeys::registerHotKey(quint32 keyCode, quint32 modifiers, HotKeyID id, HotKeyRef* ref) {
  if (!m_bus)
    m_bus = std::make_unique<SessionBus>(u"portal"_s, [this](QDBusConnection& connection) { attach(connection); });
  if (!m_bus->connect()) return HotKeyStatus::unsupported;
  const QString spelled = trigger(modifiers, m_keysymName(static_cast<quint16>(keyCode)));
  if (spelled.isEmpty()) return HotKeyStatus::invalid;
  auto claim = std::make_unique<Claim>();
  claim->ref = ++m_lastRef;
  claim->id = id;
  claim->shortcut = u"key-%1-%2"_s.arg(keyCode).arg(modifiers);
  claim->trigger = spelled;
  *ref = claim->ref;
  createSession(*claim);
  m_claims.push_back(std::move(claim));
  return HotKeyStatus::done;
}

OSStatus PortalHotKeys::unregisterHotKey(HotKeyRef ref) {
  const auto claim = std::find_if(m_claims.begin(), m_claims.end(), [ref](const auto& c) { return c->ref == ref; });
  if (claim == m_claims.end()) return HotKeyStatus::invalid;
  closeSession((*claim)->session);
  m_claims.erase(claim);
  return HotKeyStatus::done;
}

void PortalHotKeys::installEventHandler(Handler handler) {
  m_handler = std::move(handler);
}

HotKeyState PortalHotKeys::state(HotKeyRef ref) const {
  const Claim* claim = find(ref);
  return claim ? claim->state : HotKeyState::Refused;
}

void PortalHotKeys::observeStates(StateObserver observer) {
  m_observer = std::move(observer);
}

PortalHotKeys::Claim* PortalHotKeys::find(HotKeyRef ref) const {
  const auto claim = std::find_if(m_claims.begin(), m_claims.end(), [ref](const auto& c) { return c->ref == ref; });
  return claim == m_claims.end() ? nullptr : claim->get();
}

PortalHotKeys::Claim* PortalHotKeys::findSession(const QString& session) const {
  const auto claim = std::find_if(m_claims.begin(), m_claims.end(),
                                  [&](const auto& c) { return !session.isEmpty() && c->session == session; });
  return claim == m_claims.end() ? nullptr : claim->get();
}

void PortalHotKeys::createSession(Claim& claim) {
  claim.state = HotKeyState::Pending;
  claim.session.clear();
  const QVariantMap options{{u"session_handle_token"_s, u"quillo%1"_s.arg(claim.ref)}};
  // The claim owns the request: an answer never finds it gone.
  claim.request = std::make_unique<PortalRequest>(
      m_bus->connection(), callToPortal(u"CreateSession"_s), options,
      [this, &claim](PortalRequest::Outcome outcome, const QVariantMap& results, const QString& reason) {
        if (outcome != PortalRequest::Outcome::Done) return fail(claim, outcome, reason);
        claim.session = sessionOf(results);
        if (claim.session.isEmpty())
          return fail(claim, PortalRequest::Outcome::Unsupported, u"the desktop gave no session"_s);
        bindShortcut(claim);
      },
      nullptr);
}

void PortalHotKeys::bindShortcut(Claim& claim) {
  auto call = callToPortal(u"BindShortcuts"_s);
  const PortalShortcut shortcut{claim.shortcut,
                                {{u"description"_s, m_description}, {u"preferred_trigger"_s, claim.trigger}}};
  call << QVariant::fromValue(QDBusObjectPath(claim.session)) << QVariant::fromValue(QList{shortcut}) << QString();
  // This runs in the answer of the request that it replaces, which lives until control is back in the event loop.
  claim.request.release()->deleteLater();
  claim.request = std::make_unique<PortalRequest>(
      m_bus->connection(), call, QVariantMap(),
      [this, &claim](PortalRequest::Outcome outcome, const QVariantMap& results, const QString& reason) {
        if (outcome != PortalRequest::Outcome::Done) return fail(claim, outcome, reason);
        if (!contains(results.value(u"shortcuts"_s), claim.shortcut))
          return fail(claim, PortalRequest::Outcome::Refused, u"it was declined"_s);
        finish(claim, HotKeyState::Active, {});
      },
      nullptr);
}

void PortalHotKeys::fail(Claim& claim, PortalRequest::Outcome outcome, const QString& reason) {
  if (outcome == PortalRequest::Outcome::Unsupported)
    finish(claim, HotKeyState::Unsupported, hotKeyStatusText(HotKeyStatus::unsupported) + u" ("_s + reason + u')');
  else
    finish(claim, HotKeyState::Refused, reason);
}

void PortalHotKeys::finish(Claim& claim, HotKeyState state, const QString& reason) {
  if (claim.request) claim.request.release()->deleteLater();
  claim.state = state;
  const HotKeyRef ref = claim.ref;
  // A session that was refused stays open: some portals apply a shortcut that they saved before without listing it, and
  // some answer with a refusal although it works. A press that comes counts.
  // A copy, as the observer may set another; it may also end the claim.
  if (const StateObserver observer = m_observer) observer(ref, state, reason);
}

void PortalHotKeys::closeSession(const QString& session) {
  if (session.isEmpty() || !m_bus) return;
  m_bus->send(QDBusMessage::createMethodCall(Portal::service, session, sessionInterface, u"Close"_s));
}

void PortalHotKeys::portalGone() {
  // Its sessions went with it, and what it was asked will not be answered.
  for (const auto& claim : m_claims) {
    claim->request.reset();
    claim->session.clear();
    // Asked anew at once: that starts it again where the bus can start it, and tells of its absence where not. One that
    // goes before it has answered is left alone until it comes by itself, so that this ends.
    if (claim->state == HotKeyState::Active) createSession(*claim);
  }
}

void PortalHotKeys::portalCame() {
  // One that is asked already was started by the question.
  for (const auto& claim : m_claims)
    if (!claim->request && (claim->state == HotKeyState::Pending || claim->state == HotKeyState::Unsupported))
      createSession(*claim);
}

void PortalHotKeys::sessionClosed(const QDBusMessage& message) {
  Claim* claim = findSession(message.path());
  if (!claim) return;
  claim->session.clear();
  if (claim->state != HotKeyState::Refused) finish(*claim, HotKeyState::Refused, u"the desktop has taken it back"_s);
}

void PortalHotKeys::activated(const QDBusObjectPath& session, const QString& shortcut, qulonglong,
                              const QVariantMap& options) {
  // With this a compositor knows that the user asked for the window that shows next, and gives it the keyboard.
  const QString token = options.value(u"activation_token"_s).toString();
  if (!token.isEmpty() && findSession(session.path())) qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
  send(session, shortcut, HotKeyEvent::pressed);
}

void PortalHotKeys::deactivated(const QDBusObjectPath& session, const QString& shortcut, qulonglong,
                                const QVariantMap&) {
  send(session, shortcut, HotKeyEvent::released);
}

void PortalHotKeys::send(const QDBusObjectPath& session, const QString& shortcut, quint32 kind) {
  Claim* claim = findSession(session.path());
  if (!claim || claim->shortcut != shortcut) return;
  const HotKeyID id = claim->id;
  // While it is asked about, its answer is to come.
  if (claim->state == HotKeyState::Refused) finish(*claim, HotKeyState::Active, {});
  if (const Handler handler = m_handler) handler({.kind = kind, .directObject = id});
}

}  // namespace quillo
