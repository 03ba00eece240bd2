#pragma once

#include "config/QuilloURL.h"
#include "foundation/Bundle.h"
#include "foundation/Date.h"
#include "journal/JournalWindow.h"
#include "journal/model/JournalLibrary.h"
#include "platform/Registration.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quillo {

class AboutWindowController;
class Alerts;
class EntryDraft;
class FileManager;
class NotificationCenter;
class OpenPanel;
class FirstStartWindow;
struct FirstStart;
class PreferencesWindow;
class QuilloConfig;
class Workspace;

// What the main application works with; it must outlive it.
struct QuilloServices {
  QuilloConfig& config;
  Bundle bundle;
  NotificationCenter& distributedCenter;
  UserDefaults& defaults;
  EntryTextServices text;
  EntryDraft& draft;
  Workspace& workspace;
  FileManager& fileManager;
  WeatherService& weather;
  std::function<std::unique_ptr<LocationService>()> makeLocationManager;
  std::function<std::unique_ptr<JournalReader>(const QLJournalPackageFile& package)> makeReader;
  Alerts& alerts;
  OpenPanel& openPanel;
  // Makes the window of preferences, when it is first asked for.
  std::function<std::unique_ptr<PreferencesWindow>()> makePreferences;
  // Makes the window of the first start; `finished` is for when all is done, and the window still there.
  std::function<std::unique_ptr<FirstStartWindow>(std::function<void(const FirstStart& choice)> finished)>
      makeFirstStart;
  // Has the agent open its entry window, where one runs.
  std::function<void()> openEntryWindow;
  // Ends the program from its event loop.
  std::function<void()> terminate;
};

// The main application: one window on the configured journal, and the answers to quillo: URLs. Main thread only.
class QuilloApplication final : public QObject {
  Q_OBJECT

 public:
  explicit QuilloApplication(QuilloServices services);
  ~QuilloApplication() override;

  // Brings the window in front, and does what the URLs ask. Unknown ones are logged. As long as no journal is
  // configured, the first start comes in the window's place.
  void open(const QStringList& urls);
  // Before the program or the session ends: saves, and asks nobody.
  void willTerminate();

 private:
  // Made when it is first needed: for the first start it is not, and it would write settings.
  [[nodiscard]] JournalWindow& window();
  [[nodiscard]] JournalWindowServices windowServices();
  [[nodiscard]] JournalExchangeServices exchangeServices();
  void carryOut(const QuilloRequest& request);
  void useJournal(const QUrl& location, bool create);
  void chooseJournal(QWidget& window);
  void showWindow();
  void showPreferences();
  void tellOfFailedBackup();
  [[nodiscard]] bool needsFirstStart(const QList<QuilloRequest>& requests);
  void showFirstStart();
  void firstStartDidFinish(const FirstStart& choice);
  void settingsDidChange();
  void applyChosenLook();
  [[nodiscard]] std::unique_ptr<Registration> askForTags(std::function<void(const QStringList& tags)> answer);
  [[nodiscard]] int fontSize() const;
  void setFontSize(int points);

  QuilloServices m_services;
  JournalLibrary m_library;
  std::unique_ptr<JournalWindow> m_window;
  std::unique_ptr<AboutWindowController> m_about;
  std::unique_ptr<PreferencesWindow> m_preferences;
  std::unique_ptr<FirstStartWindow> m_firstStart;
  std::optional<Date> m_failureTold;    // the time of the backup that failed
  bool m_showsWindowAfterwards{false};  // after the first start
  // Last, so that nothing is heard of while the rest goes.
  std::vector<std::unique_ptr<Registration>> m_observations;
};

}  // namespace quillo
