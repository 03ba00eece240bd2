// geoclue_double BUS-ADDRESS finds|off|refuses|mute|stalls: owns the location service's name on that bus, prints
// "ready", and prints what clients ask of it. "finds" gives a fix of 1200 metres at every start and then one of 40
// metres; "stalls" answers nothing once a client has introduced itself.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTimer>

#include <iostream>

using namespace Qt::StringLiterals;

namespace {

const QString clientPath = u"/org/freedesktop/GeoClue2/Client/1"_s;

QString locationPath(int number) {
  return u"/org/freedesktop/GeoClue2/Client/1/Location/%1"_s.arg(number);
}

class LocationService final : public QDBusVirtualObject {
 public:
  explicit LocationService(QString mode) : m_mode(std::move(mode)) {}

  [[nodiscard]] QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (m_mode == u"mute" || (m_mode == u"stalls" && message.member() != u"GetClient")) return true;
    QDBusMessage reply = message.createReply();
    if (message.member() == u"Get") {
      reply << QVariant::fromValue(QDBusVariant(m_mode == u"off" ? 0U : 8U));
    } else if (message.member() == u"GetAll") {
      reply << location(message.path());
    } else if (message.member() == u"Set") {
      const QVariant value = message.arguments().value(2).value<QDBusVariant>().variant();
      std::cout << message.arguments().value(1).toString().toStdString() << '=' << value.toString().toStdString()
                << std::endl;
    } else if (message.member() == u"GetClient") {
      reply << QDBusObjectPath(clientPath);
    } else if (message.member() == u"Start" && m_mode == u"refuses") {
      reply = message.createErrorReply(u"org.freedesktop.DBus.Error.AccessDenied"_s, u"not for you"_s);
    } else if (message.member() == u"Start") {
      announce(connection, 1);
      QTimer::singleShot(100, this, [this, connection] { announce(connection, 2); });
    }
    if (message.member() == u"Start" || message.member() == u"Stop")
      std::cout << message.member().toStdString() << std::endl;
    connection.send(reply);
    return true;
  }

 private:
  static QVariantMap location(const QString& path) {
    const bool isRough = path == locationPath(1);
    return {{u"Latitude"_s, isRough ? 52.53 : 52.5219},
            {u"Longitude"_s, isRough ? 13.42 : 13.4132},
            {u"Accuracy"_s, isRough ? 1200.0 : 40.0},
            {u"Altitude"_s, -1.7976931348623157e308},
            {u"Description"_s, QString()}};
  }
  static void announce(QDBusConnection connection, int number) {
    QDBusMessage signal =
        QDBusMessage::createSignal(clientPath, u"org.freedesktop.GeoClue2.Client"_s, u"LocationUpdated"_s);
    signal << QDBusObjectPath(number == 1 ? u"/"_s : locationPath(number - 1)) << QDBusObjectPath(locationPath(number));
    connection.send(signal);
  }

  QString m_mode;
};

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  if (argc != 3) return 2;
  QDBusConnection bus = QDBusConnection::connectToBus(QString::fromLocal8Bit(argv[1]), u"location service"_s);
  LocationService service(QString::fromLocal8Bit(argv[2]));
  if (!bus.registerVirtualObject(u"/org/freedesktop/GeoClue2"_s, &service, QDBusConnection::SubPath) ||
      !bus.registerService(u"org.freedesktop.GeoClue2"_s))
    return 1;
  std::cout << "ready" << std::endl;
  return QCoreApplication::exec();
}
