#include "entry/AgentEntryWindowController.h"

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "controls/Coordinates.h"
#include "controls/Fonts.h"
#include "controls/NinePartScaledImage.h"
#include "entry/AgentEntryWindow.h"
#include "entry/Alerts.h"
#include "entry/JournalAccess.h"
#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "qlcore/Hashtags.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "ui_AgentEntryWindow.h"

#include <QApplication>
#include <QShortcut>
#include <QTimer>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

// Where the text area stands, from the bottom left.
static constexpr QRectF expandedScrollFrame{13, 66, 302, 146};
// The part of the text area's picture that stretches, from the picture's bottom left.
static constexpr QPointF inputBoxScaleTopLeft{5, 141};
static constexpr QPointF inputBoxScaleBottomRight{295, 5};
// How strong the close button's picture is at rest.
static constexpr double closeButtonFraction = 0.6;

static Error journalFileNotFound() {
  return {JournalError::domain,
          JournalError::JournalFileNotFound,
          u"Quillo Journal file not found"_s,
          u"Configure the location in the application preferences."_s,
          {u"Show Preferences"_s, u"Cancel"_s}};
}

// A copy of the picture at that opacity.
static ImageRef dimmed(const ImageRef& image, double fraction) {
  if (!image) return nullptr;
  std::vector<QImage> bitmaps;
  for (const QImage& bitmap : image->bitmaps()) {
    QImage copy(bitmap.size(), QImage::Format_ARGB32_Premultiplied);
    copy.setDevicePixelRatio(bitmap.devicePixelRatio());
    copy.fill(Qt::transparent);
    QPainter painter(&copy);
    painter.setOpacity(fraction);
    painter.drawImage(QPointF(), bitmap);
    painter.end();
    bitmaps.push_back(copy);
  }
  return std::make_shared<Image>(std::move(bitmaps));
}

static void dimAtRest(HoverButtonCell& cell, double fraction) {
  cell.setHoverImage(cell.image());
  cell.setStandardImage(dimmed(cell.image(), fraction));
}

namespace {

// Holds the controller while one of its methods runs. Where it turns out to be the last to do so, the controller goes a
// turn of the event loop later: its window may be in the middle of an event.
class KeepAlive {
 public:
  explicit KeepAlive(AgentEntryWindowController& controller) : m_controller(controller.weak_from_this().lock()) {}
  ~KeepAlive() {
    if (m_controller.use_count() == 1) QTimer::singleShot(0, qApp, [last = std::move(m_controller)] {});
  }
  KeepAlive(const KeepAlive&) = delete;
  KeepAlive& operator=(const KeepAlive&) = delete;

 private:
  std::shared_ptr<AgentEntryWindowController> m_controller;
};

}  // namespace

AgentEntryWindowController::AgentEntryWindowController(QuilloConfig& config, Alerts& alerts)
    : m_config(config), m_alerts(alerts), m_window(std::make_unique<AgentEntryWindow>()) {
  awakeFromNib();
}

AgentEntryWindowController::~AgentEntryWindowController() {
  // The window must not reach a half-destroyed controller.
  m_window->onCloseRequest = {};
}

void AgentEntryWindowController::awakeFromNib() {
  Ui::AgentEntryWindow& ui = m_window->ui();
  ui.backgroundView->setAlpha(0.96);
  ui.scrollBorderView->setGeometry(flipped(expandedScrollFrame, AgentEntryWindow::frameSize.height()).toRect());
  if (const ImageRef inputBox = Image::imageNamed(u"menubar-inputbox"_s))
    ui.scrollBorderView->setNinePartScaledImage(
        std::make_shared<NinePartScaledImage>(*inputBox, inputBoxScaleTopLeft, inputBoxScaleBottomRight));

  ui.textView->setFont(textFont(15));
  const QColor textColor = QColor::fromRgbF(0.2F, 0.2F, 0.2F);
  QPalette palette = ui.textView->palette();
  palette.setColor(QPalette::Text, textColor);
  palette.setColor(QPalette::Highlight, QColor(0xb4, 0xd5, 0xfb));
  palette.setColor(QPalette::HighlightedText, textColor);
  ui.textView->setPalette(palette);
  ui.textView->setTextContainerInset(QSizeF(4, 0));
  dimAtRest(ui.closeButton->cell(), closeButtonFraction);

  connect(ui.textView, &EntryViewTextView::textDidChange, this, &AgentEntryWindowController::textDidChange);
  connect(ui.saveButton, &QAbstractButton::clicked, this, &AgentEntryWindowController::saveButtonClicked);
  connect(ui.closeButton, &QAbstractButton::clicked, this, &AgentEntryWindowController::closeButtonClicked);
  // The number pad's Enter is another key. Like the button's own, this one is dead while the button is hidden.
  connect(new QShortcut(Qt::CTRL | Qt::Key_Enter, ui.saveButton), &QShortcut::activated, ui.saveButton,
          &QAbstractButton::animateClick);
  m_window->onCloseRequest = [this] { close(); };
}

bool AgentEntryWindowController::haveAccessToJournalFile() {
  return haveAccessToJournal(m_config.configuredJournalFileURL());
}

