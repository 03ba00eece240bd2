#include "entry/session/EntrySession.h"

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "config/Settings.h"
#include "entry/session/EntryPlace.h"
#include "entry/session/EntryText.h"
#include "foundation/FileManager.h"
#include "foundation/TimeZone.h"
#include "qlcore/Hashtags.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/QLMixpanelTracker.h"
#include "qlcore/StorableValues.h"

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

bool EntrySession::hasBroughtEntryBack() const {
  return m_activeEntry && m_activeEntry->wasBroughtBack();
}

void EntrySession::open(std::shared_ptr<QLJournalEntryFile> entry) {
  forgetActiveEntry();
  m_activeEntry = std::move(entry);
  m_taggedText = m_activeEntry->string();
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
  if (isUnsaved() || m_text.text() != m_activeEntry->string()) return true;
  m_activeEntry = entry;
  m_taggedText = entry->string();
  if (m_text.text() != entry->string()) m_text.setText(entry->string());
  takePlaceOfEntry();
  return true;
}

EntryDetails EntrySession::details() const {
  EntryDetails details{.creationDate = storableNow(),
                       .timeZone = TimeZone::systemTimeZone().name(),
                       .tags = {},
                       .location = m_place.place(),
                       .weather = m_place.weather()};
  if (!m_activeEntry) return details;
  details.creationDate = m_activeEntry->creationDate();
  details.timeZone = m_activeEntry->timeZone();
  details.tags = m_activeEntry->tags();
  return details;
}

bool EntrySession::setDetails(const EntryDetails& details, Error* error) {
  if (!m_activeEntry) m_activeEntry = m_services.emptyJournalEntry();
  if (!m_activeEntry) return fail(error, journalFileNotFound());
  if (details.creationDate != m_activeEntry->creationDate()) {
    if (!m_activeEntry->setCreationDate(details.creationDate))
      return fail(error,
                  {JournalError::domain, JournalError::NotWritable, u"An entry cannot be of that date."_s, {}, {}});
    m_isDated = !m_activeEntry->fileURLForEntryProperties();
  }
  m_activeEntry->setTimeZone(details.timeZone);
  m_activeEntry->setTags(details.tags);
  if (details.location != m_place.place())
    m_place.setLocation(details.location ? std::make_shared<const QLLocation>(*details.location) : nullptr);
  if (details.weather != m_place.weather()) m_place.setWeather(details.weather);
  detailsDidChange();
  return !m_hasUnsavedDetails || save(/*force=*/false, error);
}

void EntrySession::placeDidChange() {
  if (!m_activeEntry) return;
  if (m_activeEntry->location() != m_place.place() || m_activeEntry->weather() != m_place.weather()) detailsDidChange();
}

void EntrySession::detailsDidChange() {
  // Without a text there is nothing yet that they are the details of.
  if (m_activeEntry->fileURLForEntryProperties() || !m_text.text().isEmpty()) m_hasUnsavedDetails = true;
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
  m_hasUnsavedDetails = false;
  m_isDated = false;
  m_taggedText.clear();
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
    if (m_activeEntry && !m_services.deletesEmptiedEntries) return !m_hasUnsavedDetails || saveActiveEntry(error);
    textIsSafe();
    if (m_activeEntry) removeActiveEntry();
    return true;
  }
  if (!m_activeEntry) m_activeEntry = m_services.emptyJournalEntry();
  if (!m_activeEntry) return fail(error, journalFileNotFound());
  m_activeEntry->setString(written);
  if (shouldAddHashtags())
    m_activeEntry->setTags(tagsAfterEditing(m_activeEntry->tags(), std::exchange(m_taggedText, written), written));
  if (!saveActiveEntry(error)) return false;
  textIsSafe();
  if (m_activeEntry->lastMerge()) m_text.setText(m_taggedText = m_activeEntry->string());
  return true;
}

// When this fails the entry stays active: the next save tries again.
bool EntrySession::saveActiveEntry(Error* error) {
  const auto place = m_place.place();
  const auto weather = m_place.weather();
  m_activeEntry->setLocation(place);
  m_activeEntry->setWeather(weather);
  Error reason;
  if (!m_activeEntry->saveToJournal(m_services.journalFile().get(), &reason)) {
    // What is wrong with the journal itself is told as its path and the reason.
    const QString introduction = u"The entry could not be saved: "_s;
    if (!reason.localizedDescription.startsWith(introduction)) reason.localizedDescription.prepend(introduction);
    return fail(error, reason);
  }
  m_hasUnsavedDetails = false;
  m_isDated = false;
  // Another program may have changed what was not changed here.
  if (m_activeEntry->location() != place || m_activeEntry->weather() != weather) takePlaceOfEntry();
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
  m_hasUnsavedDetails = other.m_hasUnsavedDetails;
  m_isDated = other.m_isDated;
  m_taggedText = other.m_taggedText;
  other.m_text.setText({});
  other.forgetActiveEntry();
  keepDraftSoon();
}

EntryDraft::Content EntrySession::draftContent() const {
  const bool isInJournal = m_activeEntry && m_activeEntry->fileURLForEntryProperties();
  EntryDraft::Content content{.text = m_text.text(),
                              .entryIdentifier = isInJournal ? m_activeEntry->uuid() : QString(),
                              .editBeginDate = m_editBeginDate,
                              .creationDate = m_isDated ? std::optional(m_activeEntry->creationDate()) : std::nullopt};
  // An entry of the journal has them there.
  if (isInJournal) return content;
  content.location = m_place.place();
  content.weather = m_place.weather();
  if (!m_activeEntry) return content;
  content.tags = m_activeEntry->tags();
  if (m_activeEntry->timeZone() != TimeZone::systemTimeZone().name()) content.timeZone = m_activeEntry->timeZone();
  return content;
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
  if (!left->entryIdentifier.isEmpty()) return goOnWithEntry(*left);
  if (left->location) m_place.setLocation(std::make_shared<const QLLocation>(*left->location));
  if (left->weather) m_place.setWeather(left->weather);
  if (!left->creationDate && left->timeZone.isEmpty() && left->tags.isEmpty()) return;
  m_activeEntry = m_services.emptyJournalEntry();
  if (!m_activeEntry) return;
  m_isDated = left->creationDate && m_activeEntry->setCreationDate(*left->creationDate);
  if (!left->timeZone.isEmpty()) m_activeEntry->setTimeZone(left->timeZone);
  m_activeEntry->setTags(left->tags);
}

void EntrySession::goOnWithEntry(const EntryDraft::Content& draft) {
  // A later state of an entry goes on with that entry. Where it is gone, or was changed since, as by the main
  // application, the text becomes a new one.
  const auto package = m_services.journalFile();
  const auto entry = package ? QLJournalEntryFile::entryWithUUID(*package, draft.entryIdentifier, nullptr) : nullptr;
  if (!entry || (entry->string() != draft.text && draft.writtenDate < entry->modificationDate())) return;
  m_activeEntry = entry;
  m_taggedText = entry->string();
  takePlaceOfEntry();
}

}  // namespace quillo
