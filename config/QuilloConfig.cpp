#include "config/QuilloConfig.h"

#include "config/Keys.h"
#include "config/Settings.h"
#include "foundation/Bookmark.h"
#include "foundation/FileContents.h"
#include "foundation/FolderLock.h"
#include "foundation/Log.h"
#include "foundation/PropertyListSerialization.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <sys/stat.h>

#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView preferencesFolder{"Data/Preferences"};

// Makes the directory and those above it. An existing directory is success; anything else in its place is "file
// exists".
bool createDirectory(const QString& path, Error* error) {
  if (path.isEmpty()) return fail(error, fileWriteError(ENOENT, path));
  if (QFileInfo(path).isDir()) return true;
  errno = 0;
  if (QDir().mkpath(path)) return true;
  return fail(error, fileWriteError(QFileInfo::exists(path) ? EEXIST : (errno ? errno : EIO), path));
}

}  // namespace

QuilloConfig& QuilloConfig::sharedConfig() {
  static QuilloConfig config(UserDirectories::current(), UserDefaults::standardUserDefaults(),
                             [](const char* variable) { return qEnvironmentVariable(variable); });
  return config;
}

QuilloConfig::QuilloConfig(UserDirectories directories, UserDefaults& ownDefaults, const Environment& environment)
    : m_directories(std::move(directories)),
      m_ownDefaults(ownDefaults),
      m_allowWebInspector(PropertyListValue(environment(Key::allowWebInspector.data())).boolValue()) {
  if (m_allowWebInspector)
    m_ownDefaults.setObjectForKey(PropertyListValue(u"1"_s), Key::webKitDeveloperExtras);
  else
    m_ownDefaults.removeObjectForKey(Key::webKitDeveloperExtras);
}

QString QuilloConfig::groupContainerPath() const {
  return m_directories.home + u"/Library/Group Containers/"_s + Identifier::applicationGroup;
}

static bool hasContents(const QString& path) {
  const QFileInfo file(path);
  return file.exists() && file.size() > 0;
}

// Writes an empty list where there is none: as XML, and every later save keeps the form that it reads. A file of no
// bytes, as a full disk or a crash leaves it, counts as none: nothing is in it, and no program would ever read it.
static bool makeEmptyList(const QString& path, Error* error) {
  // Another program may be making it, or rewriting it: asked again when it had the time.
  const FolderLock lock(QFileInfo(path).path(), FolderLock::Mode::Exclusive);
  if (QFileInfo::exists(path)) {
    QThread::msleep(10);
    if (hasContents(path)) return true;
    QLLogInfo(u"The group property list was an empty file and is made anew - "_s + path);
  }
  const auto empty = PropertyListSerialization::dataWithPropertyList(PropertyListDictionary(), PropertyListFormat::XML);
  return writeFileInPlace(path, *empty, error);
}

bool QuilloConfig::hasGroupProperties() const {
  return m_groupPropertyList || hasContents(groupContainerPath() + u'/' + preferencesFolder + u"/quillo.plist"_s);
}

PersistentPropertyList* QuilloConfig::groupProperties(Error* error) {
  if (m_groupPropertyList) return m_groupPropertyList.get();
  const QString path = groupPrefsDirectoryURL().toLocalFile() + u"/quillo.plist"_s;
  Error reason;
  const bool isThere = hasContents(path) || makeEmptyList(path, &reason);
  m_groupPropertyList =
      PersistentPropertyList::withPropertyListURL(QUrl::fromLocalFile(path), isThere ? &reason : nullptr);
  // The line ends in the text of a missing object instead of the reason: people search logs of both programs for it.
  if (!m_groupPropertyList) {
    QLLogInfo(QLatin1StringView("-[QuilloConfig groupProperties]"),
              u"Unable to initialize group property list - (null)"_s);
    fail(error, reason);
  }
  return m_groupPropertyList.get();
}

void QuilloConfig::ensureDirectoryAtPath(const QString& path) const {
  Error error;
  if (!createDirectory(path, &error))
    QLLogInfo(u"Failed to create directory at %1 - %2"_s.arg(path, error.description()));
}

QUrl QuilloConfig::ensured(const QString& path) const {
  ensureDirectoryAtPath(path);
  return QUrl::fromLocalFile(path);
}

static QString below(const QUrl& directory, QLatin1StringView relative) {
  return directory.toLocalFile() + u'/' + relative;
}

QUrl QuilloConfig::supportDirectoryURL() const {
  return ensured(m_directories.data + u"/quillo"_s);
}
QUrl QuilloConfig::defaultBackupDirectoryURL() const {
  return QUrl::fromLocalFile(below(supportDirectoryURL(), QLatin1StringView("Backup")));
}
QUrl QuilloConfig::groupContainerURL() const {
  return ensured(groupContainerPath());
}
QUrl QuilloConfig::groupLogsDirectoryURL() const {
  return ensured(below(groupContainerURL(), QLatin1StringView("Data/Logs")));
}
QUrl QuilloConfig::groupDataDirectoryURL() const {
  return ensured(below(groupContainerURL(), QLatin1StringView("Data/Documents")));
}
QUrl QuilloConfig::groupPrefsDirectoryURL() const {
  return ensured(below(groupContainerURL(), preferencesFolder));
}
QUrl QuilloConfig::dataDirectoryURL() const {
  return ensured(m_directories.documents);
}
QUrl QuilloConfig::imageCacheDirectoryURL() const {
  const QString path = m_directories.caches + u"/quillo/Images"_s;
  createDirectory(path, nullptr);
  return QUrl::fromLocalFile(path);
}
QUrl QuilloConfig::nativeSyncWorkingDirectoryURL() const {
  return QUrl::fromLocalFile(below(supportDirectoryURL(), QLatin1StringView("NativeSync")));
}

