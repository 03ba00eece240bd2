// A desktop portal that only has global shortcuts, on the session bus: it checks what it is asked, and answers as its
// standard input says.
//   answer accept|nothing|cancel|other|silent   what later questions for a shortcut get (accept)
//   yes                                         answers a question that was met with silence
//   press | release | close                     of the shortcut bound last, or its session
#include "Lines.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>

using namespace Qt::StringLiterals;

namespace {

const QString root = u"/org/freedesktop/portal/desktop"_s;
const QString shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;

QString senderPart(const QDBusMessage& message) {
  return message.service().mid(1).replace(u'.', u'_');
}

struct Shortcut {
  QString name;
  QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Shortcut& shortcut) {
  argument.beginStructure();
  argument << shortcut.name << shortcut.properties;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Shortcut& shortcut) {
  argument.beginStructure();
  argument >> shortcut.name >> shortcut.properties;
  argument.endStructure();
  return argument;
}

}  // namespace

class Portal : public QDBusVirtualObject {
  Q_OBJECT

 public:
  explicit Portal(const QDBusConnection& bus) : m_bus(bus) {}

  [[nodiscard]] QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    const QString method = message.interface() + u'.' + message.member();
    if (method == u"org.freedesktop.portal.GlobalShortcuts.CreateSession" && message.signature() == u"a{sv}")
      return createSession(message, bus);
    if (method == u"org.freedesktop.portal.GlobalShortcuts.BindShortcuts" &&
        message.signature() == u"oa(sa{sv})sa{sv}" && m_sessions.contains(sessionIn(message)))
      return bindShortcuts(message, bus);
    if (method == u"org.freedesktop.portal.Session.Close" && m_sessions.removeOne(message.path())) {
      say(u"closed "_s + message.path());
      return bus.send(message.createReply());
    }
    if (method == u"org.freedesktop.host.portal.Registry.Register" && message.signature() == u"sa{sv}") {
      say(u"application "_s + message.arguments()[0].toString());
      return bus.send(message.createReply());
    }
    say(u"unknown %1 %2 %3"_s.arg(message.path(), method, message.signature()));
    return false;
  }

  void run(const QString& line) {
    if (line.startsWith(u"answer ")) m_answer = line.mid(7);
    if (line == u"yes") answer(m_unanswered, u"accept"_s);
    if (line == u"press" || line == u"release") {
      auto signal =
          QDBusMessage::createSignal(root, shortcutsInterface, line == u"press" ? u"Activated"_s : u"Deactivated"_s);
      signal << QVariant::fromValue(QDBusObjectPath(m_session)) << m_shortcut.name << qulonglong{1000}
             << QVariantMap{{u"activation_token"_s, u"token-1"_s}};
      m_bus.send(signal);
    }
    if (line == u"close") {
      m_sessions.removeOne(m_session);
      m_bus.send(QDBusMessage::createSignal(m_session, u"org.freedesktop.portal.Session"_s, u"Closed"_s));
    }
    say(u"ok"_s);
  }

 private:
  static QString sessionIn(const QDBusMessage& message) {
    return message.arguments()[0].value<QDBusObjectPath>().path();
  }

  // The object that will answer, as the caller has named it. Replies with it.
  QString requestFor(const QDBusMessage& message, const QVariant& options, const QDBusConnection& bus) {
    const QString token = qdbus_cast<QVariantMap>(options).value(u"handle_token"_s).toString();
    const QString path = root + u"/request/%1/%2"_s.arg(senderPart(message), token);
    bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(path))));
    return path;
  }

  void respond(const QString& request, const QString& destination, uint code, const QVariantMap& results) {
    auto signal =
        QDBusMessage::createTargetedSignal(destination, request, u"org.freedesktop.portal.Request"_s, u"Response"_s);
    signal << code << results;
    m_bus.send(signal);
  }

  bool createSession(const QDBusMessage& message, const QDBusConnection& bus) {
    const QVariant options = message.arguments()[0];
    const QString token = qdbus_cast<QVariantMap>(options).value(u"session_handle_token"_s).toString();
    const QString session = root + u"/session/%1/%2"_s.arg(senderPart(message), token);
    m_sessions << session;
    say(u"session "_s + session);
    const QString request = requestFor(message, options, bus);
    respond(request, message.service(), 0, {{u"session_handle"_s, session}});
    return true;
  }

  bool bindShortcuts(const QDBusMessage& message, const QDBusConnection& bus) {
    m_session = sessionIn(message);
    for (const auto& shortcut : qdbus_cast<QList<Shortcut>>(message.arguments()[1])) m_shortcut = shortcut;
    say(u"bind %1 | %2 | %3"_s.arg(m_shortcut.name, m_shortcut.properties[u"preferred_trigger"_s].toString(),
                                   m_shortcut.properties[u"description"_s].toString()));
    m_unanswered = {requestFor(message, message.arguments()[3], bus), message.service()};
    answer(m_unanswered, m_answer);
    return true;
  }

  struct Question {
    QString request, asker;
  };

  void answer(const Question& question, const QString& how) {
    if (how == u"silent") return;
    if (how == u"cancel") return respond(question.request, question.asker, 1, {});
    if (how == u"other") return respond(question.request, question.asker, 2, {});
    QList<Shortcut> granted;
    if (how == u"accept") granted << Shortcut{m_shortcut.name, {{u"description"_s, u"As the user knows it"_s}}};
    respond(question.request, question.asker, 0, {{u"shortcuts"_s, QVariant::fromValue(granted)}});
  }

  QDBusConnection m_bus;
  QString m_answer{u"accept"_s};
  QStringList m_sessions;
  QString m_session;
  Shortcut m_shortcut;
  Question m_unanswered;
};

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  qDBusRegisterMetaType<Shortcut>();
  qDBusRegisterMetaType<QList<Shortcut>>();
  auto bus = QDBusConnection::sessionBus();
  Portal portal(bus);
  if (!bus.registerVirtualObject(root, &portal, QDBusConnection::SubPath) ||
      !bus.registerService(u"org.freedesktop.portal.Desktop"_s))
    return 1;
  return serveLines([&](const QString& line) { portal.run(line); });
}

#include "portal.moc"
