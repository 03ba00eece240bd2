#include "entry/AgentEntryWindowController.h"

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "config/Settings.h"
#include "controls/Coordinates.h"
#include "controls/CustomCursorButton.h"
#include "controls/Fonts.h"
#include "controls/NinePartScaledImage.h"
#include "entry/AgentEntryWindow.h"
#include "entry/PullDownMenu.h"
#include "entry/SnoozeOptions.h"
#include "entry/session/Alerts.h"
#include "entry/session/JournalAccess.h"
#include "entry/session/OpenPanel.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDirectories.h"
#include "platform/OutsideClicks.h"
#include "platform/Workspace.h"
#include "qlcore/JournalChoice.h"
#include "qlcore/QLMixpanelTracker.h"
#include "reminders/ReminderAlarm.h"
#include "reminders/ReminderInterval.h"
#include "ui_AgentEntryWindow.h"

#include <QApplication>
#include <QGraphicsOpacityEffect>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QShortcut>
#include <QTimer>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

// Where the text area stands, from the bottom left: at its full height, and lower by the snooze row.
static constexpr QRectF expandedScrollFrame{13, 66, 302, 146};
static constexpr QRectF condensedScrollFrame{13, 66, 302, 104};
// The part of the text area's picture that stretches, from the picture's bottom left.
static constexpr QPointF inputBoxScaleTopLeft{5, 141};
static constexpr QPointF inputBoxScaleBottomRight{295, 5};
// How strong the buttons' pictures are at rest.
static constexpr double settingsButtonFraction = 0.5;
static constexpr double closeButtonFraction = 0.6;
static constexpr int fadeMilliseconds = 200;
// Within which press and release are one click; points from the left and the top together.
static constexpr int oneClickMilliseconds = 1000;
static constexpr int oneClickDistance = 6;
static constexpr auto refocusDelay = 50ms;

static void dimAtRest(HoverButtonCell& cell, double fraction) {
  const ImageRef image = cell.image();
  cell.setHoverImage(image);
  if (image) cell.setStandardImage(imageWithFraction(*image, fraction));
}

static void setSnoozeOption(HoverButton& button, const std::optional<SnoozeOptions::Option>& option) {
  button.setVisible(option.has_value());
  if (!option) return;
  button.setText(option->title);
  button.setTag(option->tag);
  button.setAccessibleName(u"Remind me again in %1"_s.arg(option->title));
  button.setToolTip(u"Save, close, and remind me again in %1"_s.arg(option->title));
}

// The pointer in screen points, from the bottom left.
static QPointF mouseLocation() {
  return flipped(QRectF(QCursor::pos(), QSizeF()), mainScreenHeight()).topLeft();
}

AgentEntryWindowController::AgentEntryWindowController(const AgentEntryWindowServices& services,
                                                       ReminderAlarm* reminderAlarm)
    : m_services(services),
      m_reminderAlarm(reminderAlarm),
      m_place({.config = services.config,
               .makeLocationManager = services.makeLocationManager,
               .weather = services.weather}),
      m_session({.config = services.config,
                 .draft = services.draft,
                 .usageTracker = services.usageTracker,
                 .journalFile = services.journalFile,
                 .emptyJournalEntry = services.emptyJournalEntry,
                 .tags = services.tags},
                m_text, m_place) {}

AgentEntryWindowController::~AgentEntryWindowController() {
  endFade();
  if (!m_window) return;
  // The window must not reach a half-destroyed controller.
  m_window->onCloseRequest = {};
  m_window->onEscape = {};
  m_window->onActivationChange = {};
}

AgentEntryWindow& AgentEntryWindowController::window() {
  if (!m_window) {
    m_window = std::make_unique<AgentEntryWindow>(EntryWindowDesktop{.isComposited = m_services.compositorIsRunning,
                                                                     .keepOutOfTaskBar = m_services.keepOutOfTaskBar});
    awakeFromNib();
  }
  return *m_window;
}

void AgentEntryWindowController::awakeFromNib() {
  Ui::AgentEntryWindow& ui = window().ui();
  ui.backgroundView->setAlpha(0.96);
  window().setScrollBorderFrame(expandedScrollFrame);
  if (const ImageRef inputBox = Image::imageNamed(u"menubar-inputbox"_s))
    ui.scrollBorderView->setNinePartScaledImage(
        std::make_shared<NinePartScaledImage>(inputBox, inputBoxScaleTopLeft, inputBoxScaleBottomRight));
  dressTextView();
  dimAtRest(ui.settingsButton->cell(), settingsButtonFraction);
  dimAtRest(ui.closeButton->cell(), closeButtonFraction);
  m_text.setView(*ui.textView);
  connectControls();
  connectPlace();
}

