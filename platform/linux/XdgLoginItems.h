#pragma once

#include "platform/LoginItems.h"

#include <QSet>
#include <QStringList>

#include <functional>

namespace quillo {

class RunningApplications;
struct AutostartEntry;
struct UserDirectories;

// Login items as desktop files in the user's autostart folder. The helper's is BUNDLE.desktop; those of the session's
// list carry their URL and their place. An entry that is switched off by hand, damaged, or whose program is gone does
// not exist here, as it does not for the session; enabling writes it anew.
class XdgLoginItems final : public LoginItems {
 public:
  // Starts a program on its own, by default as startDetached() does; false when it could not be started.
  using Starter = std::function<bool(const QString& program, const QStringList& arguments)>;

  // `autostart` in the user's configuration directory.
  [[nodiscard]] static QString autostartFolder(const UserDirectories& user);

  // `running` must outlive the object.
  XdgLoginItems(QString autostartFolder, RunningApplications& running, LoginHelper helper, Starter starter = {});

  // Only the helper given can be enabled. A helper that runs already is not started a second time.
  bool setLoginItemEnabled(const QString& bundleIdentifier, bool enabled) override;
  [[nodiscard]] QString errorString() const override { return m_errorString; }
  [[nodiscard]] QList<LoginJob> jobDictionaries() const override;

  [[nodiscard]] std::optional<QList<QUrl>> sessionLoginItems() const override;
  // A program is started at login; anything else is opened with the program for its kind.
  bool insertSessionLoginItemAtFront(const QUrl& url) override;
  bool removeSessionLoginItem(const QUrl& url) override;

 private:
  struct File;
  [[nodiscard]] QString filePath(const QString& label) const;
  [[nodiscard]] QList<File> files() const;
  [[nodiscard]] QList<File> sessionFiles() const;
  bool write(const QString& label, const AutostartEntry& entry);
  bool fails(const QString& reason);
  bool enableHelper();
  bool disable(const QString& bundleIdentifier);

  RunningApplications& m_running;
  LoginHelper m_helper;
  Starter m_start;
  QString m_directory;
  QString m_errorString;
  // Processes that were asked to end and may still be there when the helper is started again.
  QSet<qint64> m_askedToEnd;
};

}  // namespace quillo
