#include "qlcore/services/GeoClueSource.h"
#include "qlcore/services/PositionProvider.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QVariant>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView service{"org.freedesktop.GeoClue2"};
constexpr int patienceMilliseconds = 50;

// The first value of the answer; nothing when none came in time.
QVariant ask(QDBusMessage question) {
  // The question itself must not start a service.
  question.setAutoStartService(false);
  const QDBusMessage answer = QDBusConnection::systemBus().call(question, QDBus::Block, patienceMilliseconds);
  return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0) : QVariant();
}

QDBusMessage questionToBus(const QString& method) {
  return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                        u"org.freedesktop.DBus"_s, method);
}

bool isRunning() {
  QDBusMessage question = questionToBus(u"NameHasOwner"_s);
  question << QString(service);
  return ask(question).toBool();
}

bool isStartable() {
  return ask(questionToBus(u"ListActivatableNames"_s)).toStringList().contains(service);
}

// The service offers accuracy 0 when the user has switched it off or it has nothing to find a position by. One that
// does not answer is taken to be on: the search will tell.
bool isSwitchedOff() {
  QDBusMessage question = QDBusMessage::createMethodCall(service, u"/org/freedesktop/GeoClue2/Manager"_s,
                                                         u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
  question << u"org.freedesktop.GeoClue2.Manager"_s << u"AvailableAccuracyLevel"_s;
  const QVariant level = ask(question).value<QDBusVariant>().variant();
  return level.isValid() && level.toUInt() == 0;
}

}  // namespace

bool GeoCluePositionProvider::isEnabled() const {
  if (!QDBusConnection::systemBus().isConnected()) return false;
  return isRunning() ? !isSwitchedOff() : isStartable();
}

std::unique_ptr<QGeoPositionInfoSource> GeoCluePositionProvider::makeSource() const {
  return std::make_unique<GeoClueSource>();
}

}  // namespace quillo
