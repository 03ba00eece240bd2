#pragma once

#include "config/PersistentPropertyList.h"
#include "foundation/Bundle.h"
#include "foundation/UserDefaults.h"
#include "foundation/UserDirectories.h"

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

class Workspace;

// The base URL of the production web service, for when no other is set.
inline constexpr QLatin1StringView productionWebBaseURL{"https://quilloapp.example"};

// The process-wide configuration: the list of settings shared with the main application, every directory, a few scalar
// settings and the journal's location. Main thread only.
//
// "Ensured" directories are created, with those above them, each time they are asked for; a failure is logged and the
// URL is answered all the same.
class QuilloConfig {
 public:
  // Made on first use from the user's directories, standard defaults and environment; lives as long as the process.
  static QuilloConfig& sharedConfig();

  using Environment = std::function<QString(const char* variable)>;

  // Writes or removes WebKitDeveloperExtras in `ownDefaults`. Both references must outlive the object.
  QuilloConfig(UserDirectories directories, UserDefaults& ownDefaults, const Environment& environment);

  // Where URLs are opened; none until the entry function sets it.
  void setWorkspace(Workspace* workspace) { m_workspace = workspace; }

  // The shared list, made on first use as an empty XML list when there is no file, or one of no bytes. Null, logged,
  // while it cannot be read: settings then read as absent and writes are lost; the next call tries again. The error
  // names the file.
  [[nodiscard]] PersistentPropertyList* groupProperties(Error* error = nullptr);

  // Whether there is such a list, by its file alone; makes and writes nothing.
  [[nodiscard]] bool hasGroupProperties() const;

  void ensureDirectoryAtPath(const QString& path) const;

  [[nodiscard]] QUrl supportDirectoryURL() const;  // ensured
  [[nodiscard]] QUrl defaultBackupDirectoryURL() const;
  [[nodiscard]] QUrl groupContainerURL() const;       // ensured, in the real home directory
  [[nodiscard]] QUrl groupLogsDirectoryURL() const;   // ensured
  [[nodiscard]] QUrl groupDataDirectoryURL() const;   // ensured
  [[nodiscard]] QUrl groupPrefsDirectoryURL() const;  // ensured
  [[nodiscard]] QUrl dataDirectoryURL() const;        // ensured
  [[nodiscard]] QUrl imageCacheDirectoryURL() const;  // created, errors ignored
  [[nodiscard]] QUrl nativeSyncWorkingDirectoryURL() const;
  // The folder that the own-defaults bookmark leads to, else the default one. Migrates an older setting first.
  [[nodiscard]] QUrl backupRootURL();
  // Makes it the folder of backups, which must be there; nothing goes back to the default one. False, with an error,
  // where that cannot be saved, or there is no such folder.
  bool setBackupRootURL(const std::optional<QUrl>& url, Error* error = nullptr);
  // Whether a folder was chosen that is not there, so that backupRootURL() is another: why, with its path. A disk that
  // is not connected is the usual case.
  [[nodiscard]] std::optional<Error> whyBackupRootIsMissing();
  void populateBackupBookmarkDataIfNecessary();

  // The core library's resources: a bundle of its own inside the main bundle, or the one that the library is part of.
  [[nodiscard]] Bundle coreResourcesBundle() const;

  [[nodiscard]] QUrl serverURL();
  void setServerURL(const QUrl& url);
  [[nodiscard]] std::optional<PropertyListValue> nativeSyncJournalID();
  void setNativeSyncJournalID(const std::optional<PropertyListValue>& value);
  [[nodiscard]] std::optional<PropertyListValue> nativeSyncSessionIdentifier();
  void setNativeSyncSessionIdentifier(const std::optional<PropertyListValue>& value);
  [[nodiscard]] bool verboseLogging();
  void setVerboseLogging(bool value);
  // YES unless the stored value is a number that is zero: an absent key or a string reads YES.
  [[nodiscard]] bool sendUsageData();
  void setSendUsageData(bool value);
  [[nodiscard]] bool shouldAllowWebInspector() const { return m_allowWebInspector; }

  // The journal's location. What is stored is the path, a plain bookmark for the other application (both in the shared
  // list) and a security-scoped one (own defaults).
  [[nodiscard]] std::optional<QUrl> configuredJournalFileURL();
  // Nothing removes the path and both bookmarks.
  void setConfiguredJournalFileURL(const std::optional<QUrl>& url);
  // A stale bookmark is logged and gives nothing; it is neither used nor renewed.
  [[nodiscard]] std::optional<QUrl> resolveJournalFileBookmarkData();
  void updateBookmarkDataForConfiguredJournalFile();
  void updateSharedBookmarkDataForConfiguredJournalFile();
  // Not counted: each call resolves the bookmark anew. No access is withheld from a program on this platform, so what
  // remains of the call is that check and its lines in the log.
  void startAccessingSecurityScopedResources();
  void stopAccessingSecurityScopedResources();
  // Asks the main application, by URL, to write fresh bookmarks. False when nothing opens the URL.
  bool promptMainAppToUpdateBookmarks();

 private:
  [[nodiscard]] QString groupContainerPath() const;
  QUrl ensured(const QString& path) const;
  [[nodiscard]] std::optional<PropertyListValue> sharedValue(QLatin1StringView key);
  void setSharedValue(const std::optional<PropertyListValue>& value, QLatin1StringView key);

  UserDirectories m_directories;
  UserDefaults& m_ownDefaults;
  bool m_allowWebInspector;
  Workspace* m_workspace{nullptr};
  std::unique_ptr<PersistentPropertyList> m_groupPropertyList;
};

}  // namespace quillo
