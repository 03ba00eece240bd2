#pragma once

#include "entry/AgentEntryWindowServices.h"
#include "entry/EntryWindowMode.h"
#include "entry/session/EntryDraft.h"
#include "entry/session/JournalTags.h"
#include "foundation/Date.h"
#include "foundation/Error.h"
#include "qlcore/QLWeather.h"

#include <QAbstractAnimation>
#include <QElapsedTimer>
#include <QObject>
#include <QPoint>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

class QMenu;

namespace quillo {

class AgentEntryWindow;
class Button;
class LocationService;
class PullDownMenu;
class QLJournalEntryFile;
class QLJournalPackageFile;
struct QLLocation;
class Registration;
class ReminderAlarm;

// Runs the quick-entry window. The window holds work in progress: closing it, by any means, writes the text into the
// journal but keeps the entry active and the text in the window; only the save button and the open button finish the
// entry. Text is never dropped: what cannot be saved stays in the window, and in a draft on disk for the next start.
//
// Posts Notice::windowWillClose, with itself as object, whenever the window closes. Nothing here waits: an alert or a
// panel goes on in a callback, and goes with the window. Main thread only.
class AgentEntryWindowController : public QObject {
  Q_OBJECT

 public:
  // The alarm, which the snooze buttons act on, must outlive the controller; null offers snoozing that does nothing.
  AgentEntryWindowController(const AgentEntryWindowServices& services, ReminderAlarm* reminderAlarm);
  ~AgentEntryWindowController() override;

  // Made at the first call: until the user wants it, it would take a third of the start, and 3 MiB.
  [[nodiscard]] AgentEntryWindow& window();
  [[nodiscard]] EntryWindowMode currentMode() const { return m_currentMode; }
  [[nodiscard]] QLJournalEntryFile* activeEntry() const { return m_activeEntry.get(); }

  // The status menu, not owned; the settings button shows it.
  void setContextualMenu(QMenu* menu) { m_contextualMenu = menu; }

  [[nodiscard]] bool haveAccessToJournalFile();
  void showWindowInMode(EntryWindowMode mode);
  // Saves and hides the window; nothing when it is not shown. While an alert tells of a failed save, the window stays.
  void close();
  // The same for a window that another is to replace: nobody is asked anything, an alert that is up goes, and the text
  // that it was about is left to the successor.
  void closeForReplacement();

  // Watch for clicks that dismiss the window; a second call of either does nothing.
  void addWindowDismissalMonitors();
  void removeWindowDismissalMonitors();

  // Whether a click at the pointer's place, a moment ago, was taken for one elsewhere and closed the window. A panel
  // that draws the icon itself tells of a click on it when the button is let go, after its press was seen.
  [[nodiscard]] bool wasJustDismissedHere() const;

  // The snooze row by the unit in which reminders recur.
  void layoutSnoozeButtonsAccordingToUserDefaults();

  // Writes the text into the journal: makes the entry on first need, updates it later, deletes the file of one that was
  // emptied. With `force`, an empty text makes an entry too. A failure is shown; false then, with the text kept, and
  // `dismissed` is called once the person has seen it.
  bool saveActiveEntry(bool force, std::function<void()> dismissed = {});
  // As saveActiveEntry(false) where nobody can be asked, as when the process is about to end: a failure is logged.
  bool saveForTermination();
  // Moves text that could not be saved, and its entry, from the controller that this one replaces. What `other` has
  // saved stays there; a text of one's own is not overwritten.
  void takeOverUnsavedText(AgentEntryWindowController& other);

  // Starts a search for the place, and then its weather, unless one is on or the desktop does not allow it.
  void fetchLocationAndWeatherIfNeeded();
  void updateWeatherFromLocation();
  // The very place that is there already changes nothing; the same weather is shown anew.
  void setLocation(std::shared_ptr<const QLLocation> location);
  void setWeather(const std::optional<QLWeather>& weather);
  void updateMetadataLabel();

  void saveButtonClicked();
  void locationButtonToggled(const Button& button);
  void openJournalButtonClicked();
  void settingsButtonClicked();
  void closeButtonClicked();
  void snoozeOptionButtonClicked(const Button& sender);
  void reconnectButtonClicked();
  // Where no journal is configured: makes one at the suggested place, or takes the one that is there; lets the user
  // choose another.
  void createJournalButtonClicked();
  void chooseJournalButtonClicked();
  void textDidChange();

 private:
  void awakeFromNib();
  void dressTextView();
  void connectControls();
  void showEditor(bool reminder);
  void showReconnectPanel();
  void finishClosing();
  void clickedElsewhere();
  void activationChanged();
  void fadeSnoozeRow();
  void endFade();

  // Made on first use; null where there is none to make.
  [[nodiscard]] LocationService* locationManager();
  void locationFound(const std::shared_ptr<const QLLocation>& location, bool isFinal, bool& weatherIsRequested);
  void stopLocating();

  [[nodiscard]] std::shared_ptr<QLJournalPackageFile> journalFile() const;
  bool writeActiveEntry(bool force, Error* error);
  void presentError(const Error& error, std::function<void()> dismissed);
  void useJournal(const QUrl& location, bool create);
  void textIsSafe();
  void keepDraftNow();
  void removeActiveEntry();
  void trackActiveEntry();
  void forgetActiveEntry();
  [[nodiscard]] bool shouldAddHashtags();
  [[nodiscard]] EntryDraft::Content draftContent() const;
  void keepDraftSoon();
  void restoreDraft();

  AgentEntryWindowServices m_services;
  ReminderAlarm* m_reminderAlarm;
  std::unique_ptr<AgentEntryWindow> m_window;
  QMenu* m_contextualMenu{nullptr};
  std::unique_ptr<PullDownMenu> m_popUpMenu;
  std::shared_ptr<QLJournalEntryFile> m_activeEntry;
  EntryWindowMode m_currentMode{EntryWindowModeStandard};
  // Of the first edit since the entry was finished.
  std::optional<Date> m_editBeginDate;
  std::unique_ptr<LocationService> m_locationManager;
  std::shared_ptr<const QLLocation> m_location;
  std::optional<QLWeather> m_weather;
  std::unique_ptr<Registration> m_globalEventMonitor;
  QElapsedTimer m_sinceDismissal;
  QPoint m_dismissedAt;
  QPointer<QAbstractAnimation> m_snoozeFade;
  JournalTags m_tags;
  // The text, or that it was emptied, is not in the journal yet.
  bool m_hasUnsavedText{false};
  bool m_isShown{false};
  bool m_isClosing{false};
};

}  // namespace quillo
