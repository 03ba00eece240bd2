#pragma once

#include "platform/linux/SessionBus.h"

#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>

namespace quillo {

// One process a program: the first one owns the program's name on the session bus, a later one hands its words over to
// it and ends. Desktops may call the same interface (org.freedesktop.Application) in place of starting the program.
// Without a bus every process is by itself. Needs a QCoreApplication.
class SingleInstance final : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  enum class Role {
    First,       // this process answers from now on
    HandedOver,  // the running one has the words
    Refused,     // there is one, and it does not answer
  };
  // What the words of another start are, or none where the window is only to come in front. `activationToken` lets it
  // come in front where a compositor asks for one; it may be empty.
  using Opened = std::function<void(const QStringList& urls, const QString& activationToken)>;

  // `name` as "com.example.program"; its object is "/com/example/program".
  explicit SingleInstance(QString name);

  // Takes the name, or hands the URLs over and waits for the answer, for three seconds at most. Of one that does not
  // answer the end is waited for, as long again.
  Role join(const QStringList& urls);
  // From the event loop, after the caller has its answer. What came before is handed over at once.
  void setOnOpen(Opened onOpen);

  // Called over the bus.
  Q_SCRIPTABLE Q_INVOKABLE void Activate(const QVariantMap& platformData);
  Q_SCRIPTABLE Q_INVOKABLE void Open(const QStringList& urls, const QVariantMap& platformData);
  Q_SCRIPTABLE Q_INVOKABLE void ActivateAction(const QString& action, const QVariantList& parameters,
                                               const QVariantMap& platformData);

 private:
  bool claim(QDBusConnection& connection);
  [[nodiscard]] bool handOver(QDBusConnection& connection, const QStringList& urls) const;
  void receive(const QStringList& urls, const QVariantMap& platformData);

  struct Request {
    QStringList urls;
    QString activationToken;
  };

  QString m_name;
  QString m_path;
  Opened m_onOpen;
  QList<Request> m_waiting;
  bool m_isFirst{false};
  SessionBus m_bus;
};

}  // namespace quillo
