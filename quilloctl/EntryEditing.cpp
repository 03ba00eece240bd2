#include "quilloctl/EntryEditing.h"

#include "config/Keys.h"
#include "qlcore/Hashtags.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/EntryText.h"

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

// A text with the end that it had: editors give every file a last line break.
QString trimmedEnd(const QString& text, const QString& original) {
  return text.endsWith(u'\n') && !original.endsWith(u'\n') ? text.chopped(1) : text;
}

}  // namespace

bool makesTagsOfHashtags(Context& context) {
  return sharedList(context)->integerForKey(Key::shouldAddHashtags) != Key::hashtagsAreNotTags;
}

int editEntry(Context& context, const QString& uuid, const EditorChoice& editor) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  Error error;
  const auto entry = QLJournalEntryFile::entryWithUUID(*package, uuid, &error);
  if (!entry) return failed(error.localizedDescription);
  const QString before = entry->string();
  const auto draft = Draft::withText(context, before);
  if (!draft) return Failed;
  const auto edited = draft->edit(context, editor);
  if (!edited) return Failed;
  const QString after = trimmedEnd(*edited, before);

  if (after == before) {
    draft->discard();
    if (context.json) printJson(json(shownEntry(*entry)));
    return Done;
  }
  if (after.trimmed().isEmpty()) {
    draft->discard();
    return failed(u"the text is empty and the entry stays as it was; quilloctl entry delete deletes it"_s);
  }
  // Somebody else may have written meanwhile; theirs is not lost for ours.
  const auto now = QLJournalEntryFile::entryWithUUID(*package, uuid, &error);
  if (!now) return draft->kept(context, u"the entry cannot be read any more, "_s + error.localizedDescription);
  if (now->string() != before || now->modificationDate() != entry->modificationDate())
    return draft->kept(context, u"the entry was changed by another program meanwhile and stays as that left it"_s);
  now->setString(after);
  if (makesTagsOfHashtags(context)) now->setTags(tagsAfterEditing(now->tags(), before, after));
  if (!now->saveToJournal(package.get(), &error)) return draft->kept(context, error.localizedDescription);
  draft->discard();
  if (context.json) printJson(json(shownEntry(*now)));
  return Done;
}

void printAdded(const Context& context, const QLJournalEntryFile& entry) {
  if (context.json)
    printJson(json(shownEntry(entry)));
  else
    print(entry.uuid());
}

int writeEntry(Context& context, const EditorChoice& editor) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  const auto draft = Draft::withText(context, {});
  if (!draft) return Failed;
  const auto text = draft->edit(context, editor);
  if (!text) return Failed;
  if (text->trimmed().isEmpty()) {
    draft->discard();
    return Done;
  }
  const auto entry = QLJournalEntryFile::newEntry();
  entry->setString(trimmedEnd(*text, {}));
  if (makesTagsOfHashtags(context)) entry->setTags(hashtags(entry->string()));
  Error error;
  if (!entry->saveToJournal(package.get(), &error)) return draft->kept(context, error.localizedDescription);
  draft->discard();
  printAdded(context, *entry);
  return Done;
}

}  // namespace quillo::ctl
