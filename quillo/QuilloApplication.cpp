#include "quillo/QuilloApplication.h"

#include "about/AboutWindowController.h"
#include "app/logging/LoggingSetup.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "controls/look/ChosenLook.h"
#include "entry/session/Alerts.h"
#include "entry/session/EntryDraft.h"
#include "entry/session/OpenPanel.h"
#include "entry/spelling/SpellChecker.h"
#include "exchange/backup/BackupRecord.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "foundation/UserDirectories.h"
#include "journal/JournalWindowView.h"
#include "journal/printing/PdfEntryWriter.h"
#include "journal/views/NoticeBar.h"
#include "journal/views/StatusRow.h"
#include "platform/FileManager.h"
#include "platform/Workspace.h"
#include "preferences/PreferencesWindow.h"
#include "preferences/model/TextSize.h"
#include "preferences/setup/FirstStartWindow.h"
#include "qlcore/JournalChoice.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "qlcore/services/LocationService.h"
#include "qlcore/services/QLWeatherFormatter.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QTimer>
#include <QWindow>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

QuilloApplication::QuilloApplication(QuilloServices services)
    : m_services(std::move(services)),
      m_library({.location = [this] { return m_services.config.configuredJournalFileURL(); },
                 .makeReader = m_services.makeReader}) {
  applyChosenLook();
  NotificationCenter& distributed = m_services.distributedCenter;
  m_observations.push_back(distributed.observe(Notice::journalPackagePathDidChange, [this](const Notification&) {
    settingsDidChange();
    m_library.reopen();
  }));
  for (const auto& notice : {Notice::settingsDidChange, Notice::fontSizeDidChange, Notice::tempScaleDidChange})
    m_observations.push_back(distributed.observe(notice, [this](const Notification&) { settingsDidChange(); }));
}

QuilloApplication::~QuilloApplication() = default;

JournalWindow& QuilloApplication::window() {
  if (m_window) return *m_window;
  m_library.reopen();
  m_window = std::make_unique<JournalWindow>(windowServices());
  connect(m_window->commands().quit, &QAction::triggered, this, [this] { m_services.terminate(); });
  connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
    if (state == Qt::ApplicationActive) tellOfFailedBackup();
  });
  connect(m_window->commands().preferences, &QAction::triggered, this, &QuilloApplication::showPreferences);
  return *m_window;
}

JournalWindowServices QuilloApplication::windowServices() {
  QuilloConfig& config = m_services.config;
  return {.library = m_library,
          .editor = {.session = {.config = config,
                                 .draft = m_services.draft,
                                 .usageTracker = &QLMixpanelTracker::sharedInstance,
                                 .journalFile = [this] { return m_library.package(); },
                                 .emptyJournalEntry = [this]() -> std::shared_ptr<QLJournalEntryFile> {
                                   return m_library.package() ? QLJournalEntryFile::newEntry() : nullptr;
                                 },
                                 .tags = [this](auto answer) { return askForTags(std::move(answer)); },
                                 .deletesEmptiedEntries = false},
                     .place = {.config = config,
                               .makeLocationManager = m_services.makeLocationManager,
                               .weather = &m_services.weather},
                     .text = m_services.text},
          .defaults = m_services.defaults,
          .weatherText =
              [&config](const QLWeather& weather) {
                return weatherFormatterWithPreferredScale(config).stringForObjectValue(weather);
              },
          .fontSize = [this] { return fontSize(); },
          .setFontSize = [this](int points) { setFontSize(points); },
          .setUp = [this] { showFirstStart(); },
          .createJournal =
              [this] {
                const SuggestedJournal suggested = suggestedJournal();
                useJournal(suggested.location, /*create=*/!suggested.exists);
              },
          .chooseJournal = [this](QWidget& window) { chooseJournal(window); },
          .showFolder = [this](const QString& folder) { m_services.workspace.openURL(QUrl::fromLocalFile(folder)); },
          .openURL = [this](const QUrl& url) { m_services.workspace.openURL(url); },
          .showAbout =
              [this] {
                if (!m_about)
                  m_about = std::make_unique<AboutWindowController>(m_services.workspace, m_services.bundle);
                m_about->showWindow();
              },
          .exchange = exchangeServices()};
}