void AgentEntryWindowController::dressTextView() {
  EntryViewTextView& textView = *window().ui().textView;
  textView.setFont(textFont(15));
  const QColor textColor = QColor::fromRgbF(0.2F, 0.2F, 0.2F);
  QPalette palette = textView.palette();
  palette.setColor(QPalette::Text, textColor);
  palette.setColor(QPalette::Highlight, QColor(0xb4, 0xd5, 0xfb));
  palette.setColor(QPalette::HighlightedText, textColor);
  textView.setPalette(palette);
  textView.setTextContainerInset(QSizeF(4, 0));
  textView.setServices(m_services.text);
  textView.awakeFromNib();
  textView.setCompletionSource([this] { return m_session.tags().tags(); });
  connect(&m_session.tags(), &JournalTags::didBecomeKnown, &textView, &EntryViewTextView::completionSourceDidChange);
}

void AgentEntryWindowController::connectControls() {
  using Self = AgentEntryWindowController;
  Ui::AgentEntryWindow& ui = window().ui();
  connect(ui.textView, &EntryViewTextView::textDidChange, this, &Self::textDidChange);
  connect(ui.saveButton, &QAbstractButton::clicked, this, &Self::saveButtonClicked);
  connect(ui.openJournalButton, &QAbstractButton::clicked, this, &Self::openJournalButtonClicked);
  connect(ui.settingsButton, &QAbstractButton::clicked, this, &Self::settingsButtonClicked);
  connect(ui.closeButton, &QAbstractButton::clicked, this, &Self::closeButtonClicked);
  connect(ui.reconnectButton, &QAbstractButton::clicked, this, &Self::reconnectButtonClicked);
  connect(ui.createJournalButton, &QAbstractButton::clicked, this, &Self::createJournalButtonClicked);
  connect(ui.setUpButton, &QAbstractButton::clicked, this, &Self::setUpButtonClicked);
  connect(ui.chooseJournalButton, &QAbstractButton::clicked, this, &Self::chooseJournalButtonClicked);
  connect(ui.locationToggleButton, &QAbstractButton::clicked, this,
          [this, &ui] { locationButtonToggled(*ui.locationToggleButton); });
  for (HoverButton* option : {ui.snoozeOption1Button, ui.snoozeOption2Button})
    connect(option, &QAbstractButton::clicked, this, [this, option] { snoozeOptionButtonClicked(*option); });
  // The number pad's Enter is another key. Like the button's own, this one is dead while the button is hidden.
  auto* enter = new QShortcut(ui.saveButton);
  enter->setKey(QKeyCombination(Qt::CTRL, Qt::Key_Enter));
  connect(enter, &QShortcut::activated, ui.saveButton, &QAbstractButton::animateClick);
  window().onCloseRequest = [this] { close(); };
  window().onEscape = [this] { escapePressed(); };
  window().onActivationChange = [this] { activationChanged(); };
}

void AgentEntryWindowController::connectPlace() {
  using Self = AgentEntryWindowController;
  connect(window().ui().locationToggleButton, &QAbstractButton::toggled, &m_place, &EntryPlace::setIsWanted);
  connect(&m_place, &EntryPlace::awaitsPlaceDidChange, &window(), &AgentEntryWindow::setShowsLocationSpinner);
  connect(&m_place, &EntryPlace::metadataDidChange, this, &Self::updateMetadataLabel);
  updateMetadataLabel();
}

void AgentEntryWindowController::updateMetadataLabel() {
  window().setEntryMetadataText(m_place.metadataText());
}

bool AgentEntryWindowController::haveAccessToJournalFile() {
  return haveAccessToJournal(m_services.config.configuredJournalFileURL());
}

bool AgentEntryWindowController::isOn(QLatin1StringView key) {
  const auto value = settingValue(m_services.config.groupProperties(), key);
  return value && value->boolValue();
}

bool AgentEntryWindowController::keepsWindowOnScreen() {
  if (PersistentPropertyList* list = m_services.config.groupProperties()) list->synchronize();
  return isOn(Key::keepEntryWindowOnScreen);
}

