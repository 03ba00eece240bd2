#include "platform/linux/PortalRequest.h"

#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// The portal makes the object of the answer under this name, so that it can be listened to before the call is sent.
QString freshToken() {
  static quint64 count = 0;
  return u"quillo%1"_s.arg(++count);
}

bool meansAbsence(QDBusError::ErrorType error) {
  switch (error) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownObject:
    case QDBusError::NotSupported:
    case QDBusError::Disconnected:
      return true;
    default:
      return false;
  }
}

}  // namespace

PortalRequest::PortalRequest(const QDBusConnection& connection, QDBusMessage call, QVariantMap options, Answer answer,
                             QObject* parent)
    : QObject(parent), m_connection(connection), m_answer(std::move(answer)) {
  const QString token = freshToken();
  const QString sender = m_connection.baseService().mid(1).replace(u'.', u'_');
  listenAt(Portal::path + u"/request/%1/%2"_s.arg(sender, token));
  options[u"handle_token"_s] = token;
  call << options;
  auto* watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    watcher->deleteLater();
    const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
    if (reply.isError())
      finish(meansAbsence(reply.error().type()) ? Outcome::Unsupported : Outcome::Refused, {}, reply.error().message());
    else if (reply.value().path() != m_path)
      // An old portal, which chooses the name itself.
      listenAt(reply.value().path());
  });
}

bool PortalRequest::listenAt(const QString& path) {
  m_path = path;
  return m_connection.connect(Portal::service, path, u"org.freedesktop.portal.Request"_s, u"Response"_s, this,
                              SLOT(respond(uint, QVariantMap)));
}

void PortalRequest::respond(uint response, const QVariantMap& results) {
  switch (response) {
    case 0:
      return finish(Outcome::Done, results, {});
    case 1:
      return finish(Outcome::Refused, results, u"it was declined"_s);
    default:
      return finish(Outcome::Refused, results, u"the desktop did not grant it"_s);
  }
}

void PortalRequest::finish(Outcome outcome, const QVariantMap& results, const QString& reason) {
  // The answer may destroy this object.
  if (const Answer answer = std::exchange(m_answer, nullptr)) answer(outcome, results, reason);
}

}  // namespace quillo
