#pragma once

#include <QString>
#include <QStringList>

namespace quillo {

// Who is told that crash reporting stands.
class BITCrashReportManagerDelegate {
 public:
  virtual ~BITCrashReportManagerDelegate() = default;

  // Called once, when startManager() has dealt with the pending reports, whether or not there were any.
  virtual void showMainApplicationWindow() = 0;
};

// Keeps reports of crashes: a crash leaves one in "CrashReports" below the log directory, and the next start finds it.
// Reports stay on this machine; nothing is sent to anyone. Main thread only.
class CrashReportManager {
 public:
  static constexpr int maximumNumberOfHandledReports = 10;

  // The process's manager; its reports are below logDirectory(), so the logging is set up before it starts.
  [[nodiscard]] static CrashReportManager& sharedManager();

  // A manager on a directory of its own; an empty one stands for "CrashReports" below logDirectory().
  explicit CrashReportManager(const QString& reportsDirectory = {}) : m_reportsDirectory(reportsDirectory) {}

  // The identifier of the application and its maker's name stand in every report. The delegate is not owned; it lives
  // at least until startManager() returns, and may be null.
  void configureWithIdentifier(const QString& identifier, const QString& companyName,
                               BITCrashReportManagerDelegate* delegate);
  // Whether an exception that nobody catches is reported with its type and text.
  void setExceptionInterceptionEnabled(bool enabled) { m_exceptionInterceptionEnabled = enabled; }

  // Installs the handlers, logs every pending report and marks it as dealt with by the suffix ".handled", and calls the
  // delegate. Without a usable directory it only calls the delegate. A second call does nothing.
  void startManager();

 private:
  [[nodiscard]] QString reportsDirectory() const;
  [[nodiscard]] QString preamble() const;
  void handlePendingReports(const QString& directory) const;

  QString m_reportsDirectory;
  QString m_identifier;
  QString m_companyName;
  BITCrashReportManagerDelegate* m_delegate{nullptr};
  bool m_exceptionInterceptionEnabled{false};
  bool m_started{false};
};

}  // namespace quillo