void AgentEntryWindowController::showWindowInMode(EntryWindowMode mode) {
  // A window that is closing, and waits for an alert, stays closed: the rest of the closing undoes only part of this.
  if (m_isClosing) return;
  // Whatever was changed from outside shows now, whether or not somebody told of it.
  if (PersistentPropertyList* list = m_services.config.groupProperties()) list->synchronize();
  m_services.config.startAccessingSecurityScopedResources();
  addWindowDismissalMonitors();
  m_currentMode = mode;
  const bool reminder = mode == EntryWindowModeReminder;
  endFade();
  Ui::AgentEntryWindow& ui = window().ui();
  const bool accessible = haveAccessToJournalFile();
  // Not without the journal: the draft could not go on with the entry that it belongs to.
  if (accessible) m_session.restoreDraft();
  ui.entryContainerView->setVisible(accessible);
  ui.reconnectView->setVisible(!accessible);
  ui.headerTitle->setText(reminder ? u"Time to write"_s : u"New Entry"_s);
  ui.newEntryIcon->setVisible(!reminder);
  ui.reminderIcon->setVisible(reminder);
  if (accessible)
    showEditor(reminder);
  else
    showReconnectPanel();
  m_isShown = true;
  window().orderFront(/*activate=*/!reminder);
}

void AgentEntryWindowController::showReconnectPanel() {
  const bool isConfigurable = m_services.config.groupProperties() != nullptr;
  const JournalPanel panel = journalPanel(m_services.config.configuredJournalFileURL(), isConfigurable);
  window().setJournalPanel(panel, m_session.hasText() ? whatWasWrittenIsKept() : QString());
}

void AgentEntryWindowController::showEditor(bool reminder) {
  window().ui().snoozeButtonContainer->setVisible(reminder);
  if (reminder) layoutSnoozeButtonsAccordingToUserDefaults();
  window().setScrollBorderFrame(reminder ? condensedScrollFrame : expandedScrollFrame);
  const bool locate = m_place.isAutomatic();
  window().ui().locationToggleButton->setChecked(locate);
  if (locate) fetchLocationOnceShown();
}

void AgentEntryWindowController::settingsDidChange() {
  // What was found for the last entry is not to go into the next one. An entry in hand keeps its place.
  if (m_isShown || m_session.activeEntry() || m_place.isAutomatic()) return;
  window().ui().locationToggleButton->setChecked(false);
  m_place.forget();
}

void AgentEntryWindowController::fetchLocationOnceShown() {
  if (m_place.hasLocationManager() || m_services.firstSearchDelay.count() == 0)
    return fetchLocationAndWeatherIfNeeded();
  QTimer::singleShot(m_services.firstSearchDelay, this, [this] {
    if (m_isShown && !m_isClosing && window().ui().locationToggleButton->isChecked()) fetchLocationAndWeatherIfNeeded();
  });
}

void AgentEntryWindowController::layoutSnoozeButtonsAccordingToUserDefaults() {
  PersistentPropertyList* list = m_services.config.groupProperties();
  const auto interval =
      ReminderInterval::reminderIntervalFromUserDefaults(list ? list->allProperties() : PropertyListDictionary());
  const SnoozeOptions options = snoozeOptions(interval.calendarUnit());
  Ui::AgentEntryWindow& ui = window().ui();
  const QRectF title(options.titleOrigin, QSizeF(ui.snoozeTitle->size()));
  ui.snoozeTitle->setGeometry(flipped(title, ui.snoozeButtonContainer->height()).toRect());
  setSnoozeOption(*ui.snoozeOption1Button, options.option1);
  setSnoozeOption(*ui.snoozeOption2Button, options.option2);
}

void AgentEntryWindowController::snoozeOptionButtonClicked(const Button& sender) {
  const int seconds = sender.tag();
  if (m_reminderAlarm) m_reminderAlarm->snoozeForTimeInterval(seconds);
  close();
}

void AgentEntryWindowController::addWindowDismissalMonitors() {
  if (m_globalEventMonitor || !m_services.outsideClicks) return;
  m_globalEventMonitor = m_services.outsideClicks->addGlobalMonitor([this] { clickedElsewhere(); });
}

void AgentEntryWindowController::removeWindowDismissalMonitors() {
  m_globalEventMonitor.reset();
}

