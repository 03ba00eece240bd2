#pragma once

#include "entry/AgentEntryWindowServices.h"
#include "entry/EntryViewText.h"
#include "entry/EntryWindowMode.h"
#include "entry/session/EntryPlace.h"
#include "entry/session/EntrySession.h"

#include <QAbstractAnimation>
#include <QElapsedTimer>
#include <QObject>
#include <QPoint>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

class QMenu;
class QUrl;

namespace quillo {

class AgentEntryWindow;
class Button;
class PullDownMenu;
class Registration;
class ReminderAlarm;

// Runs the quick-entry window: shows and dismisses it, and carries out its buttons. The window holds work in progress:
// closing it, by any means, writes the text into the journal but keeps the entry active and the text in the window;
// only the save button and the open button finish the entry. What becomes of the text is the session's.
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

  // The status menu, not owned; the settings button shows it.
  void setContextualMenu(QMenu* menu) { m_contextualMenu = menu; }

  void showWindowInMode(EntryWindowMode mode);
  // Whether the window is to be moved to where all of it is on the screen, as the settings have it at this moment.
  [[nodiscard]] bool keepsWindowOnScreen();
  // Saves and hides the window; nothing when it is not shown. While an alert tells of a failed save, the window stays.
  void close();
  // The same for a window that another is to replace: nobody is asked anything, an alert that is up goes, and the text
  // that it was about is left to the successor.
  void closeForReplacement();

  // Whether a click at the pointer's place, a moment ago, was taken for one elsewhere and closed the window. A panel
  // that draws the icon itself tells of a click on it when the button is let go, after its press was seen.
  [[nodiscard]] bool wasJustDismissedHere() const;

  // As EntrySession::save(). A failure is shown; false then, with the text kept, and `dismissed` is called once the
  // person has seen it.
  bool saveActiveEntry(bool force, std::function<void()> dismissed = {});
  // As saveActiveEntry(false) where nobody can be asked, as when the process is about to end: a failure is logged.
  bool saveForTermination();
  // Moves text that could not be saved, and its entry, from the controller that this one replaces.
  void takeOverUnsavedText(AgentEntryWindowController& other) { m_session.takeOverUnsavedText(other.m_session); }
  void openJournalButtonClicked();

  // Another program has changed settings, which the shared list and the own defaults have by now.
  void settingsDidChange();

  // Of the entry in the window: see EntryPlace.
  void fetchLocationAndWeatherIfNeeded() { m_place.fetchLocationAndWeatherIfNeeded(); }
  void updateWeatherFromLocation() { m_place.updateWeatherFromLocation(); }
  void setLocation(std::shared_ptr<const QLLocation> location) { m_place.setLocation(std::move(location)); }
  void setWeather(const std::optional<QLWeather>& weather) { m_place.setWeather(weather); }
  void updateMetadataLabel();

 private:
  void awakeFromNib();
  void dressTextView();
  void connectControls();
  void connectPlace();
  [[nodiscard]] bool haveAccessToJournalFile();
  // Of the shared list, as it was read last.
  [[nodiscard]] bool isOn(QLatin1StringView key);
  void showEditor(bool reminder);
  void fetchLocationOnceShown();
  void showReconnectPanel();
  // The snooze row by the unit in which reminders recur.
  void layoutSnoozeButtonsAccordingToUserDefaults();
  void finishClosing();
  // Watch for clicks that dismiss the window; a second call of either does nothing.
  void addWindowDismissalMonitors();
  void removeWindowDismissalMonitors();
  void clickedElsewhere();
  void activationChanged();
  void fadeSnoozeRow();
  void endFade();
  void presentError(const Error& error, std::function<void()> dismissed);
  void useJournal(const QUrl& location, bool create);

  void textDidChange();
  void saveButtonClicked();
  void locationButtonToggled(const Button& button);
  void settingsButtonClicked();
  void closeButtonClicked();
  void escapePressed();
  void snoozeOptionButtonClicked(const Button& sender);
  void reconnectButtonClicked();
  // Where no journal is configured: makes one at the suggested place, or takes the one that is there; lets the user
  // choose another.
  void createJournalButtonClicked();
  void chooseJournalButtonClicked();
  // Has the main application ask for all that a first start decides.
  void setUpButtonClicked();

  AgentEntryWindowServices m_services;
  ReminderAlarm* m_reminderAlarm;
  EntryViewText m_text;
  EntryPlace m_place;
  EntrySession m_session;
  std::unique_ptr<AgentEntryWindow> m_window;
  QMenu* m_contextualMenu{nullptr};
  std::unique_ptr<PullDownMenu> m_popUpMenu;
  EntryWindowMode m_currentMode{EntryWindowModeStandard};
  std::unique_ptr<Registration> m_globalEventMonitor;
  QElapsedTimer m_sinceDismissal;
  QPoint m_dismissedAt;
  QPointer<QAbstractAnimation> m_snoozeFade;
  bool m_isShown{false};
  bool m_isClosing{false};
};

}  // namespace quillo
