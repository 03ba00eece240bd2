#include "foundation/UserDirectories.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <pwd.h>
#include <unistd.h>

#include <optional>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

QString passwordDatabaseHome() {
  const passwd* entry = ::getpwuid(::getuid());
  if (entry && entry->pw_dir && *entry->pw_dir) return QDir::cleanPath(QFile::decodeName(entry->pw_dir));
  return QDir::homePath();
}

// XDG variables hold absolute paths; anything else is to be ignored.
QString fromEnvironment(const char* variable, const QString& otherwise) {
  const QString value = QFile::decodeName(qgetenv(variable));
  return value.startsWith(u'/') ? QDir::cleanPath(value) : otherwise;
}

std::optional<UserDirectories>& chosen() {
  static std::optional<UserDirectories> directories;
  return directories;
}

}  // namespace

UserDirectories UserDirectories::below(const QString& home) {
  const QString root = QDir::cleanPath(QDir::current().absoluteFilePath(home));
  return {root,
          root + u"/.config"_s,
          root + u"/.local/share"_s,
          root + u"/.cache"_s,
          root + u"/Documents"_s,
          root + u"/.local/state"_s};
}

UserDirectories UserDirectories::ofRealUser() {
  UserDirectories directories = below(passwordDatabaseHome());
  directories.configuration = fromEnvironment("XDG_CONFIG_HOME", directories.configuration);
  directories.data = fromEnvironment("XDG_DATA_HOME", directories.data);
  directories.caches = fromEnvironment("XDG_CACHE_HOME", directories.caches);
  directories.state = fromEnvironment("XDG_STATE_HOME", directories.state);
  // The desktop may have given the documents folder another name in its user-dirs file.
  const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  if (!documents.isEmpty() && documents != QDir::homePath()) directories.documents = documents;
  return directories;
}

const UserDirectories& UserDirectories::current() {
  if (!chosen()) chosen() = ofRealUser();
  return *chosen();
}

void UserDirectories::setCurrent(const UserDirectories& directories) {
  chosen() = directories;
}

void UserDirectories::moveTo(const QString& home) {
  const UserDirectories directories = below(home);
  qputenv("XDG_CONFIG_HOME", QFile::encodeName(directories.configuration));
  qputenv("XDG_DATA_HOME", QFile::encodeName(directories.data));
  qputenv("XDG_CACHE_HOME", QFile::encodeName(directories.caches));
  qputenv("XDG_STATE_HOME", QFile::encodeName(directories.state));
  setCurrent(directories);
}

QString pathForPeople(const QUrl& location) {
  QString path = location.isLocalFile() ? location.toLocalFile() : location.toDisplayString();
  if (const QString home = UserDirectories::current().home; path.startsWith(home + u'/'))
    path.replace(0, home.size(), u"~"_s);
  return path;
}

QString pathOfPeople(const QString& typed) {
  const UserDirectories& user = UserDirectories::current();
  if (typed == u'~' || typed.startsWith(u"~/")) return QDir::cleanPath(user.home + typed.mid(1));
  return QDir::cleanPath(QDir(user.documents).absoluteFilePath(typed));
}

}  // namespace quillo