void AgentEntryWindowController::showWindowInMode(EntryWindowMode mode) {
  m_config.startAccessingSecurityScopedResources();
  m_currentMode = mode;
  Ui::AgentEntryWindow& ui = m_window->ui();
  const bool accessible = haveAccessToJournalFile();
  ui.entryContainerView->setVisible(accessible);
  ui.reconnectView->setVisible(!accessible);
  if (!accessible) {
    const auto location = m_config.configuredJournalFileURL();
    ui.reconnectReason->setText(journalAccessProblem(location));
    ui.reconnectPath->setText(journalLocationForDisplay(location));
  }

  const bool reminder = mode == EntryWindowModeReminder;
  ui.headerTitle->setText(reminder ? u"Time to write"_s : u"New Entry"_s);
  ui.newEntryIcon->setVisible(!reminder);
  ui.reminderIcon->setVisible(reminder);
  m_isShown = true;
  m_window->orderFront(/*activate=*/!reminder);
}

void AgentEntryWindowController::close() {
  // An alert about the save keeps the event loop turning: a second close meanwhile is the same close.
  if (!m_isShown || m_isClosing) return;
  const KeepAlive self(*this);
  m_isClosing = true;
  windowWillClose();
  // After the save, so that a click on the icon while an alert is up leaves the observers' flags right in the end.
  NotificationCenter::localCenter().postNotification(Notice::windowWillClose, m_window.get());
  m_isShown = false;
  m_isClosing = false;
  m_window->hide();
}

void AgentEntryWindowController::windowWillClose() {
  saveActiveEntry(/*force=*/false);
  m_currentMode = EntryWindowModeStandard;
  m_config.stopAccessingSecurityScopedResources();
}

std::shared_ptr<QLJournalPackageFile> AgentEntryWindowController::journalFile() const {
  return QLJournalPackageFile::defaultPackage();
}

void AgentEntryWindowController::forgetActiveEntry() {
  m_activeEntry.reset();
  m_editBeginDate.reset();
  m_hasUnsavedText = false;
}

bool AgentEntryWindowController::shouldAddHashtags() {
  PersistentPropertyList* list = m_config.groupProperties();
  if (!list) return true;
  // The main application may have changed it.
  list->synchronize();
  return list->integerForKey(Key::shouldAddHashtags) != Key::hashtagsAreNotTags;
}

void AgentEntryWindowController::removeActiveEntry() {
  // An entry that the user emptied is gone, whether or not its file can be removed.
  if (const auto url = m_activeEntry->fileURLForEntryProperties()) FileManager::removeItemAtURL(*url, false);
  forgetActiveEntry();
}

bool AgentEntryWindowController::writeActiveEntry(bool force, Error* error) {
  const QString written = m_window->ui().textView->string();
  if (!force && written.isEmpty()) {
    m_hasUnsavedText = false;
    if (m_activeEntry) removeActiveEntry();
    return true;
  }
  if (!m_activeEntry) m_activeEntry = QLJournalEntryFile::emptyJournalEntry();
  if (!m_activeEntry) return fail(error, journalFileNotFound());
  m_activeEntry->setString(written);
  if (shouldAddHashtags()) m_activeEntry->setTags(hashtags(written));
  // When this fails the entry stays active: the next save tries again.
  if (!m_activeEntry->saveToJournal(journalFile().get(), error)) return false;
  m_hasUnsavedText = false;
  return true;
}

bool AgentEntryWindowController::saveActiveEntry(bool force) {
  const KeepAlive self(*this);
  Error error;
  if (writeActiveEntry(force, &error)) return true;
  m_alerts.presentError(error, m_window.get());
  return false;
}

bool AgentEntryWindowController::saveForTermination() {
  Error error;
  if (writeActiveEntry(/*force=*/false, &error)) return true;
  QLLogError(u"The entry could not be saved before the end - %1"_s.arg(error.description()));
  return false;
}

void AgentEntryWindowController::takeOverUnsavedText(AgentEntryWindowController& other) {
  EntryViewTextView& own = *m_window->ui().textView;
  EntryViewTextView& others = *other.m_window->ui().textView;
  if (!other.m_hasUnsavedText || !own.string().isEmpty()) return;
  own.setString(others.string());
  own.moveCursor(QTextCursor::End);
  m_activeEntry = std::move(other.m_activeEntry);
  m_editBeginDate = other.m_editBeginDate;
  m_hasUnsavedText = true;
  others.setString({});
  other.forgetActiveEntry();
}

void AgentEntryWindowController::trackActiveEntry() {
  const Date now = Date::fromDateTime(QDateTime::currentDateTimeUtc());
  // The clock may have been set back meanwhile.
  const double seconds = m_editBeginDate ? std::max(0.0, now.timeIntervalSince(*m_editBeginDate)) : 0;
  QLMixpanelTracker::sharedInstance().trackEntryCreate(
      *m_activeEntry, {{QLMixpanelTrackerEntryContextFromAgentKey, true},
                       {QLMixpanelTrackerEntryContextEditTimeKey, static_cast<quint64>(seconds)},
                       {QLMixpanelTrackerEntryContextFromReminderKey, m_currentMode == EntryWindowModeReminder}});
}

void AgentEntryWindowController::saveButtonClicked() {
  const KeepAlive self(*this);
  if (saveActiveEntry(/*force=*/false)) {
    if (m_activeEntry) trackActiveEntry();
    forgetActiveEntry();
    m_window->ui().textView->setString({});
  }
  // After a failed save as well: the close saves once more, so that a failure is reported a second time. It is wanted
  // so; the text stays in the window.
  close();
}

void AgentEntryWindowController::closeButtonClicked() {
  close();
}

void AgentEntryWindowController::textDidChange() {
  m_hasUnsavedText = true;
  if (!m_editBeginDate) m_editBeginDate = Date::fromDateTime(QDateTime::currentDateTimeUtc());
}

}  // namespace quillo
