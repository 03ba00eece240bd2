#include "platform/linux/DesktopEntry.h"

#include <QFile>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestFile = 1024 * 1024;

// The escapes that every string value of the file may hold.
QString unescaped(QStringView value) {
  QString text;
  text.reserve(value.size());
  for (qsizetype i = 0; i < value.size(); ++i) {
    if (value[i] != u'\\' || i + 1 == value.size()) {
      text += value[i];
      continue;
    }
    const QChar code = value[++i];
    if (code == u's')
      text += u' ';
    else if (code == u'n')
      text += u'\n';
    else if (code == u't')
      text += u'\t';
    else if (code == u'r')
      text += u'\r';
    else if (code == u'\\')
      text += u'\\';
    else  // An escape of the command line ("\"") or a list ("\;"), for its own reader.
      text += QStringView(value).mid(i - 1, 2);
  }
  return text;
}

// Words of a command line: parted by blanks, with double quotes that keep blanks and in which a backslash keeps the
// next character. Nothing when a quote is left open.
std::optional<QStringList> words(const QString& exec) {
  QStringList found;
  QString word;
  bool inWord = false;
  bool quoted = false;
  for (qsizetype i = 0; i < exec.size(); ++i) {
    const QChar c = exec[i];
    if (quoted && c == u'\\' && i + 1 < exec.size()) {
      word += exec[++i];
    } else if (c == u'"') {
      quoted = !quoted;
      inWord = true;
    } else if (!quoted && (c == u' ' || c == u'\t' || c == u'\n')) {
      if (inWord) found << std::exchange(word, {});
      inWord = false;
    } else {
      word += c;
      inWord = true;
    }
  }
  if (quoted) return {};
  if (inWord) found << word;
  return found;
}

// `word` with its field codes replaced; unknown and outdated ones vanish.
QString expanded(const QString& word, const DesktopEntry& entry, const QString& target, bool* usesTarget) {
  QString text;
  for (qsizetype i = 0; i < word.size(); ++i) {
    if (word[i] != u'%' || i + 1 == word.size()) {
      text += word[i];
      continue;
    }
    const QChar code = word[++i];
    if (code == u'%') text += u'%';
    if (code == u'c') text += entry.name;
    if (code == u'k') text += entry.path;
    if (code == u'u' || code == u'U' || code == u'f' || code == u'F') {
      text += target;
      *usesTarget = true;
    }
  }
  return text;
}

void setKey(DesktopEntry& entry, QStringView key, QStringView rawValue) {
  const QString value = unescaped(rawValue);
  if (key == u"Name")
    entry.name = value;
  else if (key == u"Icon")
    entry.icon = value;
  else if (key == u"Exec")
    entry.exec = value;
  else if (key == u"TryExec")
    entry.tryExec = value;
  else if (key == u"Path")
    entry.workingDirectory = value;
  else if (key == u"MimeType")
    entry.mimeTypes = value.split(u';', Qt::SkipEmptyParts);
  else if (key == u"Hidden")
    entry.isHidden = value == u"true";
  else if (key == u"Terminal")
    entry.needsTerminal = value == u"true";
}

}  // namespace

std::optional<DesktopEntry> DesktopEntry::read(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QByteArray content = file.read(largestFile + 1);
  if (content.size() > largestFile) return {};
  return parse(QString::fromUtf8(content), path);
}

std::optional<DesktopEntry> DesktopEntry::parse(const QString& text, const QString& path) {
  DesktopEntry entry;
  entry.path = path;
  bool inGroup = false;
  QString type;
  for (const auto rawLine : QStringView(text).split(u'\n')) {
    const auto line = rawLine.trimmed();
    if (line.isEmpty() || line.startsWith(u'#')) continue;
    if (line.startsWith(u'[')) {
      if (inGroup) break;  // Only the main group counts; the actions' groups have the same keys.
      inGroup = line == u"[Desktop Entry]";
      continue;
    }
    const auto equals = line.indexOf(u'=');
    if (!inGroup || equals < 1) continue;
    const auto key = line.left(equals).trimmed();
    const auto value = line.mid(equals + 1).trimmed();
    if (key == u"Type")
      type = value.toString();
    else
      setKey(entry, key, value);
  }
  // A file that hides a program of the same name needs to say nothing else.
  if (entry.isHidden) return entry;
  if (type != u"Application" || entry.exec.isEmpty()) return {};
  return entry;
}

QStringList DesktopEntry::commandLine(const QUrl& url) const {
  const auto parts = words(exec);
  if (!parts || parts->isEmpty()) return {};
  QStringList arguments;
  bool usesTarget = false;
  for (const auto& word : *parts) {
    if (word == u"%i") {
      if (!icon.isEmpty()) arguments << u"--icon"_s << icon;
      continue;
    }
    const bool wantsFile = word.contains(u"%f") || word.contains(u"%F");
    const QString target = wantsFile && url.isLocalFile() ? url.toLocalFile() : url.toString(QUrl::FullyEncoded);
    const QString argument = expanded(word, *this, target, &usesTarget);
    // A code that stood alone and became nothing is no argument; a written-out "" is.
    if (!argument.isEmpty() || word.isEmpty()) arguments << argument;
  }
  if (url.isValid() && !usesTarget) arguments << url.toString(QUrl::FullyEncoded);
  if (arguments.isEmpty() || arguments.constFirst().isEmpty()) return {};
  return arguments;
}

}  // namespace quillo
