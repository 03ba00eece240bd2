// What the controller does with the text: into the journal, out of it, on to the main application, and into a draft
// while it is nowhere else.

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/PullDownMenu.h"
#include "entry/session/Alerts.h"
#include "entry/session/JournalAccess.h"
#include "entry/session/OpenPanel.h"
#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "foundation/UserDirectories.h"
#include "platform/Workspace.h"
#include "qlcore/Hashtags.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "ui_AgentEntryWindow.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

static Error journalFileNotFound() {
  return {JournalError::domain,
          JournalError::JournalFileNotFound,
          u"Quillo Journal file not found"_s,
          u"Configure the location in the application preferences."_s,
          {u"Show Preferences"_s, u"Cancel"_s}};
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
  PersistentPropertyList* list = m_services.config.groupProperties();
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
  // Never shown, there is nothing to write.
  if (!m_window && !force) return true;
  window().ui().textView->commitComposition();
  const QString written = window().ui().textView->string();
  if (!force && written.isEmpty()) {
    textIsSafe();
    if (m_activeEntry) removeActiveEntry();
    return true;
  }
  if (!m_activeEntry) m_activeEntry = QLJournalEntryFile::emptyJournalEntry();
  if (!m_activeEntry) return fail(error, journalFileNotFound());
  m_activeEntry->setString(written);
  if (shouldAddHashtags()) m_activeEntry->setTags(hashtags(written));
  m_activeEntry->setLocation(m_location ? std::optional(*m_location) : std::nullopt);
  m_activeEntry->setWeather(m_weather);
  // When this fails the entry stays active: the next save tries again.
  if (!m_activeEntry->saveToJournal(journalFile().get(), error)) {
    // What is wrong with the journal itself is told as its path and the reason.
    const QString introduction = u"The entry could not be saved: "_s;
    if (!error->localizedDescription.startsWith(introduction)) error->localizedDescription.prepend(introduction);
    return false;
  }
  textIsSafe();
  return true;
}

void AgentEntryWindowController::textIsSafe() {
  // Where there was none to save here, the draft is that of the window which took this one's text over.
  if (std::exchange(m_hasUnsavedText, false)) m_services.draft.remove();
}

bool AgentEntryWindowController::saveActiveEntry(bool force, std::function<void()> dismissed) {
  Error error;
  if (writeActiveEntry(force, &error)) return true;
  // Before the alert, which may stay for long.
  keepDraftNow();
  presentError(error, std::move(dismissed));
  return false;
}

void AgentEntryWindowController::presentError(const Error& error, std::function<void()> dismissed) {
  // The newest is the one to answer: a click on the icon closes the window under the alert of its save button.
  window().endSheets();
  Alert alert = Alert::withError(error);
  if (!window().ui().textView->string().isEmpty()) {
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
  if (writeActiveEntry(/*force=*/false, &error)) return true;
  keepDraftNow();
  QLLogError(u"What was written is kept in a draft - %1"_s.arg(error.description()));
  return false;
}

void AgentEntryWindowController::takeOverUnsavedText(AgentEntryWindowController& other) {
  if (!other.m_hasUnsavedText) return;
  EntryViewTextView& own = *window().ui().textView;
  EntryViewTextView& others = *other.window().ui().textView;
  if (!own.string().isEmpty()) return;
  own.setString(others.string());
  own.moveCursor(QTextCursor::End);
  m_activeEntry = std::move(other.m_activeEntry);
  m_editBeginDate = other.m_editBeginDate;
  setLocation(other.m_location);
  setWeather(other.m_weather);
  m_hasUnsavedText = true;
  others.setString({});
  other.forgetActiveEntry();
  keepDraftSoon();
  m_tags.refresh(m_services.config.configuredJournalFileURL());
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
  // After a failed save as well: the close saves once more, so that a failure is reported a second time. It is wanted
  // so; the text stays in the window.
  if (!saveActiveEntry(/*force=*/false, [this] { close(); })) return;
  if (m_activeEntry) trackActiveEntry();
  forgetActiveEntry();
  window().ui().textView->setString({});
  close();
}

void AgentEntryWindowController::openJournalButtonClicked() {
  // An empty text makes an entry too: the main application always has something to open.
  if (!saveActiveEntry(/*force=*/true)) return;
  EntryViewTextView& textView = *window().ui().textView;
  const QString written = textView.string();
  textView.setString({});
  const auto entry = std::exchange(m_activeEntry, nullptr);
  m_editBeginDate.reset();
  const QUrl url(u"quillo://edit?entryId=%1"_s.arg(entry->uuid()));
  if (m_services.workspace && m_services.workspace->openURL(url)) {
    close();
    return;
  }
  m_activeEntry = entry;
  textView.setString(written);
  textView.moveCursor(QTextCursor::End);
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

void AgentEntryWindowController::useJournal(const QUrl& location, bool create) {
  Error error;
  // A home that is new has no folder of documents yet.
  if (create) QDir().mkpath(QFileInfo(location.toLocalFile()).path());
  const auto package = QLJournalPackageFile::openPackage(location, create, &error);
  if (!package) return presentError(error, {});
  m_services.config.setConfiguredJournalFileURL(package->url());
  showWindowInMode(m_currentMode);
  PersistentPropertyList* list = m_services.config.groupProperties();
  if (list && !list->dirtyProperties().contains(Key::journalPackageURL)) return;
  presentError({JournalError::domain,
                JournalError::NotWritable,
                u"The place of the journal could not be saved in the settings."_s,
                u"It is used until Quillo ends. The log has the reason."_s,
                {}},
               {});
}

EntryDraft::Content AgentEntryWindowController::draftContent() const {
  const bool isInJournal = m_activeEntry && m_activeEntry->fileURLForEntryProperties();
  return {m_window->ui().textView->string(), isInJournal ? m_activeEntry->uuid() : QString(), m_editBeginDate};
}

void AgentEntryWindowController::keepDraftSoon() {
  // The draft outlives its windows.
  m_services.draft.writeSoon([self = QPointer(this)]() -> std::optional<EntryDraft::Content> {
    return self ? std::optional(self->draftContent()) : std::nullopt;
  });
}

void AgentEntryWindowController::keepDraftNow() {
  if (!m_window || m_window->ui().textView->string().isEmpty()) return;
  // Also a text that has not changed since it was saved: the journal that has it may be gone.
  m_hasUnsavedText = true;
  m_services.draft.write(draftContent());
}

void AgentEntryWindowController::restoreDraft() {
  EntryViewTextView& textView = *window().ui().textView;
  if (m_activeEntry || !textView.string().isEmpty()) return;
  const auto left = m_services.draft.takeLeftBehind();
  if (!left || left->text.isEmpty()) return;
  textView.setString(left->text);
  textView.moveCursor(QTextCursor::End);
  m_editBeginDate = left->editBeginDate;
  m_hasUnsavedText = true;
  m_tags.refresh(m_services.config.configuredJournalFileURL());
  if (left->entryIdentifier.isEmpty()) return;
  // A later state of an entry goes on with that entry. Where it is gone, or was changed since, as by the main
  // application, the text becomes a new one.
  const auto package = journalFile();
  const auto entry = package ? QLJournalEntryFile::entryWithUUID(*package, left->entryIdentifier, nullptr) : nullptr;
  if (!entry || (entry->string() != left->text && left->writtenDate < entry->modificationDate())) return;
  m_activeEntry = entry;
  // Or the next save would take them from the entry.
  if (const auto& place = m_activeEntry->location()) setLocation(std::make_shared<const QLLocation>(*place));
  setWeather(m_activeEntry->weather());
}

}  // namespace quillo
