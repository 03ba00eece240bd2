// A tray of the kind that draws icons itself: it only keeps the list of items on the session bus, and prints each one.
// The tests do with an item over the bus what such a tray would do.
#include "Lines.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QStringList>

using namespace Qt::StringLiterals;

class TrayHost : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
  Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost CONSTANT)
  Q_PROPERTY(int ProtocolVersion READ version CONSTANT)
  Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)

 public:
  [[nodiscard]] bool hasHost() const { return true; }
  [[nodiscard]] int version() const { return 0; }
  [[nodiscard]] QStringList items() const { return m_items; }

 public Q_SLOTS:
  void RegisterStatusNotifierItem(const QString&) {
    m_items << message().service();
    say(u"item "_s + message().service());
  }
  void RegisterStatusNotifierHost(const QString&) {}

 private:
  QStringList m_items;
};

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  TrayHost host;
  auto bus = QDBusConnection::sessionBus();
  if (!bus.registerObject(u"/StatusNotifierWatcher"_s, &host,
                          QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties) ||
      !bus.registerService(u"org.kde.StatusNotifierWatcher"_s))
    return 1;
  return serveLines([](const QString&) {});
}

#include "tray_host.moc"
