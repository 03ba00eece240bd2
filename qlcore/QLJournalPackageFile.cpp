#include "qlcore/QLJournalPackageFile.h"

#include "foundation/Log.h"
#include "foundation/PropertyListSerialization.h"
#include "qlcore/JournalError.h"
#include "qlcore/JournalFolder.h"
#include "qlcore/JournalPackageLayout.h"
#include "qlcore/StorableValues.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace JournalPackageLayout;

namespace {

std::function<std::optional<QUrl>()>& urlProvider() {
  static std::function<std::optional<QUrl>()> provider;
  return provider;
}

// Whether there is a folder at `path`, which may be a link to one.
bool checkFolder(const QString& path, Error* error) {
  struct stat status {};
  if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
    const int number = errno;
    const bool isGone = number == ENOENT || number == ENOTDIR;
    return fail(error,
                isGone
                    ? JournalError::make(JournalError::JournalFileNotFound, path + u": there is no such folder"_s)
                    : JournalError::make(JournalError::NotReadable, fileReadError(number, path).localizedDescription));
  }
  if (S_ISDIR(status.st_mode)) return true;
  return fail(error, JournalError::make(JournalError::NotAPackage, path + u": not a folder, so not a journal"_s));
}

}  // namespace

QString QLJournalPackageFile::entriesFolder() const {
  return m_url.toLocalFile() + u'/' + JournalPackageLayout::entriesFolder;
}

bool QLJournalPackageFile::readProperties(const QString& path, Error* error) {
  Error reason;
  // The package itself may be reached through a link; inside it none is followed.
  const auto folder = JournalFolder::open(QFileInfo(path).canonicalFilePath(), &reason);
  const auto bytes = folder ? folder->readFile(propertiesFile, &reason) : std::nullopt;
  if (!bytes && reason.code == ErrorCode::fileReadNoSuchFile && hasEntries(path))
    return fail(error, JournalError::make(
                           JournalError::NotHereYet,
                           u"%1: its %2 is not here yet; where it does not come, quilloctl journal check --repair "
                           "makes a new one"_s.arg(path, QString(propertiesFile))));
  if (!bytes && reason.code == ErrorCode::fileReadNoSuchFile)
    return fail(error, JournalError::make(JournalError::NotAPackage,
                                          u"%1: not a journal, it has no %2"_s.arg(path, QString(propertiesFile))));
  if (!bytes) return fail(error, JournalError::make(JournalError::NotReadable, reason.localizedDescription));

  const auto content = PropertyListSerialization::propertyListWithData(*bytes, nullptr, &reason);
  const PropertyListDictionary fields = content ? content->dictionary() : PropertyListDictionary();
  const PropertyListValue version = fields.value(formatVersionKey);
  if (!version.isInteger() || version.integerValue() < 1) {
    const QString why = content ? u"it names no format version"_s : reason.localizedDescription;
    return fail(error, JournalError::make(JournalError::NotAPackage, u"%1: not a journal, its %2 is damaged: %3"_s.arg(
                                                                         path, QString(propertiesFile), why)));
  }
  if (version.integerValue() > currentFormatVersion)
    return fail(error, JournalError::make(
                           JournalError::NewerFormat,
                           u"%1: the journal was made by a newer version (format %2, this one knows %3)"_s.arg(
                               path, QString::number(version.integerValue()), QString::number(currentFormatVersion))));
  m_formatVersion = version.integerValue();
  m_identifier = fields.value(identifierKey).string();
  m_creationDate = storableDate(fields.value(creationDateKey)).value_or(Date());
  return true;
}

bool QLJournalPackageFile::isReadable(const JournalFolder& folder, const QString& name) {
  const auto bytes = folder.readFile(name, nullptr);
  const auto content = bytes ? PropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
  const PropertyListValue version = content ? content->dictionary().value(formatVersionKey) : PropertyListValue();
  return version.isInteger() && version.integerValue() >= 1 && version.integerValue() <= currentFormatVersion;
}

std::shared_ptr<QLJournalPackageFile> QLJournalPackageFile::openPackage(const QUrl& url, bool create, Error* error) {
  const QString path = QDir::cleanPath(url.toLocalFile());
  if (!url.isLocalFile() || !QDir::isAbsolutePath(path)) {
    fail(error, JournalError::make(JournalError::JournalFileNotFound,
                                   u"\"%1\": not a folder on this machine"_s.arg(url.toString())));
    return nullptr;
  }
  if (create && !makePackage(path, error)) return nullptr;
  auto package = std::shared_ptr<QLJournalPackageFile>(new QLJournalPackageFile(QUrl::fromLocalFile(path)));
  if (!checkFolder(path, error) || !package->readProperties(path, error)) return nullptr;
  return package;
}

void QLJournalPackageFile::setDefaultPackageURLProvider(std::function<std::optional<QUrl>()> provider) {
  urlProvider() = std::move(provider);
}

std::shared_ptr<QLJournalPackageFile> QLJournalPackageFile::openDefaultPackage(Error* error) {
  const auto url = urlProvider() ? urlProvider()() : std::nullopt;
  if (!url) {
    fail(error, JournalError::make(JournalError::JournalFileNotFound, u"No journal is configured"_s));
    return nullptr;
  }
  return openPackage(*url, /*create=*/false, error);
}

std::shared_ptr<QLJournalPackageFile> QLJournalPackageFile::defaultPackage() {
  Error error;
  auto package = openDefaultPackage(&error);
  if (!package)
    QLLogInfo(QLatin1StringView("+[QLJournalPackageFile(OSXAdditions) defaultPackage]"),
              u"Default location is not set - %1"_s.arg(error.description()));
  return package;
}

}  // namespace quillo
