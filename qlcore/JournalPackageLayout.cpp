#include "qlcore/JournalPackageLayout.h"

#include "foundation/FolderOperations.h"
#include "foundation/PropertyListSerialization.h"
#include "qlcore/IgnoreFiles.h"
#include "qlcore/JournalError.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/StorableValues.h"

#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace quillo::JournalPackageLayout {

using namespace Qt::StringLiterals;

namespace {

bool fill(const QString& folder, Error* error) {
  const QString entries = folder + u'/' + entriesFolder;
  if (::mkdir(QFile::encodeName(entries).constData(), 0700) != 0) return fail(error, fileWriteError(errno, entries));
  const auto opened = JournalFolder::open(folder, error);
  return opened && makeProperties(*opened, error) && IgnoreFiles::write(*opened, error);
}

// Only what fill() makes, so that nothing else can ever be removed here.
void remove(const QString& folder) {
  for (const IgnoreFiles::File& file : IgnoreFiles::all())
    ::unlink(QFile::encodeName(folder + u'/' + file.name).constData());
  ::unlink(QFile::encodeName(folder + u'/' + propertiesFile).constData());
  ::rmdir(QFile::encodeName(folder + u'/' + entriesFolder).constData());
  ::rmdir(QFile::encodeName(folder).constData());
}

}  // namespace

bool hasEntries(const QString& path) {
  const auto folder = JournalFolder::open(path + u'/' + entriesFolder, nullptr);
  const auto names = folder ? folder->propertyListNames(nullptr) : std::nullopt;
  return names && std::any_of(names->begin(), names->end(), [](const QString& name) {
           return QLJournalEntryFile::canonicalUUID(name.chopped(6)).has_value();
         });
}

bool makeProperties(const JournalFolder& folder, Error* error) {
  const PropertyListDictionary content{{formatVersionKey, qint64{QLJournalPackageFile::currentFormatVersion}},
                                       {identifierKey, QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper()},
                                       {creationDateKey, storableNow()}};
  const auto bytes = PropertyListSerialization::dataWithPropertyList(content, PropertyListFormat::XML, error);
  return bytes && folder.replaceFile(propertiesFile, *bytes, error);
}

bool makePackage(const QString& path, Error* error) {
  const auto taken = [&] {
    return fail(error, JournalError::make(JournalError::AlreadyExists, path + u": there is something already"_s));
  };
  struct stat status {};
  if (::lstat(QFile::encodeName(path).constData(), &status) == 0) return taken();
  const QFileInfo target(path);
  const QString unique = QUuid::createUuid().toString(QUuid::Id128);
  const QString temporary = u"%1/.%2.tmp"_s.arg(target.path(), unique);
  if (::mkdir(QFile::encodeName(temporary).constData(), 0700) != 0)
    return fail(error, JournalError::forWriting(fileWriteError(errno, target.path())));

  Error reason;
  if (!fill(temporary, &reason)) {
    remove(temporary);
    // What went wrong is told of the place that the caller knows.
    reason.localizedDescription.replace(temporary, path);
    return fail(error, JournalError::forWriting(reason));
  }
  const int number = renameToFree(QFile::encodeName(temporary), QFile::encodeName(path));
  if (number != 0) {
    remove(temporary);
    return number == EEXIST || number == ENOTEMPTY
               ? taken()
               : fail(error, JournalError::forWriting(fileWriteError(number, path)));
  }
  if (const int unsynced = syncFolder(target.path()))
    return fail(error, JournalError::forWriting(fileWriteError(unsynced, path)));
  return true;
}

}  // namespace quillo::JournalPackageLayout
