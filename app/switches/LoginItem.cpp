#include "app/switches/LoginItem.h"

#include "config/Keys.h"
#include "foundation/Log.h"
#include "platform/RunningApplications.h"

#include <QCoreApplication>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

LoginHelper agentLoginHelper(const QStringList& arguments) {
  const QString name = u"quillo-agent"_s;
  return {Identifier::agent,
          u"Quillo Menu-Bar Agent"_s,
          u"Write into the journal from the tray"_s,
          name,
          QCoreApplication::applicationDirPath() + u'/' + name,
          arguments};
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

QString LoginItem::errorString() const {
  return m_services.loginItems ? m_services.loginItems->errorString() : u"there is no session"_s;
}

bool LoginItem::existsAsLoginItem() const {
  if (!m_services.loginItems) return false;
  // The first job of the label decides, and one that is registered but not on demand reads as NO: it would not start
  // at login, and the main application's checkbox shows the same.
  for (const LoginJob& job : m_services.loginItems->jobDictionaries())
    if (job.label == m_bundleID) return job.onDemand;
  return false;
}

bool LoginItem::isRunning() const {
  return m_services.runningApplications && !m_services.runningApplications->running(m_bundleID).isEmpty();
}

}  // namespace quillo
