#include "qlcore/services/GeoClueSource.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QDateTime>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.GeoClue2"_s;
const QString managerInterface = u"org.freedesktop.GeoClue2.Manager"_s;
const QString clientInterface = u"org.freedesktop.GeoClue2.Client"_s;
const QString locationInterface = u"org.freedesktop.GeoClue2.Location"_s;
const QString propertiesInterface = u"org.freedesktop.DBus.Properties"_s;
// The desktop file of the program; the service looks up under this name whether it may have the position.
const QString desktopId = u"quillo-agent"_s;
// As exact as can be.
constexpr uint exactLevel = 8;

QDBusMessage call(const QString& path, const QString& interface, const QString& method) {
  return QDBusMessage::createMethodCall(service, path, interface, method);
}

// Sends `message`; calls `act` with the pending call once it is answered, unless `context` is gone by then.
template <typename Act>
void send(const QDBusMessage& message, QObject* context, Act act) {
  auto* const watcher = new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(message), context);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [act, watcher] {
    watcher->deleteLater();
    act(*watcher);
  });
}

}  // namespace

GeoClueSource::~GeoClueSource() {
  GeoClueSource::stopUpdates();
}

void GeoClueSource::startUpdates() {
  if (m_isRunning) return;
  m_isRunning = true;
  m_error = NoError;
  send(call(u"/org/freedesktop/GeoClue2/Manager"_s, managerInterface, u"GetClient"_s), this,
       [this](const QDBusPendingReply<QDBusObjectPath>& reply) {
         if (reply.isError()) return fail(reply.error().name());
         if (m_isRunning) startClient(reply.value().path());
       });
}

void GeoClueSource::startClient(const QString& path) {
  m_client = path;
  QDBusConnection::systemBus().connect(service, path, clientInterface, u"LocationUpdated"_s, this,
                                       SLOT(locationUpdated(QDBusObjectPath, QDBusObjectPath)));
  // The service handles them in this order.
  setProperty(u"DesktopId"_s, desktopId);
  setProperty(u"RequestedAccuracyLevel"_s, exactLevel);
  send(call(path, clientInterface, u"Start"_s), this, [this](const QDBusPendingReply<>& reply) {
    if (reply.isError()) fail(reply.error().name());
  });
}

void GeoClueSource::setProperty(const QString& name, const QVariant& value) {
  QDBusMessage message = call(m_client, propertiesInterface, u"Set"_s);
  message << clientInterface << name << QVariant::fromValue(QDBusVariant(value));
  QDBusConnection::systemBus().asyncCall(message);
}

void GeoClueSource::stopUpdates() {
  m_isRunning = false;
  if (m_client.isEmpty()) return;
  QDBusConnection bus = QDBusConnection::systemBus();
  bus.disconnect(service, m_client, clientInterface, u"LocationUpdated"_s, this,
                 SLOT(locationUpdated(QDBusObjectPath, QDBusObjectPath)));
  bus.asyncCall(call(m_client, clientInterface, u"Stop"_s));
  m_client.clear();
}

void GeoClueSource::requestUpdate(int) {
  startUpdates();
}

QGeoPositionInfo GeoClueSource::lastKnownPosition(bool) const {
  return m_last;
}

void GeoClueSource::locationUpdated(const QDBusObjectPath&, const QDBusObjectPath& newPath) {
  QDBusMessage question = call(newPath.path(), propertiesInterface, u"GetAll"_s);
  question << locationInterface;
  // A location that is gone again is followed by another.
  send(question, this, [this](const QDBusPendingReply<QVariantMap>& reply) {
    if (m_isRunning && !reply.isError()) readLocation(reply.value());
  });
}

void GeoClueSource::readLocation(const QVariantMap& properties) {
  const QGeoCoordinate coordinate(properties.value(u"Latitude"_s, qQNaN()).toDouble(),
                                  properties.value(u"Longitude"_s, qQNaN()).toDouble());
  if (!coordinate.isValid()) return;
  m_last = QGeoPositionInfo(coordinate, QDateTime::currentDateTimeUtc());
  const QVariant accuracy = properties.value(u"Accuracy"_s);
  if (accuracy.isValid()) m_last.setAttribute(QGeoPositionInfo::HorizontalAccuracy, accuracy.toDouble());
  Q_EMIT positionUpdated(m_last);
}

void GeoClueSource::fail(const QString& errorName) {
  if (!m_isRunning) return;
  m_error = errorName == u"org.freedesktop.DBus.Error.AccessDenied" ? AccessError : ClosedError;
  Q_EMIT errorOccurred(m_error);
}

}  // namespace quillo