void AgentEntryWindowController::clickedElsewhere() {
  // A reminder stays until the user acts on it, and an alert until it is answered.
  if (m_currentMode == EntryWindowModeReminder || window().hasAttachedSheet()) return;
  if (window().frame().contains(mouseLocation())) return;
  m_sinceDismissal.start();
  m_dismissedAt = QCursor::pos();
  close();
}

bool AgentEntryWindowController::wasJustDismissedHere() const {
  return m_sinceDismissal.isValid() && m_sinceDismissal.elapsed() < oneClickMilliseconds &&
         (QCursor::pos() - m_dismissedAt).manhattanLength() <= oneClickDistance;
}

void AgentEntryWindowController::activationChanged() {
  // Stands in for the monitor where there is none. Looked at a turn later: the keyboard may be on its way to an alert
  // or a menu of this program.
  if (m_globalEventMonitor || !m_isShown || window().isActiveWindow()) return;
  QTimer::singleShot(0, this, [this] {
    const bool left = !QApplication::activeWindow() && !QApplication::activePopupWidget();
    if (m_isShown && left) clickedElsewhere();
  });
}

void AgentEntryWindowController::close() {
  // A second close, while an alert about the save is up, is the same close.
  if (!m_isShown || m_isClosing) return;
  m_isClosing = true;
  removeWindowDismissalMonitors();
  m_place.stopLocating();
  if (saveActiveEntry(/*force=*/false, [this] { finishClosing(); })) finishClosing();
}

void AgentEntryWindowController::closeForReplacement() {
  if (!m_isShown) return;
  m_isClosing = true;
  removeWindowDismissalMonitors();
  m_place.stopLocating();
  // A text that an alert is up about is to be seen again, in the next window.
  if (!window().hasAttachedSheet()) saveForTermination();
  finishClosing();
}

void AgentEntryWindowController::finishClosing() {
  m_currentMode = EntryWindowModeStandard;
  m_services.config.stopAccessingSecurityScopedResources();
  // After the save, so that a click on the icon while an alert is up leaves the observers' flags right in the end.
  m_services.notices.postNotification(Notice::windowWillClose, this);
  m_isShown = false;
  m_isClosing = false;
  m_session.tags().forget();
  window().orderOut();
}

void AgentEntryWindowController::closeButtonClicked() {
  close();
}

void AgentEntryWindowController::escapePressed() {
  if (isOn(Key::escapeClosesEntryWindow)) close();
}

void AgentEntryWindowController::textDidChange() {
  m_session.textDidChange();
  fadeSnoozeRow();
}

void AgentEntryWindowController::fadeSnoozeRow() {
  Ui::AgentEntryWindow& ui = window().ui();
  if (m_snoozeFade || !ui.snoozeButtonContainer->isVisible()) return;
  auto* effect = new QGraphicsOpacityEffect(ui.snoozeButtonContainer);
  ui.snoozeButtonContainer->setGraphicsEffect(effect);
  auto* both = new QParallelAnimationGroup(this);
  auto* fade = new QPropertyAnimation(effect, "opacity", both);
  fade->setStartValue(1.0);
  fade->setEndValue(0.0);
  auto* grow = new QPropertyAnimation(ui.scrollBorderView, "geometry", both);
  grow->setEndValue(flipped(expandedScrollFrame, AgentEntryWindow::frameSize.height()).toRect());
  for (QPropertyAnimation* animation : {fade, grow}) {
    animation->setDuration(fadeMilliseconds);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    both->addAnimation(animation);
  }
  m_snoozeFade = both;
  connect(both, &QAbstractAnimation::finished, this, &AgentEntryWindowController::endFade);
  both->start();
}

void AgentEntryWindowController::endFade() {
  if (!m_snoozeFade) return;
  m_snoozeFade->deleteLater();
  m_snoozeFade->stop();
  m_snoozeFade = nullptr;
  QWidget& row = *window().ui().snoozeButtonContainer;
  row.hide();
  row.setGraphicsEffect(nullptr);
  window().setScrollBorderFrame(expandedScrollFrame);
}

bool AgentEntryWindowController::saveActiveEntry(bool force, std::function<void()> dismissed) {
  Error error;
  // In a draft before the alert, which may stay for long.
  if (m_session.save(force, &error)) return true;
  presentError(error, std::move(dismissed));
  return false;
}

