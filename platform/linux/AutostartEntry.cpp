#include "platform/linux/AutostartEntry.h"

#include <QMap>
#include <QStandardPaths>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString onDemandKey = u"X-Quillo-OnDemand"_s;
const QString orderKey = u"X-Quillo-Order"_s;
const QString urlKey = u"X-Quillo-URL"_s;

// A place further from the middle than this was not written by us; the numbers next to it still fit.
constexpr qint64 furthestOrder = qint64{1} << 40;

// The escapes of every string value. A space needs one at the start only, where it would be taken for layout.
QString escaped(const QString& value) {
  QString out;
  out.reserve(value.size());
  for (const QChar c : value) {
    if (c == u'\\')
      out += u"\\\\"_s;
    else if (c == u'\n')
      out += u"\\n"_s;
    else if (c == u'\r')
      out += u"\\r"_s;
    else if (c == u'\t')
      out += u"\\t"_s;
    else if (c == u' ' && out.isEmpty())
      out += u"\\s"_s;
    else
      out += c;
  }
  return out;
}

QString unescaped(const QString& value) {
  QString out;
  out.reserve(value.size());
  for (qsizetype i = 0; i < value.size(); ++i) {
    if (value[i] != u'\\' || i + 1 == value.size()) {
      out += value[i];
      continue;
    }
    switch (const QChar c = value[++i]; c.unicode()) {
      case u's':
        out += u' ';
        break;
      case u'n':
        out += u'\n';
        break;
      case u'r':
        out += u'\r';
        break;
      case u't':
        out += u'\t';
        break;
      case u'\\':
        out += u'\\';
        break;
      default:
        out += u'\\';
        out += c;
    }
  }
  return out;
}

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

// The first argument of an Exec line, quoted or not; nothing when a quote is left open.
std::optional<QString> firstArgument(const QString& line) {
  QString out;
  const bool isQuoted = line.startsWith(u'"');
  for (qsizetype i = isQuoted ? 1 : 0; i < line.size(); ++i) {
    QChar c = line[i];
    if (isQuoted ? c == u'"' : c.isSpace()) return out;
    const bool escapes = (isQuoted && c == u'\\') || (c == u'%' && line.mid(i + 1, 1) == u"%"_s);
    if (escapes && i + 1 < line.size()) c = line[++i];
    out += c;
  }
  return isQuoted ? std::nullopt : std::optional(out);
}

// The keys of the first group, when that is the one; the first of two equal keys counts.
std::optional<QMap<QString, QString>> desktopEntryGroup(const QString& text) {
  std::optional<QMap<QString, QString>> keys;
  for (const QString& line : text.split(u'\n')) {
    const QString trimmed = line.trimmed();
    if (trimmed.isEmpty() || trimmed.startsWith(u'#')) continue;
    if (trimmed.startsWith(u'[')) {
      if (keys || trimmed != u"[Desktop Entry]"_s) return keys;
      keys.emplace();
      continue;
    }
    const qsizetype equals = trimmed.indexOf(u'=');
    if (!keys || equals <= 0) return std::nullopt;
    const QString key = trimmed.left(equals).trimmed();
    if (!keys->contains(key)) keys->insert(key, unescaped(trimmed.mid(equals + 1).trimmed()));
  }
  return keys;
}

}  // namespace

std::optional<AutostartEntry> AutostartEntry::fromBytes(const QByteArray& bytes) {
  const auto keys = desktopEntryGroup(QString::fromUtf8(bytes));
  if (!keys || keys->value(u"Type"_s) != u"Application"_s) return std::nullopt;
  const auto program = firstArgument(keys->value(u"Exec"_s));
  if (!program || program->isEmpty()) return std::nullopt;

  AutostartEntry entry;
  entry.name = keys->value(u"Name"_s);
  entry.program = *program;
  entry.tryProgram = keys->value(u"TryExec"_s);
  entry.isHidden = keys->value(u"Hidden"_s) == u"true"_s || keys->value(u"X-GNOME-Autostart-enabled"_s) == u"false"_s;
  entry.onDemand = keys->value(onDemandKey) == u"true"_s;
  if (const QUrl url(keys->value(urlKey), QUrl::StrictMode); url.isValid() && !url.isEmpty()) entry.url = url;
  const qint64 order = keys->value(orderKey).toLongLong();
  entry.order = order > -furthestOrder && order < furthestOrder ? order : 0;
  return entry;
}

QByteArray AutostartEntry::toBytes() const {
  QString command = quoted(program);
  for (const QString& argument : arguments) command += u' ' + quoted(argument);
  QString text = u"[Desktop Entry]\nType=Application\n"_s;
  const auto add = [&text](const QString& key, const QString& value) { text += key + u'=' + escaped(value) + u'\n'; };
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
