#include "app/crash/CrashReportManager.h"

#include "app/crash/CrashHandler.h"
#include "app/logging/LoggingSetup.h"
#include "foundation/Log.h"
#include "qlcore/QLLogFormatter.h"

#include <QDir>
#include <QFile>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr auto handledSuffix = ".handled"_L1;

}  // namespace

CrashReportManager& CrashReportManager::sharedManager() {
  static CrashReportManager manager;
  return manager;
}

void CrashReportManager::configureWithIdentifier(const QString& identifier, const QString& companyName,
                                                 BITCrashReportManagerDelegate* delegate) {
  m_identifier = identifier;
  m_companyName = companyName;
  m_delegate = delegate;
}

QString CrashReportManager::reportsDirectory() const {
  if (!m_reportsDirectory.isEmpty()) return m_reportsDirectory;
  const QString log = logDirectory();
  return log.isEmpty() ? QString() : log + u"/CrashReports"_s;
}

QString CrashReportManager::preamble() const {
  return u"Application: %1\nCompany: %2\nProgram: %3\n"_s.arg(m_identifier, m_companyName, QLLogHeaderMessage());
}

void CrashReportManager::startManager() {
  if (m_started) return;
  m_started = true;
  if (const QString directory = reportsDirectory(); !directory.isEmpty()) {
    installCrashHandler({directory, preamble(), m_exceptionInterceptionEnabled});
    handlePendingReports(directory);
  }
  if (m_delegate != nullptr) m_delegate->showMainApplicationWindow();
}

void CrashReportManager::handlePendingReports(const QString& directory) const {
  const QDir reports(directory);
  // Not by a pattern of the listing, which would load the engine of expressions at each start.
  const auto endingIn = [&reports](const QString& suffix, QDir::Filters filters, QDir::SortFlags sorting) {
    QStringList names = reports.entryList(filters, sorting);
    names.removeIf([&suffix](const QString& name) { return !name.endsWith(suffix); });
    return names;
  };
  for (const QString& name : endingIn(crashReportSuffix, QDir::Files | QDir::Hidden, QDir::Name)) {
    const QString path = reports.filePath(name);
    // Another agent that starts at the same time may have taken it.
    if (!QFile::rename(path, path + handledSuffix)) continue;
    QLLogInfo(u"Crash report pending: "_s + path + handledSuffix);
  }
  const QStringList handled = endingIn(crashReportSuffix + handledSuffix, QDir::Files, QDir::Time);
  for (const QString& name : handled.mid(maximumNumberOfHandledReports)) QFile::remove(reports.filePath(name));
}

}  // namespace quillo