void QuilloConfig::populateBackupBookmarkDataIfNecessary() {
  const auto location = m_ownDefaults.URLForKey(Key::autoBackupLocation);
  if (!location || m_ownDefaults.objectForKey(Key::autoBackupLocationBookmark)) return;
  Error error;
  const bool made = createDirectory(location->toLocalFile(), &error);
  if (!made && !(error.domain == ErrorDomain::cocoa && error.code == ErrorCode::fileWriteFileExists)) {
    QLLogInfo(u"Error creating backup directory: %1"_s.arg(error.description()));
    return;
  }
  const auto bookmark = Bookmark::bookmarkData(location, Bookmark::creationWithSecurityScope, &error);
  if (bookmark)
    m_ownDefaults.setObjectForKey(PropertyListValue(*bookmark), Key::autoBackupLocationBookmark);
  else
    QLLogInfo(u"Could not migrate old backup URL to security-scoped bookmark: %1"_s.arg(error.description()));
}

QUrl QuilloConfig::backupRootURL() {
  populateBackupBookmarkDataIfNecessary();
  if (const auto data = m_ownDefaults.dataForKey(Key::autoBackupLocationBookmark))
    if (const auto resolved = Bookmark::resolve(*data, Bookmark::resolutionWithSecurityScope)) return resolved->url;
  return defaultBackupDirectoryURL();
}

bool QuilloConfig::setBackupRootURL(const std::optional<QUrl>& url, Error* error) {
  std::optional<PropertyListValue> bookmark;
  if (url) {
    if (!QFileInfo(url->toLocalFile()).isDir())
      return fail(error, cocoaError(ErrorCode::fileNoSuchFile, url->toLocalFile() + u": there is no such folder"_s));
    const auto data = Bookmark::bookmarkData(url, Bookmark::creationWithSecurityScope, error);
    if (!data) return false;
    bookmark = PropertyListValue(*data);
  } else {
    // It would come back otherwise.
    m_ownDefaults.removeObjectForKey(Key::autoBackupLocation);
  }
  m_ownDefaults.setObjectForKey(bookmark, Key::autoBackupLocationBookmark);
  return !m_ownDefaults.lastError() || fail(error, *m_ownDefaults.lastError());
}

std::optional<Error> QuilloConfig::whyBackupRootIsMissing() {
  populateBackupBookmarkDataIfNecessary();
  const auto data = m_ownDefaults.dataForKey(Key::autoBackupLocationBookmark);
  Error error;
  if (!data || Bookmark::resolve(*data, Bookmark::resolutionWithSecurityScope, &error)) return std::nullopt;
  return error;
}

Bundle QuilloConfig::coreResourcesBundle() const {
  // The core library is linked into the program, so the bundle that contains it is the program's own.
  return Bundle::mainBundle().bundleForResource(u"QLCore"_s).value_or(Bundle::mainBundle());
}

std::optional<PropertyListValue> QuilloConfig::sharedValue(QLatin1StringView key) {
  PersistentPropertyList* list = groupProperties();
  return list ? list->valueForKey(key) : std::nullopt;
}

void QuilloConfig::setSharedValue(const std::optional<PropertyListValue>& value, QLatin1StringView key) {
  if (PersistentPropertyList* list = groupProperties()) list->setValueForKey(value, key);
}

QUrl QuilloConfig::serverURL() {
  const auto stored = sharedValue(Key::serverURL);
  return QUrl(stored && stored->isString() ? stored->string() : QString(productionWebBaseURL));
}
void QuilloConfig::setServerURL(const QUrl& url) {
  setSharedValue(PropertyListValue(url.toString(QUrl::FullyEncoded)), Key::serverURL);
}

std::optional<PropertyListValue> QuilloConfig::nativeSyncJournalID() {
  return sharedValue(Key::nativeSyncJournalID);
}
void QuilloConfig::setNativeSyncJournalID(const std::optional<PropertyListValue>& value) {
  setSharedValue(value, Key::nativeSyncJournalID);
}
std::optional<PropertyListValue> QuilloConfig::nativeSyncSessionIdentifier() {
  return sharedValue(Key::nativeSyncSessionIdentifier);
}
void QuilloConfig::setNativeSyncSessionIdentifier(const std::optional<PropertyListValue>& value) {
  setSharedValue(value, Key::nativeSyncSessionIdentifier);
}

bool QuilloConfig::verboseLogging() {
  PersistentPropertyList* list = groupProperties();
  return list && list->boolForKey(Key::verboseLogging);
}
void QuilloConfig::setVerboseLogging(bool value) {
  setSharedValue(PropertyListValue(value), Key::verboseLogging);
}

bool QuilloConfig::sendUsageData() {
  const auto value = settingValue(groupProperties(), Key::sendUsageData);
  return !value || !value->isNumber() || value->boolValue();
}
void QuilloConfig::setSendUsageData(bool value) {
  setSharedValue(PropertyListValue(value), Key::sendUsageData);
}

}  // namespace quillo
