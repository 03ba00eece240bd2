#include "quillo/QuilloApplication.h"

#include "about/AboutWindowController.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/session/Alerts.h"
#include "entry/session/EntryDraft.h"
#include "entry/session/OpenPanel.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "foundation/UserDirectories.h"
#include "platform/Workspace.h"
#include "qlcore/JournalChoice.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "qlcore/services/LocationService.h"
#include "qlcore/services/QLWeatherFormatter.h"

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int usualFontSize = 16;

}  // namespace

QuilloApplication::QuilloApplication(QuilloServices services)
    : m_services(std::move(services)),
      m_library({.location = [this] { return m_services.config.configuredJournalFileURL(); },
                 .makeReader = m_services.makeReader}) {
  m_library.reopen();
  m_window = std::make_unique<JournalWindow>(windowServices());
  connect(m_window->commands().quit, &QAction::triggered, this, [this] { m_services.terminate(); });
  m_observations.push_back(m_services.distributedCenter.observe(Notice::journalPackagePathDidChange,
                                                                [this](const Notification&) { m_library.reopen(); }));
}

QuilloApplication::~QuilloApplication() = default;

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
              }};
}

// Another program may have written them.
void QuilloApplication::settingsDidChange() {
  if (PersistentPropertyList* list = m_services.config.groupProperties()) list->synchronize();
  m_library.reopen();
  m_window->applyFontSize();
}

int QuilloApplication::fontSize() const {
  const PersistentPropertyList* list = m_services.config.groupProperties();
  const qint64 points = list ? list->integerForKey(Key::fontSize) : 0;
  return points >= 9 && points <= 40 ? static_cast<int>(points) : usualFontSize;
}

void QuilloApplication::setFontSize(int points) {
  if (PersistentPropertyList* list = m_services.config.groupProperties()) list->setIntegerForKey(points, Key::fontSize);
  m_services.distributedCenter.postNotification(Notice::fontSizeDidChange);
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

void QuilloApplication::open(const QStringList& urls) {
  if (m_window->isMinimized()) m_window->showNormal();
  m_window->show();
  m_window->raise();
  m_window->activateWindow();
  for (const QString& url : urls) {
    if (const auto request = requestOfURL(QUrl(url)))
      carryOut(*request);
    else
      QLLogWarn(u"\"%1\" is no URL that Quillo knows"_s.arg(url));
  }
}

void QuilloApplication::carryOut(const QuilloRequest& request) {
  using Kind = QuilloRequest::Kind;
  if (request.kind == Kind::Edit) m_window->editEntry(request.entryIdentifier);
  if (request.kind == Kind::Post) m_window->beginEntry();
  if (request.kind == Kind::Preferences) m_services.showPreferences();
  if (request.kind == Kind::UpdateBookmarks) {
    m_services.config.updateSharedBookmarkDataForConfiguredJournalFile();
    // The agent makes its own bookmark from the shared one when it hears this.
    m_services.distributedCenter.postNotification(Notice::journalPackagePathDidChange);
  }
}

void QuilloApplication::willTerminate() {
  m_window->saveText();
}

}  // namespace quillo
