#include "platform/linux/ApplicationDatabase.h"

#include "platform/linux/DesktopFileGroup.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestFile = 4 * 1024 * 1024;
constexpr int mostDesktopFiles = 4096;

// The desktop files listed for `type` in one group of an association file.
QStringList listed(const QString& path, QStringView group, const QString& type) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) || file.size() > largestFile) return {};
  const auto lists = DesktopFileGroup::read(QString::fromUtf8(file.read(largestFile)), group);
  return lists ? lists->list(type) : QStringList();
}

// The programs of a directory that name the type themselves. For directories whose index nobody has made.
QStringList offering(const QString& directory, const QString& type) {
  QStringList names;
  QDirIterator files(directory, {u"*.desktop"_s}, QDir::Files);
  for (int count = 0; files.hasNext() && count < mostDesktopFiles; ++count) {
    const QString path = files.next();
    const auto entry = DesktopEntry::read(path);
    if (entry && entry->mimeTypes.contains(type)) names << files.fileName();
  }
  names.sort();
  return names;
}

}  // namespace

ApplicationDatabase::Places ApplicationDatabase::Places::ofEnvironment() {
  Places places;
  places.configuration = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
  places.data = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
  places.executables = qEnvironmentVariable("PATH").split(u':', Qt::SkipEmptyParts);
  places.desktopsLowerCase = qEnvironmentVariable("XDG_CURRENT_DESKTOP").toLower().split(u':', Qt::SkipEmptyParts);
  return places;
}

ApplicationDatabase::ApplicationDatabase(Places places) : m_places(std::move(places)) {}

std::optional<DesktopEntry> ApplicationDatabase::application(const QString& desktopFile) const {
  if (desktopFile.isEmpty() || desktopFile.contains(u'/')) return {};
  // A dash may stand for a directory below "applications".
  QStringList relative{desktopFile};
  for (auto dash = desktopFile.indexOf(u'-'); dash > 0; dash = desktopFile.indexOf(u'-', dash + 1))
    relative << QString(desktopFile).replace(dash, 1, u'/');
  for (const auto& directory : m_places.data)
    for (const auto& name : relative) {
      const auto entry = DesktopEntry::read(directory + u"/applications/"_s + name);
      if (!entry) continue;
      // The first file decides, also when it says that the program is gone.
      if (entry->isHidden || !hasExecutable(entry->tryExec)) return {};
      return entry;
    }
  return {};
}

bool ApplicationDatabase::hasExecutable(const QString& program) const {
  if (program.isEmpty()) return true;
  if (program.startsWith(u'/')) return QFileInfo(program).isExecutable();
  return !QStandardPaths::findExecutable(program, m_places.executables).isEmpty();
}

std::optional<DesktopEntry> ApplicationDatabase::usable(const QString& desktopFile) const {
  auto entry = application(desktopFile);
  if (!entry || entry->needsTerminal) return {};
  const auto command = entry->commandLine({});
  if (command.isEmpty() || !hasExecutable(command.constFirst())) return {};
  return entry;
}

QStringList ApplicationDatabase::associationFiles() const {
  QStringList directories = m_places.configuration;
  for (const auto& data : m_places.data) directories << data + u"/applications"_s;
  QStringList files;
  for (const auto& directory : directories) {
    for (const auto& desktop : m_places.desktopsLowerCase) files << directory + u'/' + desktop + u"-mimeapps.list"_s;
    files << directory + u"/mimeapps.list"_s;
  }
  return files;
}

std::optional<DesktopEntry> ApplicationDatabase::handler(const QString& mimeType) const {
  const auto files = associationFiles();
  for (const auto& file : files)
    for (const auto& name : listed(file, u"Default Applications", mimeType))
      if (auto entry = usable(name)) return entry;

  QStringList removed;
  for (const auto& file : files) {
    removed << listed(file, u"Removed Associations", mimeType);
    for (const auto& name : listed(file, u"Added Associations", mimeType))
      if (!removed.contains(name))
        if (auto entry = usable(name)) return entry;
  }
  const auto firstUsable = [&](const QStringList& names) -> std::optional<DesktopEntry> {
    for (const auto& name : names)
      if (!removed.contains(name))
        if (auto entry = usable(name)) return entry;
    return {};
  };
  for (const auto& data : m_places.data) {
    const QString directory = data + u"/applications"_s;
    // The index first, for its order; then the files, as a program that was just copied there is in no index.
    if (auto entry = firstUsable(listed(directory + u"/mimeinfo.cache"_s, u"MIME Cache", mimeType))) return entry;
    if (auto entry = firstUsable(offering(directory, mimeType))) return entry;
  }
  return {};
}

}  // namespace quillo
