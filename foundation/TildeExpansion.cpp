#include "foundation/TildeExpansion.h"

#include "foundation/UserDirectories.h"

#include <QFile>

#include <pwd.h>

namespace quillo {

QString stringByExpandingTildeInPath(const QString& path) {
  if (!path.startsWith(u'~')) return path;
  const qsizetype slash = path.indexOf(u'/');
  const QString name = path.mid(1, slash < 0 ? -1 : slash - 1);
  const QString rest = slash < 0 ? QString() : path.mid(slash);
  if (name.isEmpty()) return UserDirectories::current().home + rest;
  const passwd* entry = ::getpwnam(QFile::encodeName(name).constData());
  return entry ? QFile::decodeName(entry->pw_dir) + rest : path;
}

QString userHomeDirectory() {
  return UserDirectories::current().home;
}

QString stringByExpandingTildeInPathToActualUserHomeDirectory(const QString& path) {
  return path.startsWith(u'~') ? userHomeDirectory() + path.mid(1) : path;
}

}  // namespace quillo
