#include "platform/linux/XdgLoginItems.h"

#include "foundation/DetachedProcess.h"
#include "foundation/FileContents.h"
#include "foundation/UserDirectories.h"
#include "platform/RunningApplications.h"
#include "platform/linux/AutostartEntry.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView suffix{".desktop"};
// A desktop file with all its translations is a few kilobytes.
constexpr qint64 largestEntry = qint64{1024} * 1024;

// An identifier is one path component, whoever gave it.
bool isFileName(const QString& label) {
  return !label.isEmpty() && !label.contains(u'/') && !label.startsWith(u'.');
}

}  // namespace

// An entry that the session would act on.
struct XdgLoginItems::File {
  QString label;
  AutostartEntry entry;
  QString executable;

  [[nodiscard]] QUrl url() const { return entry.url.value_or(QUrl::fromLocalFile(executable)); }
};

QString XdgLoginItems::autostartFolder(const UserDirectories& user) {
  return user.configuration + u"/autostart"_s;
}

XdgLoginItems::XdgLoginItems(QString autostartFolder, RunningApplications& running, LoginHelper helper, Starter starter)
    : m_running(running),
      m_helper(std::move(helper)),
      m_start(std::move(starter)),
      m_directory(std::move(autostartFolder)) {
  if (!m_start)
    m_start = [](const QString& program, const QStringList& arguments) {
      return startDetached(program, arguments, u"/"_s).has_value();
    };
}

QString XdgLoginItems::filePath(const QString& label) const {
  return m_directory + u'/' + label + suffix;
}

QList<XdgLoginItems::File> XdgLoginItems::files() const {
  QList<File> files;
  for (const QFileInfo& info : QDir(m_directory).entryInfoList(QDir::Files, QDir::Name)) {
    if (!info.fileName().endsWith(suffix) || info.size() > largestEntry) continue;
    const auto bytes = contentsOfFile(info.filePath());
    const auto entry = bytes ? AutostartEntry::fromBytes(*bytes) : std::nullopt;
    if (!entry || entry->isHidden) continue;
    if (const QString executable = entry->executable(); !executable.isEmpty())
      files << File{info.fileName().chopped(suffix.size()), *entry, executable};
  }
  return files;
}

// False always.
bool XdgLoginItems::fails(const QString& reason) {
  m_errorString = reason;
  return false;
}

bool XdgLoginItems::write(const QString& label, const AutostartEntry& entry) {
  // The standard has it written twice; GLib, which starts the entries of most desktops, looks for the program with both
  // and passes over the entry.
  if (entry.program.contains(u'%'))
    return fails(u"sessions cannot start a program with a % in its path, %1"_s.arg(entry.program));
  const QString path = filePath(label);
  Error error;
  if (!QDir().mkpath(m_directory)) return fails(u"the folder %1 cannot be made"_s.arg(m_directory));
  if (!writeFileAtomically(path, entry.toBytes(), &error)) return fails(error.localizedDescription);
  // As its neighbours are; there is nothing private in it. Where that fails the session can read it all the same.
  QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
  return true;
}

bool XdgLoginItems::setLoginItemEnabled(const QString& bundleIdentifier, bool enabled) {
  m_errorString.clear();
  const bool isKnown = enabled ? bundleIdentifier == m_helper.bundleIdentifier : isFileName(bundleIdentifier);
  if (!isKnown) return fails(u"\"%1\" names no helper of this program"_s.arg(bundleIdentifier));
  return enabled ? enableHelper() : disable(bundleIdentifier);
}

bool XdgLoginItems::enableHelper() {
  if (QStandardPaths::findExecutable(m_helper.program).isEmpty())
    return fails(u"there is no program %1"_s.arg(m_helper.program));
  AutostartEntry entry;
  entry.name = m_helper.name;
  entry.comment = m_helper.comment;
  entry.icon = m_helper.icon;
  entry.tryProgram = m_helper.program;
  entry.program = m_helper.program;
  entry.arguments = m_helper.arguments;
  entry.onDemand = true;
  if (!write(m_helper.bundleIdentifier, entry)) return false;

  QSet<qint64> stillEnding;
  bool runs = false;
  for (const RunningApplication& application : m_running.running(m_helper.bundleIdentifier)) {
    if (m_askedToEnd.contains(application.processIdentifier))
      stillEnding.insert(application.processIdentifier);
    else
      runs = true;
  }
  m_askedToEnd = stillEnding;
  return runs || m_start(m_helper.program, m_helper.arguments) ||
         fails(u"%1 could not be started"_s.arg(m_helper.program));
}

bool XdgLoginItems::disable(const QString& bundleIdentifier) {
  QFile file(filePath(bundleIdentifier));
  if (!file.remove() && (file.exists() || QFileInfo(file.fileName()).isSymLink()))
    return fails(u"%1 cannot be removed: %2"_s.arg(file.fileName(), file.errorString()));
  for (const RunningApplication& application : m_running.running(bundleIdentifier)) {
    m_askedToEnd.insert(application.processIdentifier);
    m_running.terminate(application);
  }
  return true;
}

QList<LoginJob> XdgLoginItems::jobDictionaries() const {
  QList<LoginJob> jobs;
  for (const File& file : files()) jobs << LoginJob{file.label, file.entry.onDemand};
  return jobs;
}

// A helper registered by its identifier is no item of the session's list.
QList<XdgLoginItems::File> XdgLoginItems::sessionFiles() const {
  QList<File> session = files();
  session.removeIf([](const File& file) {
    return file.entry.onDemand || (file.url().isLocalFile() && !QFileInfo::exists(file.url().toLocalFile()));
  });
  std::stable_sort(session.begin(), session.end(),
                   [](const File& a, const File& b) { return a.entry.order < b.entry.order; });
  return session;
}

std::optional<QList<QUrl>> XdgLoginItems::sessionLoginItems() const {
  // A folder that is not there yet is an empty list; one that may not be read is none.
  if (const QFileInfo info(m_directory); info.exists() && !(info.isDir() && info.isReadable())) return std::nullopt;
  QList<QUrl> urls;
  for (const File& file : sessionFiles()) urls << file.url();
  return urls;
}

bool XdgLoginItems::insertSessionLoginItemAtFront(const QUrl& url) {
  if (!url.isValid() || url.isEmpty()) return false;
  const QList<File> session = sessionFiles();
  AutostartEntry entry;
  entry.url = url;
  entry.order = (session.isEmpty() ? 0 : session.first().entry.order) - 1;
  entry.name = url.fileName();
  const QString program = url.isLocalFile() ? QStandardPaths::findExecutable(url.toLocalFile()) : QString();
  if (!program.isEmpty()) {
    entry.program = program;
  } else {
    entry.program = u"xdg-open"_s;
    entry.arguments = QStringList{url.toString(QUrl::FullyEncoded)};
  }
  // One file an URL: inserting it again moves it.
  const QByteArray mark = QCryptographicHash::hash(url.toEncoded(), QCryptographicHash::Sha1).toHex().left(16);
  return write(u"quillo-login-"_s + QString::fromLatin1(mark), entry);
}

bool XdgLoginItems::removeSessionLoginItem(const QUrl& url) {
  for (const File& file : sessionFiles())
    if (file.url() == url) return QFile::remove(filePath(file.label));
  return false;
}

}  // namespace quillo
