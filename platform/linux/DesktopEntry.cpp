#include "platform/linux/DesktopEntry.h"

#include "platform/linux/DesktopFileGroup.h"

#include <QFile>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestFile = 1024 * 1024;

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

}  // namespace

std::optional<DesktopEntry> DesktopEntry::read(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QByteArray content = file.read(largestFile + 1);
  if (content.size() > largestFile) return {};
  return parse(QString::fromUtf8(content), path);
}

std::optional<DesktopEntry> DesktopEntry::parse(const QString& text, const QString& path) {
  const auto group = DesktopFileGroup::read(text, DesktopFileGroup::desktopEntry);
  return group ? fromGroup(*group, path) : std::nullopt;
}

std::optional<DesktopEntry> DesktopEntry::fromGroup(const DesktopFileGroup& group, const QString& path) {
  DesktopEntry entry;
  entry.path = path;
  entry.name = group.values.value(u"Name"_s);
  entry.icon = group.values.value(u"Icon"_s);
  entry.exec = group.values.value(u"Exec"_s);
  entry.tryExec = group.values.value(u"TryExec"_s);
  entry.workingDirectory = group.values.value(u"Path"_s);
  entry.mimeTypes = group.list(u"MimeType"_s);
  entry.isHidden = group.isTrue(u"Hidden"_s);
  entry.needsTerminal = group.isTrue(u"Terminal"_s);
  // A file that hides a program of the same name needs to say nothing else.
  if (entry.isHidden) return entry;
  if (group.values.value(u"Type"_s) != u"Application" || entry.exec.isEmpty()) return {};
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
