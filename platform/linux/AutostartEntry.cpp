#include "platform/linux/AutostartEntry.h"

#include "platform/linux/DesktopEntry.h"
#include "platform/linux/DesktopFileGroup.h"

#include <QStandardPaths>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString onDemandKey = u"X-Quillo-OnDemand"_s;
const QString orderKey = u"X-Quillo-Order"_s;
const QString urlKey = u"X-Quillo-URL"_s;

// A place further from the middle than this was not written by us; the numbers next to it still fit.
constexpr qint64 furthestOrder = qint64{1} << 40;

// One argument of an Exec line, always quoted: "%" begins a field code there, and four characters keep a meaning
// within the quotes.
QString quoted(const QString& argument) {
  QString out(u'"');
  for (const QChar c : argument) {
    if (c == u'"' || c == u'`' || c == u'$' || c == u'\\') out += u'\\';
    if (c == u'%') out += u'%';
    out += c;
  }
  return out + u'"';
}

}  // namespace

std::optional<AutostartEntry> AutostartEntry::fromBytes(const QByteArray& bytes) {
  const auto group = DesktopFileGroup::read(QString::fromUtf8(bytes), DesktopFileGroup::desktopEntry);
  if (!group || !group->isWellFormed) return std::nullopt;
  const auto launcher = DesktopEntry::fromGroup(*group, {});
  const QString program = launcher ? launcher->commandLine({}).value(0) : QString();
  if (program.isEmpty()) return std::nullopt;

  AutostartEntry entry;
  entry.name = launcher->name;
  entry.program = program;
  entry.tryProgram = launcher->tryExec;
  entry.isHidden = launcher->isHidden || group->values.value(u"X-GNOME-Autostart-enabled"_s) == u"false";
  entry.onDemand = group->isTrue(onDemandKey);
  if (const QUrl url(group->values.value(urlKey), QUrl::StrictMode); url.isValid() && !url.isEmpty()) entry.url = url;
  const qint64 order = group->values.value(orderKey).toLongLong();
  entry.order = order > -furthestOrder && order < furthestOrder ? order : 0;
  return entry;
}

QByteArray AutostartEntry::toBytes() const {
  QString command = quoted(program);
  for (const QString& argument : arguments) command += u' ' + quoted(argument);
  QString text = u"[Desktop Entry]\nType=Application\n"_s;
  const auto add = [&text](const QString& key, const QString& value) {
    text += key + u'=' + DesktopFileGroup::escaped(value) + u'\n';
  };
  add(u"Name"_s, name);
  if (!comment.isEmpty()) add(u"Comment"_s, comment);
  if (!icon.isEmpty()) add(u"Icon"_s, icon);
  if (!tryProgram.isEmpty()) add(u"TryExec"_s, tryProgram);
  add(u"Exec"_s, command);
  if (isHidden) add(u"Hidden"_s, u"true"_s);
  if (onDemand) add(onDemandKey, u"true"_s);
  if (url) {
    add(urlKey, url->toString(QUrl::FullyEncoded));
    add(orderKey, QString::number(order));
  }
  return text.toUtf8();
}

QString AutostartEntry::executable() const {
  if (!tryProgram.isEmpty() && QStandardPaths::findExecutable(tryProgram).isEmpty()) return {};
  return QStandardPaths::findExecutable(program);
}

}  // namespace quillo