JournalExchangeServices QuilloApplication::exchangeServices() {
  QuilloConfig& config = m_services.config;
  return {.openPanel = m_services.openPanel,
          .pdf = [&config]() -> DocumentMaker {
            const PdfEntryWriter::Options options{
                .locale = QLocale(),
                .weatherText = [weather = weatherFormatterWithPreferredScale(config)](const QLWeather& of) {
                  return weather.stringForObjectValue(of);
                }};
            return [options](ByteSink sink) { return std::make_unique<PdfEntryWriter>(std::move(sink), options); };
          },
          .makesTagsOfHashtags =
              [&config] {
                const PersistentPropertyList* list = config.groupProperties();
                return list && list->integerForKey(Key::shouldAddHashtags) != Key::hashtagsAreNotTags;
              },
          .showFile =
              [this](const QString& path, std::function<void()> failed) {
                const auto openFolder = [this, path, failed = std::move(failed)] {
                  const QFileInfo file(path);
                  const QString folder = file.isDir() ? path : file.path();
                  if (!m_services.workspace.openURL(QUrl::fromLocalFile(folder))) failed();
                };
                m_services.fileManager.showItem(path, openFolder);
              }};
}

// Another program may have written them.
void QuilloApplication::settingsDidChange() {
  if (PersistentPropertyList* list = m_services.config.groupProperties()) list->synchronize();
  setLogIsVerbose(m_services.config.verboseLogging());
  m_services.text.spellChecker.learnedWordsDidChange();
  if (m_services.defaults.synchronize())
    m_services.text.localCenter.postNotification(Notice::spellingAndGrammarSettingsDidChange);
  applyChosenLook();
  if (m_window) m_window->applyFontSize();
}

void QuilloApplication::applyChosenLook() {
  const PersistentPropertyList* list =
      m_services.config.hasGroupProperties() ? m_services.config.groupProperties() : nullptr;
  const auto chosen = list ? list->valueForKey(Key::look) : std::nullopt;
  applyLook(lookFromSetting(chosen && chosen->isString() ? chosen->string() : QString()));
}

int QuilloApplication::fontSize() const {
  return TextSize::ofSettings(m_services.config.groupProperties());
}

void QuilloApplication::setFontSize(int points) {
  if (PersistentPropertyList* list = m_services.config.groupProperties()) list->setIntegerForKey(points, Key::fontSize);
  m_services.distributedCenter.postNotification(Notice::fontSizeDidChange);
}

void QuilloApplication::showPreferences() {
  if (!m_preferences) {
    m_preferences = m_services.makePreferences();
    m_preferences->move(window().geometry().center() - m_preferences->rect().center());
  }
  m_preferences->showWindow();
}

// Nobody may have been there when the desktop told of it. Each one once, and not in the place of what is still to be
// answered.
void QuilloApplication::tellOfFailedBackup() {
  const BackupRecord record = BackupRecord::of(UserDirectories::current());
  if (!m_window || record.failure.isEmpty() || !record.lastTry || record.lastTry == m_failureTold) return;
  NoticeBar& notices = m_window->view().status->notices();
  if (notices.isVisible()) return;
  m_failureTold = record.lastTry;
  notices.show(u"The last backup failed: "_s + record.failure, {{u"Show"_s, [this] {
                                                                   showPreferences();
                                                                   m_preferences->showPage(PreferencesWindow::Backup);
                                                                 }}});
}

std::unique_ptr<Registration> QuilloApplication::askForTags(std::function<void(const QStringList& tags)> answer) {
  auto asker = std::make_shared<QObject>();
  m_library.count(asker.get(), {}, JournalCountBy::Tag,
                  [answer = std::move(answer)](const QList<JournalCount>& counts) {
                    QStringList tags;
                    for (const JournalCount& count : counts) tags << count.name;
                    answer(tags);
                  });
  return std::make_unique<Registration>([asker]() mutable { asker.reset(); });
}

