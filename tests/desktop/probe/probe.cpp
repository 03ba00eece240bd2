// A program of platform services and nothing else, for the desktop tests: it does what its standard input says, a
// command a line, and prints what happens to it, an event a line.
#include "Lines.h"
#include "foundation/Log.h"
#include "platform/linux/PortalHotKeys.h"
#include "platform/linux/SessionBusApplications.h"
#include "platform/linux/SessionBusNotifications.h"
#include "platform/linux/XdgWorkspace.h"
#include "platform/linux/XkbKeyboardLayouts.h"
#include "platform/linux/desktop/TrayStatusItem.h"
#include "platform/linux/desktop/X11HotKeys.h"

#include <QApplication>

#include <functional>
#include <map>
#include <memory>
#include <string_view>

using namespace Qt::StringLiterals;
using namespace quillo;

namespace {

QString yesOrNo(bool value) {
  return value ? u"yes"_s : u"no"_s;
}

// The part with an icon. Only made when asked for, as it needs an X server.
class Tray {
 public:
  Tray() {
    m_item.onPrimaryClick([] { say(u"click"_s); });
    m_item.onGeometryChanged([this] { sayGeometry(u"moved"_s); });
    m_item.setLength(22);
    m_item.setImage(u"probe"_s, true);
  }

  void sayGeometry(const QString& word) {
    const auto rect = m_item.geometry();
    if (!rect) return say(word + u" nowhere"_s);
    say(word + u" %1 %2 %3 %4"_s.arg(rect->x()).arg(rect->y()).arg(rect->width()).arg(rect->height()));
  }

 private:
  TrayStatusItem m_item;
};

// Hot keys, of the kind that is asked for.
class Keys {
 public:
  explicit Keys(const QString& kind) {
    if (kind == u"portal")
      m_hotKeys = std::make_unique<PortalHotKeys>(u"Probe it"_s, u"probe"_s,
                                                  [this](quint16 key) { return m_layouts.keysymName(key); });
    else
      m_hotKeys = std::make_unique<X11HotKeys>();
    m_hotKeys->installEventHandler([](const HotKeyEvent& event) {
      const auto number = std::get<HotKeyID>(event.directObject).number;
      if (event.kind != HotKeyEvent::pressed)
        say(u"released %1"_s.arg(number));
      else  // and what a program that is started now would be handed on
        say(u"pressed %1 %2"_s.arg(number).arg(qEnvironmentVariable("XDG_ACTIVATION_TOKEN")).trimmed());
      return HotKeyStatus::done;
    });
    m_hotKeys->observeStates([](HotKeyRef ref, HotKeyState state, const QString& reason) {
      say(u"state %1 %2 %3"_s.arg(ref).arg(nameOf(state), reason).trimmed());
    });
  }

  // "KEYCODE MODIFIERS NUMBER"
  void claim(const QString& words) {
    const QStringList numbers = words.split(u' ');
    HotKeyRef ref = 0;
    const OSStatus status =
        m_hotKeys->registerHotKey(numbers[0].toUInt(), numbers[1].toUInt(), {0, numbers[2].toUInt()}, &ref);
    say(u"claimed %1 %2 %3"_s.arg(status).arg(ref).arg(nameOf(m_hotKeys->state(ref))));
  }
  void unclaim(const QString& ref) { say(u"unclaimed %1"_s.arg(m_hotKeys->unregisterHotKey(ref.toULongLong()))); }

 private:
  static QString nameOf(HotKeyState state) {
    static const std::map<HotKeyState, QString> names{{HotKeyState::Pending, u"pending"_s},
                                                      {HotKeyState::Active, u"active"_s},
                                                      {HotKeyState::Refused, u"refused"_s},
                                                      {HotKeyState::Unsupported, u"unsupported"_s}};
    return names.at(state);
  }

  XkbKeyboardLayouts m_layouts;
  std::unique_ptr<HotKeys> m_hotKeys;
};

class Probe {
 public:
  Probe() {
    m_notifications.setReceiver([](const QString& name) { say(u"received "_s + name); });
    m_commands = {
        {u"tray"_s, [this](const QString&) { m_tray = std::make_unique<Tray>(); }},
        {u"geometry"_s, [this](const QString&) { m_tray->sayGeometry(u"geometry"_s); }},
        {u"post"_s, [this](const QString& name) { say(u"posted "_s + yesOrNo(m_notifications.post(name))); }},
        {u"register"_s, [this](const QString& bundle) { registerSelf(bundle); }},
        {u"running"_s, [this](const QString& bundle) { sayRunning(bundle); }},
        {u"terminate"_s, [this](const QString& bundle) { terminate(bundle); }},
        {u"open"_s, [](const QString& url) { say(u"opened "_s + yesOrNo(XdgWorkspace().openURL(QUrl(url)))); }},
        {u"launch"_s, [](const QString& b) { say(u"launched "_s + yesOrNo(XdgWorkspace().launchApplication(b))); }},
        {u"keys"_s, [this](const QString& kind) { m_keys = std::make_unique<Keys>(kind); }},
        {u"claim"_s, [this](const QString& words) { m_keys->claim(words); }},
        {u"unclaim"_s, [this](const QString& ref) { m_keys->unclaim(ref); }},
        {u"quit"_s, [](const QString&) { QCoreApplication::quit(); }},
    };
  }

  void run(const QString& line) {
    const auto space = line.indexOf(u' ');
    const QString word = space < 0 ? line : line.left(space);
    const auto command = m_commands.find(word);
    if (command == m_commands.end()) return say(u"unknown "_s + word);
    command->second(space < 0 ? QString() : line.mid(space + 1));
  }

  bool postAndLeave(const QString& name) { return m_notifications.post(name); }

 private:
  void registerSelf(const QString& bundle) {
    const bool registered = m_applications.registerSelf(bundle, [] {
      say(u"terminate"_s);
      QCoreApplication::quit();
    });
    say(u"registered "_s + yesOrNo(registered));
  }

  void sayRunning(const QString& bundle) {
    QStringList identifiers;
    for (const auto& application : m_applications.running(bundle))
      identifiers << QString::number(application.processIdentifier);
    say(u"running "_s + identifiers.join(u' '));
  }

  void terminate(const QString& bundle) {
    int sent = 0;
    for (const auto& application : m_applications.running(bundle))
      if (application.processIdentifier != m_applications.currentProcessIdentifier())
        sent += m_applications.terminate(application);
    say(u"terminated %1"_s.arg(sent));
  }

  std::map<QString, std::function<void(const QString&)>> m_commands;
  SessionBusNotifications m_notifications;
  SessionBusApplications m_applications;
  std::unique_ptr<Tray> m_tray;
  std::unique_ptr<Keys> m_keys;
};

int serve() {
  Probe probe;
  return serveLines([&](const QString& line) { probe.run(line); });
}

}  // namespace

int main(int argc, char** argv) {
  setLogSink([](const LogMessage& message) { say(u"log "_s + message.text); });
  const std::string_view mode = argc > 1 ? argv[1] : "";
  if (mode == "--post") {
    QCoreApplication application(argc, argv);
    return Probe().postAndLeave(QCoreApplication::arguments().value(2)) ? 0 : 1;
  }
  if (mode == "--no-window") {
    QCoreApplication application(argc, argv);
    return serve();
  }
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  return serve();
}
