#include "entry/session/EntrySession.h"

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "config/Settings.h"
#include "entry/session/EntryPlace.h"
#include "entry/session/EntryText.h"
#include "foundation/FileManager.h"
#include "qlcore/Hashtags.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"

#include <QPointer>

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

EntrySession::EntrySession(EntrySessionServices services, EntryText& text, EntryPlace& place)
    : m_services(std::move(services)), m_text(text), m_place(place), m_tags(m_services.tags) {}

bool EntrySession::hasText() const {
  return !m_text.text().isEmpty() || m_services.draft.isLeftBehind();
}

void EntrySession::open(std::shared_ptr<QLJournalEntryFile> entry) {
  forgetActiveEntry();
  m_activeEntry = std::move(entry);
  m_text.setText(m_activeEntry->string());
  takePlaceOfEntry();
}

void EntrySession::close() {
  textIsSafe();
  forgetActiveEntry();
  m_text.setText({});
  m_place.setLocation(nullptr);
  m_place.setWeather({});
}

bool EntrySession::refresh(Error* error) {
  if (!m_activeEntry || !m_activeEntry->fileURLForEntryProperties()) return true;
  Error reason;
  const auto package = m_services.journalFile();
  const auto entry = package ? QLJournalEntryFile::entryWithUUID(*package, m_activeEntry->uuid(), &reason) : nullptr;
  if (!package) reason = journalFileNotFound();
  if (!entry) return fail(error, reason);
  m_text.commitComposition();
  if (m_hasUnsavedText || m_text.text() != m_activeEntry->string()) return true;
  m_activeEntry = entry;
  if (m_text.text() != entry->string()) m_text.setText(entry->string());
  takePlaceOfEntry();
  return true;
}

bool EntrySession::update(const std::function<void(QLJournalEntryFile&)>& change, Error* error) {
  if (!m_activeEntry) m_activeEntry = m_services.emptyJournalEntry();
  if (!m_activeEntry) return fail(error, journalFileNotFound());
  change(*m_activeEntry);
  return save(/*force=*/false, error);
}

// Or the next save would take them from the entry.
void EntrySession::takePlaceOfEntry() {
  const auto& place = m_activeEntry->location();
  m_place.setLocation(place ? std::make_shared<const QLLocation>(*place) : nullptr);
  m_place.setWeather(m_activeEntry->weather());
}

void EntrySession::textDidChange() {
  m_hasUnsavedText = true;
  keepDraftSoon();
  if (!m_editBeginDate) m_editBeginDate = Date::now();
}

bool EntrySession::shouldAddHashtags() {
  PersistentPropertyList* list = m_services.config.groupProperties();
  // The main application may have changed it.
  if (list) list->synchronize();
  const PropertyListValue setting = settingValue(list, Key::shouldAddHashtags).value_or(PropertyListValue());
  return setting.integerValue() != Key::hashtagsAreNotTags;
}

void EntrySession::forgetActiveEntry() {
  m_activeEntry.reset();
  m_editBeginDate.reset();
  m_hasUnsavedText = false;
}

void EntrySession::removeActiveEntry() {
  // An entry that the user emptied is gone, whether or not its file can be removed.
  if (const auto url = m_activeEntry->fileURLForEntryProperties()) FileManager::removeItemAtURL(*url, false);
  forgetActiveEntry();
}

void EntrySession::textIsSafe() {
  // Where there was none to save here, the draft is that of the session which took this one's text over.
  if (std::exchange(m_hasUnsavedText, false)) m_services.draft.remove();
}

bool EntrySession::save(bool force, Error* error) {
  if (write(force, error)) return true;
  keepDraftNow();
  return false;
}

