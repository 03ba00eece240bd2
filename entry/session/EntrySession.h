#pragma once

#include "entry/session/EntryDraft.h"
#include "entry/session/JournalTags.h"
#include "foundation/Date.h"
#include "foundation/Error.h"
#include "foundation/PropertyListValue.h"
#include "qlcore/EntryDetails.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

class EntryPlace;
class EntryText;
class QLJournalEntryFile;
class QLJournalPackageFile;
class QLMixpanelTracker;
class QuilloConfig;

// What a session works with; it must outlive the session.
struct EntrySessionServices {
  QuilloConfig& config;
  // One for all sessions of the process: one that takes over another's text takes over its draft.
  EntryDraft& draft;
  // Called when there is a first event.
  std::function<QLMixpanelTracker&()> usageTracker;
  // The journal to write into; null, logged, while it cannot be opened.
  std::function<std::shared_ptr<QLJournalPackageFile>()> journalFile;
  // A new, unsaved entry; null while there is no journal for it.
  std::function<std::shared_ptr<QLJournalEntryFile>()> emptyJournalEntry;
  TagSource tags{};
  // Whether a save of an emptied text deletes the entry. Otherwise the entry keeps the text that it had.
  bool deletesEmptiedEntries{true};
};

// An entry that is being written, between an editor's text and the journal: makes the entry, writes it, removes it, and
// keeps a draft on disk of what is not in the journal yet. A save leaves entry and text in place, to be gone on with;
// only finish() and handOver() end it. Text is never dropped: what cannot be saved stays. Shows nothing; errors are
// answered. Main thread only.
class EntrySession : public QObject {
  Q_OBJECT

 public:
  // Text and place must outlive the session.
  EntrySession(EntrySessionServices services, EntryText& text, EntryPlace& place);

  // Null until the first save, and once it is finished.
  [[nodiscard]] const QLJournalEntryFile* activeEntry() const { return m_activeEntry.get(); }
  // Whether something is written: here, or in the draft of an earlier process.
  [[nodiscard]] bool hasText() const;
  // The tags in use in the journal, for completion.
  [[nodiscard]] JournalTags& tags() { return m_tags; }

  // Goes on with an entry of the journal; what there was before must have been saved.
  void open(std::shared_ptr<QLJournalEntryFile> entry);
  // Forgets the entry and empties the text, whatever of it is saved: it was deleted, or another is to begin.
  void close();
  // Takes in what another program has made of the entry, unless the text here is not saved yet: then the next save
  // does. False, with an error, where the entry cannot be read any more; entry and text stay.
  bool refresh(Error* error);
  // Of the entry, or of one that begins now.
  [[nodiscard]] EntryDetails details() const;
  // Changes them, and saves them with the text; of an entry without a text yet, they are kept for its first save. Where
  // an entry cannot be made, or not saved, there is an error; a later save tries again.
  bool setDetails(const EntryDetails& details, Error* error);
  // Place or weather were found for the entry: the next save writes them.
  void placeDidChange();
  // Whether the journal does not have the text yet, or the details of an entry that has a text.
  [[nodiscard]] bool isUnsaved() const { return m_hasUnsavedText || m_hasUnsavedDetails; }

  // To be called when the user has changed the text.
  void textDidChange();

  // Writes the text into the journal: makes the entry on first need, updates it later, deletes the file of one that was
  // emptied. With `force`, an empty text makes an entry too. What another program has changed in it meanwhile comes
  // into the text. On failure the text is in a draft, and the next save tries again.
  bool save(bool force, Error* error);
  // Whether the last save of the entry brought it back after it had been deleted elsewhere, as on another machine: the
  // edit wins, and the person should be told.
  [[nodiscard]] bool hasBroughtEntryBack() const;
  // Ends the entry, which must have been saved, and empties the text. The usage event, where there is an entry, gets
  // `context` and how long it was edited.
  void finish(PropertyListDictionary context);
  // The same without an event, for an entry that `open` opens elsewhere by its identifier: where that answers false,
  // entry and text are taken back. False, too, then.
  bool handOver(const std::function<bool(const QString& identifier)>& open);

  // Moves text that is not in the journal, its entry and its place here. What `other` has saved stays there; a text of
  // one's own is not overwritten.
  void takeOverUnsavedText(EntrySession& other);
  // Goes on with the draft of an earlier process, unless there is an entry or a text already. To be called once the
  // journal can be reached, or its entry would not be found.
  void restoreDraft();

 private:
  bool write(bool force, Error* error);
  bool saveActiveEntry(Error* error);
  void detailsDidChange();
  void removeActiveEntry();
  void forgetActiveEntry();
  void textIsSafe();
  [[nodiscard]] bool shouldAddHashtags();
  [[nodiscard]] EntryDraft::Content draftContent() const;
  void keepDraftSoon();
  void keepDraftNow();
  void takePlaceOfEntry();
  void goOnWithEntry(const EntryDraft::Content& draft);

  EntrySessionServices m_services;
  EntryText& m_text;
  EntryPlace& m_place;
  std::shared_ptr<QLJournalEntryFile> m_activeEntry;
  // Of the first edit since the entry was finished.
  std::optional<Date> m_editBeginDate;
  JournalTags m_tags;
  // The text, or that it was emptied, is not in the journal yet.
  bool m_hasUnsavedText{false};
  bool m_hasUnsavedDetails{false};
  // The entry is not in the journal yet and is to be of a time that was chosen.
  bool m_isDated{false};
  // The text that the entry's tags go with.
  QString m_taggedText;
};

}  // namespace quillo