void AgentEntryWindowController::presentError(const Error& error, std::function<void()> dismissed) {
  // The newest is the one to answer: a click on the icon closes the window under the alert of its save button.
  window().endSheets();
  Alert alert = Alert::withError(error);
  if (!m_text.text().isEmpty()) {
    if (!alert.informativeText.isEmpty()) alert.informativeText += u"\n\n"_s;
    alert.informativeText +=
        haveAccessToJournalFile() ? u"What you wrote is kept in this window."_s : whatWasWrittenIsKept();
  }
  m_services.alerts.beginSheet(alert, &window(), [self = QPointer(this), dismissed = std::move(dismissed)](int) {
    if (self && dismissed) dismissed();
  });
}

bool AgentEntryWindowController::saveForTermination() {
  Error error;
  if (m_session.save(/*force=*/false, &error)) return true;
  QLLogError(u"What was written is kept in a draft - %1"_s.arg(error.description()));
  return false;
}

void AgentEntryWindowController::saveButtonClicked() {
  // After a failed save as well: the close saves once more, so that a failure is reported a second time. It is wanted
  // so; the text stays in the window.
  if (!saveActiveEntry(/*force=*/false, [this] { close(); })) return;
  m_session.finish({{QLMixpanelTrackerEntryContextFromAgentKey, true},
                    {QLMixpanelTrackerEntryContextFromReminderKey, m_currentMode == EntryWindowModeReminder}});
  close();
}

void AgentEntryWindowController::openJournalButtonClicked() {
  // An empty text makes an entry too: the main application always has something to open.
  if (!saveActiveEntry(/*force=*/true)) return;
  const auto open = [this](const QString& identifier) {
    return m_services.workspace && m_services.workspace->openURL(QUrl(u"quillo://edit?entryId=%1"_s.arg(identifier)));
  };
  if (m_session.handOver(open)) close();
}

void AgentEntryWindowController::locationButtonToggled(const Button& button) {
  if (!button.isChecked()) {
    // Of this entry only; the setting stays.
    m_place.stopLocating();
    setLocation(nullptr);
    setWeather(std::nullopt);
    return;
  }
  fetchLocationAndWeatherIfNeeded();
  // The desktop may ask for leave to use the place, and take the keyboard for that.
  QTimer::singleShot(refocusDelay, this, [this] {
    if (m_isShown && !window().hasAttachedSheet()) window().makeKeyAndOrderFront();
  });
}

void AgentEntryWindowController::settingsButtonClicked() {
  if (!m_contextualMenu) return;
  if (!m_popUpMenu) m_popUpMenu = std::make_unique<PullDownMenu>(*m_contextualMenu);
  m_popUpMenu->performClick(*window().ui().contextualMenuFrame);
}

void AgentEntryWindowController::reconnectButtonClicked() {
  const auto location = m_services.config.configuredJournalFileURL();
  const QString directory = location && location->isLocalFile() ? location->toLocalFile() : QString();
  m_services.openPanel.beginSheet(u"Choose Quillo Journal Location"_s, directory, &window(), [this](const QString&) {
    // What was chosen is not stored: it is the configured location that is tried again.
    m_services.config.stopAccessingSecurityScopedResources();
    m_services.config.updateBookmarkDataForConfiguredJournalFile();
    showWindowInMode(m_currentMode);
  });
}

void AgentEntryWindowController::createJournalButtonClicked() {
  // Looked at anew: much may have happened since the panel was shown.
  const SuggestedJournal suggested = suggestedJournal();
  useJournal(suggested.location, /*create=*/!suggested.exists);
}

void AgentEntryWindowController::chooseJournalButtonClicked() {
  m_services.openPanel.beginSheet(
      u"Choose Quillo Journal"_s, UserDirectories::current().documents, &window(),
      [this](const QString& path) { useJournal(QUrl::fromLocalFile(path), /*create=*/false); });
}

void AgentEntryWindowController::setUpButtonClicked() {
  // Its window comes where this one is in front.
  if (m_services.workspace && m_services.workspace->openURL(QUrl(u"quillo://setup"_s))) return close();
  presentError(cocoaError(ErrorCode::fileNoSuchFile, u"Quillo could not be opened."_s), {});
}

void AgentEntryWindowController::useJournal(const QUrl& location, bool create) {
  Error error;
  const bool isUsed = quillo::useJournal(m_services.config, location, create, &error);
  // What could not be saved is used all the same.
  if (m_services.config.configuredJournalFileURL() == location) showWindowInMode(m_currentMode);
  if (!isUsed) presentError(error, {});
}

}  // namespace quillo
