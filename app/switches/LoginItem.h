#pragma once

#include "platform/LoginItems.h"

#include <QString>

namespace quillo {

class RunningApplications;

// The services of the session that login items stand on. Both may be missing: nothing is then a login item, nothing
// runs, and no item can be set.
struct LoginItemServices {
  LoginItems* loginItems{nullptr};
  RunningApplications* runningApplications{nullptr};
};

// The agent as a helper, in the folder of this process's own program; the arguments are for when it is started.
[[nodiscard]] LoginHelper agentLoginHelper(const QStringList& arguments);

// A helper application that the session starts at login, named by its bundle identifier. Keeps no state of its own.
class LoginItem {
 public:
  // The services must outlive the object.
  LoginItem(QString bundleID, LoginItemServices services);

  [[nodiscard]] const QString& bundleID() const { return m_bundleID; }

  // Answers the service's result; a failure is logged.
  bool toggleAsLoginItem(bool enabled);
  bool enableAsLoginItem() { return toggleAsLoginItem(true); }
  bool disableAsLoginItem() { return toggleAsLoginItem(false); }
  // Disabling stops the helper and enabling starts it. Does not enable when disabling failed.
  bool restartLoginItem();

  // Why the service's last change failed.
  [[nodiscard]] QString errorString() const;

  [[nodiscard]] bool existsAsLoginItem() const;
  [[nodiscard]] bool isRunning() const;

 private:
  QString m_bundleID;
  LoginItemServices m_services;
};

}  // namespace quillo
