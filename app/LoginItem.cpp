#include "app/LoginItem.h"

#include "foundation/Log.h"
#include "platform/LoginItems.h"
#include "platform/RunningApplications.h"

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

static LoginItemServices& services() {
  static LoginItemServices instance;
  return instance;
}

void LoginItem::setSharedServices(LoginItemServices shared) {
  services() = shared;
}

LoginItemServices LoginItem::sharedServices() {
  return services();
}

LoginItem::LoginItem(QString bundleID, LoginItemServices services)
    : m_bundleID(std::move(bundleID)), m_services(services) {}

bool LoginItem::toggleAsLoginItem(bool enabled) {
  const bool done = m_services.loginItems && m_services.loginItems->setLoginItemEnabled(m_bundleID, enabled);
  if (!done) QLLogInfo(u"Failed to set login item state %1 for %2"_s.arg(QString::number(enabled ? 1 : 0), m_bundleID));
  return done;
}

bool LoginItem::restartLoginItem() {
  return disableAsLoginItem() && enableAsLoginItem();
}

bool LoginItem::existsAsLoginItem() const {
  if (!m_services.loginItems) return false;
  // The first job of the label decides, and one that is registered but not on demand reads as NO; both are wanted.
  for (const LoginJob& job : m_services.loginItems->jobDictionaries())
    if (job.label == m_bundleID) return job.onDemand;
  return false;
}

bool LoginItem::isRunning() const {
  return m_services.runningApplications && !m_services.runningApplications->running(m_bundleID).isEmpty();
}

}  // namespace quillo