bool EntrySession::write(bool force, Error* error) {
  m_text.commitComposition();
  const QString written = m_text.text();
  if (!force && written.isEmpty()) {
    if (m_activeEntry && !m_services.deletesEmptiedEntries) return true;
    textIsSafe();
    if (m_activeEntry) removeActiveEntry();
    return true;
  }
  if (!m_activeEntry) m_activeEntry = m_services.emptyJournalEntry();
  if (!m_activeEntry) return fail(error, journalFileNotFound());
  const QString before = m_activeEntry->string();
  m_activeEntry->setString(written);
  if (shouldAddHashtags()) m_activeEntry->setTags(tagsAfterEditing(m_activeEntry->tags(), before, written));
  const auto& place = m_place.location();
  m_activeEntry->setLocation(place ? std::optional(*place) : std::nullopt);
  m_activeEntry->setWeather(m_place.weather());
  Error reason;
  // When this fails the entry stays active: the next save tries again.
  if (!m_activeEntry->saveToJournal(m_services.journalFile().get(), &reason)) {
    // What is wrong with the journal itself is told as its path and the reason.
    const QString introduction = u"The entry could not be saved: "_s;
    if (!reason.localizedDescription.startsWith(introduction)) reason.localizedDescription.prepend(introduction);
    return fail(error, reason);
  }
  textIsSafe();
  if (m_activeEntry->lastMerge()) m_text.setText(m_activeEntry->string());
  return true;
}

void EntrySession::finish(PropertyListDictionary context) {
  if (m_activeEntry) {
    // The clock may have been set back meanwhile.
    const double seconds = m_editBeginDate ? std::max(0.0, Date::now().timeIntervalSince(*m_editBeginDate)) : 0;
    context.insert(QLMixpanelTrackerEntryContextEditTimeKey, static_cast<quint64>(seconds));
    m_services.usageTracker().trackEntryCreate(*m_activeEntry, context);
  }
  forgetActiveEntry();
  m_text.setText({});
}

bool EntrySession::handOver(const std::function<bool(const QString& identifier)>& open) {
  const QString written = m_text.text();
  m_text.setText({});
  const auto entry = std::exchange(m_activeEntry, nullptr);
  m_editBeginDate.reset();
  if (open(entry->uuid())) return true;
  m_activeEntry = entry;
  m_text.setText(written);
  return false;
}

void EntrySession::takeOverUnsavedText(EntrySession& other) {
  if (!other.m_hasUnsavedText || !m_text.text().isEmpty()) return;
  m_text.setText(other.m_text.text());
  m_activeEntry = std::move(other.m_activeEntry);
  m_editBeginDate = other.m_editBeginDate;
  m_place.setLocation(other.m_place.location());
  m_place.setWeather(other.m_place.weather());
  m_hasUnsavedText = true;
  other.m_text.setText({});
  other.forgetActiveEntry();
  keepDraftSoon();
}

EntryDraft::Content EntrySession::draftContent() const {
  const bool isInJournal = m_activeEntry && m_activeEntry->fileURLForEntryProperties();
  return {m_text.text(), isInJournal ? m_activeEntry->uuid() : QString(), m_editBeginDate};
}

void EntrySession::keepDraftSoon() {
  // The draft outlives its sessions.
  m_services.draft.writeSoon([self = QPointer(this)]() -> std::optional<EntryDraft::Content> {
    return self ? std::optional(self->draftContent()) : std::nullopt;
  });
}

void EntrySession::keepDraftNow() {
  if (m_text.text().isEmpty()) return;
  // Also a text that has not changed since it was saved: the journal that has it may be gone.
  m_hasUnsavedText = true;
  m_services.draft.write(draftContent());
}

void EntrySession::restoreDraft() {
  if (m_activeEntry || !m_text.text().isEmpty()) return;
  const auto left = m_services.draft.takeLeftBehind();
  if (!left || left->text.isEmpty()) return;
  m_text.setText(left->text);
  m_editBeginDate = left->editBeginDate;
  m_hasUnsavedText = true;
  if (!left->entryIdentifier.isEmpty()) goOnWithEntry(*left);
}

void EntrySession::goOnWithEntry(const EntryDraft::Content& draft) {
  // A later state of an entry goes on with that entry. Where it is gone, or was changed since, as by the main
  // application, the text becomes a new one.
  const auto package = m_services.journalFile();
  const auto entry = package ? QLJournalEntryFile::entryWithUUID(*package, draft.entryIdentifier, nullptr) : nullptr;
  if (!entry || (entry->string() != draft.text && draft.writtenDate < entry->modificationDate())) return;
  m_activeEntry = entry;
  takePlaceOfEntry();
}

}  // namespace quillo
