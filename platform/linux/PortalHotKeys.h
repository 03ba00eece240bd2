#pragma once

#include "platform/HotKeys.h"
#include "platform/linux/PortalRequest.h"
#include "platform/linux/SessionBus.h"

#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>

#include <memory>
#include <vector>

namespace quillo {

// Claims combinations through the desktop portal, where a program may not watch the keyboard itself: on Wayland. The
// portal asks the user, so a claim is pending at first. One that was refused becomes active with its first press, where
// the portal sends one all the same. A portal that is started anew is asked again. Needs a QCoreApplication.
class PortalHotKeys final : public QObject, public HotKeys {
  Q_OBJECT

 public:
  // A combination as the portal spells it, "LOGO+SHIFT+j": `keysymName` is the name of the key's symbol.
  [[nodiscard]] static QString trigger(quint32 modifiers, const QByteArray& keysymName);

  // The name of a virtual key code's symbol in the current layout; empty when it has none.
  using KeysymName = std::function<QByteArray(quint16 keyCode)>;

  // `description` tells the user what the shortcut does; `applicationIdentifier` is the name of the desktop file.
  PortalHotKeys(QString description, QString applicationIdentifier, KeysymName keysymName);
  ~PortalHotKeys() override;

  OSStatus registerHotKey(quint32 keyCode, quint32 modifiers, HotKeyID id, HotKeyRef* ref) override;
  OSStatus unregisterHotKey(HotKeyRef ref) override;
  void installEventHandler(Handler handler) override;
  [[nodiscard]] HotKeyState state(HotKeyRef ref) const override;
  void observeStates(StateObserver observer) override;

 private Q_SLOTS:
  void activated(const QDBusObjectPath& session, const QString& shortcut, qulonglong timestamp,
                 const QVariantMap& options);
  void deactivated(const QDBusObjectPath& session, const QString& shortcut, qulonglong timestamp,
                   const QVariantMap& options);
  void sessionClosed(const QDBusMessage& message);

 private:
  struct Claim {
    HotKeyRef ref{0};
    HotKeyID id;
    QString shortcut;  // names it to the portal, the same for the same combination
    QString trigger;
    HotKeyState state{HotKeyState::Pending};
    QString session;  // empty before there is one
    std::unique_ptr<PortalRequest> request;
  };

  void attach(QDBusConnection& connection);
  [[nodiscard]] Claim* find(HotKeyRef ref) const;
  [[nodiscard]] Claim* findSession(const QString& session) const;
  void createSession(Claim& claim);
  void bindShortcut(Claim& claim);
  void finish(Claim& claim, HotKeyState state, const QString& reason);
  void fail(Claim& claim, PortalRequest::Outcome outcome, const QString& reason);
  void closeSession(const QString& session);
  void portalGone();
  void portalCame();
  void send(const QDBusObjectPath& session, const QString& shortcut, quint32 kind);

  const QString m_description;
  const QString m_applicationIdentifier;
  const KeysymName m_keysymName;
  std::vector<std::unique_ptr<Claim>> m_claims;
  HotKeyRef m_lastRef{0};
  Handler m_handler;
  StateObserver m_observer;
  std::unique_ptr<QDBusServiceWatcher> m_watcher;
  // Connected when the first combination is claimed.
  std::unique_ptr<SessionBus> m_bus;
};

}  // namespace quillo
