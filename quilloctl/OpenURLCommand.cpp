#include "config/Keys.h"
#include "config/Settings.h"
#include "foundation/DistributedNotificationCenter.h"
#include "platform/Workspace.h"
#include "qlcore/Hashtags.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/Command.h"
#include "quilloctl/SettingText.h"
#include "quilloctl/TextEditor.h"

#include <QUrl>
#include <QUrlQuery>

#include <cstdio>
#include <memory>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

struct Request {
  QUrl url;
  // Started by ourselves in a window of its own, which closes with us.
  bool isInTerminal{false};
  QStringList homeArguments;
};

// The command of a quillo: URL is what stands where others have the host.
QString commandOf(const QUrl& url) {
  return url.scheme() == u"quillo" && (url.path().isEmpty() || url.path() == u"/") ? url.host() : QString();
}

// A text with the end that it had: editors give every file a last line break.
QString trimmedEnd(const QString& text, const QString& original) {
  return text.endsWith(u'\n') && !original.endsWith(u'\n') ? text.chopped(1) : text;
}

// The tags that are none of the old text's hashtags stay; they were given by hand.
QStringList tagsAfterEditing(const QStringList& tags, const QString& before, const QString& after) {
  QStringList kept = tags;
  for (const QString& tag : hashtags(before)) kept.removeAll(tag);
  for (const QString& tag : hashtags(after))
    if (!kept.contains(tag, Qt::CaseInsensitive)) kept << tag;
  return kept;
}

bool makesTagsOfHashtags(Context& context) {
  return sharedList(context)->integerForKey(Key::shouldAddHashtags) != Key::hashtagsAreNotTags;
}

int edit(Context& context, const QString& uuid, const EditorChoice& editor) {
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
  return Done;
}

int post(Context& context, const EditorChoice& editor) {
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
  print(entry->uuid());
  return Done;
}

int open(Context& context) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  if (!context.session().workspace.openURL(package->url())) return failed(u"no installed program opens folders"_s);
  return Done;
}

int preferences(Context&) {
  const auto section = [](const QString& title) { print(title + u'\n'); };
  section(
      u"Settings that both applications share. Change one with\n"
      "  quilloctl settings set KEY VALUE\n"
      "and take it back to its default with\n"
      "  quilloctl settings remove KEY\n"
      "These are the defaults:"_s);
  for (const Setting& setting : settingsTable()) {
    if (setting.store != SettingStore::SharedList) continue;
    print(u"  "_s + absentText(setting));
  }
  print({});
  section(u"With commands of their own:"_s);
  for (const QString& line : {u"quilloctl journal set PATH"_s, u"quilloctl reminder set --every \"3 hours\""_s,
                              u"quilloctl reminder on | off"_s, u"quilloctl shortcut set \"cmd+shift+J\""_s,
                              u"quilloctl agent enable | disable"_s})
    print(u"  "_s + line);
  return Done;
}

int updateBookmarks(Context& context) {
  if (!openJournal(context)) return Failed;
  context.config.updateSharedBookmarkDataForConfiguredJournalFile();
  PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  if (!list->dirtyProperties().isEmpty() || !list->objectForKey(Key::journalFileSharedBookmarkData))
    return failed(u"the journal's bookmark was not saved"_s);
  // The agent makes its own bookmark from the shared one when it hears this.
  context.post(Notice::journalPackagePathDidChange);
  return Done;
}

int runInOtherTerminal(const Request& request) {
  return runInTerminalWindow(request.homeArguments +
                             QStringList{u"open-url"_s, u"--in-terminal"_s, request.url.toString(QUrl::FullyEncoded)});
}

int openURL(Context& context, const Request& request) {
  const QString command = commandOf(request.url);
  if (command == u"open") return open(context);
  if (command == u"updatebookmarks") return updateBookmarks(context);
  if (command == u"preferences")
    return outputIsDiscarded() && !request.isInTerminal ? runInOtherTerminal(request) : preferences(context);
  if (command != u"edit" && command != u"post")
    return failed(u"\"%1\" is no command that Quillo knows"_s.arg(request.url.toString()));

  const EditorChoice editor = editorOfUser(QProcessEnvironment::systemEnvironment());
  if (editor.needsTerminal && !standsInTerminal()) {
    if (request.isInTerminal) return failed(u"the editor needs a terminal, and this window is none"_s);
    return runInOtherTerminal(request);
  }
  if (command == u"post") return post(context, editor);
  return edit(context, QUrlQuery(request.url).queryItemValue(u"entryId"_s, QUrl::FullyDecoded), editor);
}

// A window of our own closes with us: what was said in it is to be read first.
void waitForReturn() {
  print(u"\nReturn closes this window."_s);
  // Ends with the line, the input or the window.
  for (int c = std::getchar(); c != EOF && c != '\n';) c = std::getchar();
}

}  // namespace

void addOpenURLCommand(CLI::App& program, Action& action) {
  struct Words {
    std::string url;
    bool isInTerminal{false};
  };
  const auto words = std::make_shared<Words>();
  CLI::App* opener = program.add_subcommand("open-url", "Do what a quillo: URL asks of the main application");
  opener
      ->add_option("URL", words->url,
                   "quillo://open, preferences, post, edit?entryId=UUID or updatebookmarks; texts are edited in "
                   "$VISUAL, else in $EDITOR in a terminal")
      ->required();
  opener->add_flag("--in-terminal", words->isInTerminal)->group("");
  opener->callback([&action, words] {
    action = [words](Context& context) {
      const Request request{QUrl(QString::fromStdString(words->url)), words->isInTerminal, context.homeArguments};
      const int code = openURL(context, request);
      if (request.isInTerminal && (code != Done || commandOf(request.url) == u"preferences")) waitForReturn();
      return code;
    };
  });
}

}  // namespace quillo::ctl
