#include "platform/linux/SystemdTimers.h"

#include "foundation/FileContents.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int mostMilliseconds = 5000;
constexpr QLatin1StringView service{"org.freedesktop.systemd1"};
constexpr QLatin1StringView wantedBy{"timers.target.wants"};

// A word of ExecStart=, in which these keep a meaning within the quotes.
QString quoted(const QString& word) {
  QString out(u'"');
  for (const QChar c : word) {
    if (c == u'"' || c == u'\\') out += u'\\';
    if (c == u'%' || c == u'$') out += c;
    out += c;
  }
  return out + u'"';
}

// A word for the shell.
QString quotedForShell(QString word) {
  return u'\'' + word.replace(u'\'', u"'\\''"_s) + u'\'';
}

QString whenOf(ScheduledCommand::Every every) {
  switch (every) {
    case ScheduledCommand::Every::Hour:
      return u"*-*-* *:00:00"_s;
    case ScheduledCommand::Every::Week:
      return u"Sun *-*-* 20:00:00"_s;
    case ScheduledCommand::Every::Month:
      return u"*-*-01 20:00:00"_s;
    default:
      return u"*-*-* 20:00:00"_s;
  }
}

QString serviceUnit(const ScheduledCommand& command) {
  QString start = quoted(command.program);
  for (const QString& argument : command.arguments) start += u' ' + quoted(argument);
  QString program = command.program;
  // Without the condition a program that was removed would fail again and again.
  return u"[Unit]\nDescription=%1\nConditionFileIsExecutable=%2\n\n"
         "[Service]\nType=oneshot\nExecStart=%3\nNice=10\nIOSchedulingClass=idle\n"_s.arg(
             command.description, program.replace(u'%', u"%%"_s), start);
}

// A timer that was missed, because the machine was off, is made up for.
QString timerUnit(const ScheduledCommand& command) {
  return u"[Unit]\nDescription=%1\n\n[Timer]\nOnCalendar=%2\nPersistent=true\nAccuracySec=10min\n\n"
         "[Install]\nWantedBy=timers.target\n"_s.arg(command.description, whenOf(command.every));
}

bool hasControls(const ScheduledCommand& command) {
  const auto isControl = [](QChar c) { return c.category() == QChar::Other_Control; };
  return std::any_of(command.program.begin(), command.program.end(), isControl) ||
         std::any_of(command.arguments.begin(), command.arguments.end(),
                     [&](const QString& argument) { return std::any_of(argument.begin(), argument.end(), isControl); });
}

bool removeFile(const QString& path, QString* reason) {
  if (::unlink(QFile::encodeName(path).constData()) == 0 || errno == ENOENT || errno == ENOTDIR) return true;
  *reason = fileWriteError(errno, path).localizedDescription;
  return false;
}

}  // namespace

SystemdTimers::SystemdTimers(const QString& configurationFolder, bool isOfSession)
    : m_folder(configurationFolder + u"/systemd/user"_s), m_isOfSession(isOfSession) {}

QString SystemdTimers::linkOf(const QString& name) const {
  return u"%1/%2/%3.timer"_s.arg(m_folder, wantedBy, name);
}

QDBusMessage SystemdTimers::ask(const QString& method, const QVariantList& arguments) const {
  QDBusMessage call = QDBusMessage::createMethodCall(service, u"/org/freedesktop/systemd1"_s,
                                                     u"org.freedesktop.systemd1.Manager"_s, method);
  call.setArguments(arguments);
  return QDBusConnection::sessionBus().call(call, QDBus::Block, mostMilliseconds);
}

bool SystemdTimers::tell(const QString& method, const QVariantList& arguments, QString* reason) const {
  const QDBusMessage answer = ask(method, arguments);
  if (answer.type() == QDBusMessage::ReplyMessage) return true;
  *reason = u"this session has no systemd of the user's that answers (%1)"_s.arg(answer.errorMessage());
  return false;
}