void QuilloApplication::useJournal(const QUrl& location, bool create) {
  Error error;
  const bool isUsed = quillo::useJournal(m_services.config, location, create, &error);
  m_library.reopen();
  if (isUsed)
    m_services.distributedCenter.postNotification(Notice::journalPackagePathDidChange);
  else
    m_services.alerts.beginSheet(Alert::withError(error), m_window.get(), [](int) {});
}

void QuilloApplication::chooseJournal(QWidget& window) {
  m_services.openPanel.beginSheet(
      u"Choose Quillo Journal"_s, UserDirectories::current().documents, &window,
      [this](const QString& path) { useJournal(QUrl::fromLocalFile(path), /*create=*/false); });
}

void QuilloApplication::showWindow() {
  JournalWindow& shown = window();
  if (shown.isMinimized()) shown.showNormal();
  shown.show();
  shown.raise();
  shown.activateWindow();
}

void QuilloApplication::open(const QStringList& urls) {
  QList<QuilloRequest> requests;
  for (const QString& url : urls) {
    if (const auto request = requestOfURL(QUrl(url)))
      requests << *request;
    else
      QLLogWarn(u"\"%1\" is no URL that Quillo knows"_s.arg(url));
  }
  if (needsFirstStart(requests)) {
    const bool isAskedFor = requests.contains(QuilloRequest{QuilloRequest::Kind::SetUp, {}});
    m_showsWindowAfterwards = m_showsWindowAfterwards || !isAskedFor;
    return showFirstStart();
  }
  showWindow();
  for (const QuilloRequest& request : std::as_const(requests)) carryOut(request);
}

// Not where the settings cannot be read: the window tells of that.
bool QuilloApplication::needsFirstStart(const QList<QuilloRequest>& requests) {
  if (requests.contains(QuilloRequest{QuilloRequest::Kind::SetUp, {}})) return true;
  if (m_window && m_window->isVisible()) return false;
  // Whoever closes the first start again leaves no trace.
  if (!m_services.config.hasGroupProperties()) return true;
  PersistentPropertyList* list = m_services.config.groupProperties();
  if (!list) return false;
  list->synchronize();
  return !m_services.config.configuredJournalFileURL();
}

void QuilloApplication::showFirstStart() {
  // One that was closed begins anew, with what is configured by now.
  if (!m_firstStart || !m_firstStart->isVisible())
    m_firstStart = m_services.makeFirstStart([this](const FirstStart& choice) { firstStartDidFinish(choice); });
  m_firstStart->showWindow();
}

void QuilloApplication::firstStartDidFinish(const FirstStart& choice) {
  m_library.reopen();
  if (choice.bringsEntriesIn) {
    m_showsWindowAfterwards = false;
    showWindow();
    m_window->beginImport();
    return;
  }
  if (!std::exchange(m_showsWindowAfterwards, false)) return m_services.openEntryWindow();
  // The entry window once this one has the keyboard, which it would take from it else; a desktop that gives it to
  // neither has had its time then.
  showWindow();
  auto* once = new QTimer(m_window.get());
  once->setSingleShot(true);
  const auto open = [this, once] {
    once->deleteLater();
    m_services.openEntryWindow();
  };
  connect(once, &QTimer::timeout, this, open);
  connect(qApp, &QGuiApplication::focusWindowChanged, once, [this, once](const QWindow* focused) {
    if (focused && focused == m_window->windowHandle()) once->start(0);
  });
  once->start(2000);
}

void QuilloApplication::carryOut(const QuilloRequest& request) {
  using Kind = QuilloRequest::Kind;
  if (request.kind == Kind::Edit) window().editEntry(request.entryIdentifier);
  if (request.kind == Kind::Post) window().beginEntry();
  if (request.kind == Kind::Preferences) showPreferences();
  if (request.kind == Kind::UpdateBookmarks) {
    m_services.config.updateSharedBookmarkDataForConfiguredJournalFile();
    // The agent makes its own bookmark from the shared one when it hears this.
    m_services.distributedCenter.postNotification(Notice::journalPackagePathDidChange);
  }
}

void QuilloApplication::willTerminate() {
  if (m_window) m_window->saveText();
}

}  // namespace quillo
