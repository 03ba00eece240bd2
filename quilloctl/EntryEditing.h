#pragma once

#include "quilloctl/Command.h"
#include "quilloctl/TextEditor.h"

namespace quillo {
class QLJournalEntryFile;
}

namespace quillo::ctl {

// Whether the hashtags of a text become tags of its entry. To be called once the shared list could be read.
[[nodiscard]] bool makesTagsOfHashtags(Context& context);

// Lets the user change the text of an entry, or write that of a new one, which is then printed as one that was added.
// Answer an exit code. An entry that somebody else has changed meanwhile stays as it is then, and so does one whose
// text was emptied; a new one without a text is none.
int editEntry(Context& context, const QString& uuid, const EditorChoice& editor);
int writeEntry(Context& context, const EditorChoice& editor);

void printAdded(const Context& context, const QLJournalEntryFile& entry);

}  // namespace quillo::ctl