CommandSchedule::Outcome SystemdTimers::enable(const ScheduledCommand& command, QString* reason) {
  if (hasControls(command)) {
    *reason = u"the program's path has characters that no unit can hold"_s;
    return Outcome::Failed;
  }
  const QString base = m_folder + u'/' + command.name;
  Error error;
  QDir().mkpath(m_folder + u'/' + wantedBy);
  if (!writeFileAtomically(base + u".service"_s, serviceUnit(command).toUtf8(), &error) ||
      !writeFileAtomically(base + u".timer"_s, timerUnit(command).toUtf8(), &error)) {
    *reason = error.localizedDescription;
    return Outcome::Failed;
  }
  const QByteArray link = QFile::encodeName(linkOf(command.name));
  if (::symlink(QFile::encodeName(u"../"_s + command.name + u".timer"_s).constData(), link.constData()) != 0 &&
      errno != EEXIST) {
    *reason = fileWriteError(errno, linkOf(command.name)).localizedDescription;
    return Outcome::Failed;
  }
  if (!m_isOfSession) {
    *reason = u"this home is not the session's, so nothing starts it"_s;
    return Outcome::Written;
  }
  const bool isTold =
      tell(u"Reload"_s, {}, reason) && tell(u"RestartUnit"_s, {command.name + u".timer"_s, u"replace"_s}, reason);
  return isTold ? Outcome::Active : Outcome::Written;
}

bool SystemdTimers::disable(const QString& name, QString* reason) {
  const bool wasThere = QFileInfo::exists(m_folder + u'/' + name + u".timer"_s);
  if (!removeFile(linkOf(name), reason) || !removeFile(m_folder + u'/' + name + u".timer"_s, reason) ||
      !removeFile(m_folder + u'/' + name + u".service"_s, reason))
    return false;
  // Without a manager nothing runs it, which is what is wanted.
  if (wasThere && m_isOfSession) {
    QString unheard;
    tell(u"StopUnit"_s, {name + u".timer"_s, u"replace"_s}, &unheard);
    tell(u"Reload"_s, {}, &unheard);
  }
  return true;
}

bool SystemdTimers::isEnabled(const QString& name) const {
  return QFileInfo::exists(linkOf(name));
}

std::optional<QDateTime> SystemdTimers::next(const QString& name) const {
  if (!m_isOfSession || !isEnabled(name)) return std::nullopt;
  const QDBusMessage unit = ask(u"GetUnit"_s, {name + u".timer"_s});
  const QString path = unit.arguments().value(0).value<QDBusObjectPath>().path();
  if (unit.type() != QDBusMessage::ReplyMessage || path.isEmpty()) return std::nullopt;
  QDBusMessage call = QDBusMessage::createMethodCall(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
  call.setArguments({u"org.freedesktop.systemd1.Timer"_s, u"NextElapseUSecRealtime"_s});
  const QDBusMessage answer = QDBusConnection::sessionBus().call(call, QDBus::Block, mostMilliseconds);
  const quint64 microseconds = answer.arguments().value(0).value<QDBusVariant>().variant().toULongLong();
  // A timer that never elapses again has the largest number, or none.
  constexpr quint64 latest = quint64{1} << 56;
  if (microseconds == 0 || microseconds > latest) return std::nullopt;
  return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(microseconds / 1000));
}

QString SystemdTimers::crontabLine(const ScheduledCommand& command) const {
  QString when = u"0 20 * * *"_s;
  if (command.every == ScheduledCommand::Every::Hour) when = u"0 * * * *"_s;
  if (command.every == ScheduledCommand::Every::Week) when = u"0 20 * * 0"_s;
  if (command.every == ScheduledCommand::Every::Month) when = u"0 20 1 * *"_s;
  QString words = quotedForShell(command.program);
  for (const QString& argument : command.arguments) words += u' ' + quotedForShell(argument);
  // A percent sign is a line break there.
  return when + u' ' + words.replace(u'%', u"\\%"_s);
}

}  // namespace quillo
