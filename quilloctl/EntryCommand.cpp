#include "qlcore/Hashtags.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalIndexDeletion.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/Command.h"
#include "quilloctl/EntryEditing.h"
#include "quilloctl/EntryIdentifier.h"
#include "quilloctl/EntryQuestions.h"
#include "quilloctl/EntryText.h"
#include "quilloctl/Moment.h"
#include "quilloctl/Pager.h"

#include <QDate>
#include <QJsonObject>

#include <memory>
#include <optional>
#include <string>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

int show(Context& context, const EntryIdentifier& identifier) {
  const auto package = openJournal(context);
  const auto uuid = package ? identifier.resolve(*package) : std::nullopt;
  if (!uuid) return Failed;
  Error error;
  const auto entry = QLJournalEntryFile::entryWithUUID(*package, *uuid, &error);
  if (!entry) return failed(error.localizedDescription);
  Pager::begin();
  if (context.json)
    printJson(json(shownEntry(*entry)));
  else
    printWhole(shownEntry(*entry));
  return Done;
}

int add(Context& context, const std::optional<std::string>& word, const std::string& on) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  const QString day = QString::fromStdString(on);
  const auto date = momentOfDayFromText(day, QDate::currentDate(), Calendar::currentCalendar());
  const auto entry = QLJournalEntryFile::newEntry();
  if (!on.empty() && (!date || !entry->setCreationDate(*date)))
    return failed(u"\"%1\" is no date; write one as 2014-03-10, 2014-03-10T21:00 or yesterday"_s.arg(day));
  QString reason;
  auto text = word ? std::optional(QString::fromStdString(*word)) : textOfStandardInput(&reason);
  if (!text) return failed(reason);
  if (!word && text->endsWith(u'\n')) text->chop(1);
  if (text->trimmed().isEmpty()) return failed(u"there is no text to add"_s);
  entry->setString(*text);
  if (makesTagsOfHashtags(context)) entry->setTags(hashtags(*text));
  Error error;
  if (!entry->saveToJournal(package.get(), &error)) return failed(error.localizedDescription);
  printAdded(context, *entry);
  return Done;
}

int edit(Context& context, const EntryIdentifier& identifier) {
  const auto package = openJournal(context);
  const auto uuid = package ? identifier.resolve(*package) : std::nullopt;
  return uuid ? editEntry(context, *uuid, editorOfUser(QProcessEnvironment::systemEnvironment())) : Failed;
}

int remove(Context& context, const EntryIdentifier& identifier, bool permanently) {
  const auto package = openJournal(context);
  const auto uuid = package ? identifier.resolve(*package) : std::nullopt;
  if (!uuid) return Failed;
  Error error;
  const auto url = QLJournalEntryFile::fileURL(*package, *uuid, &error);
  if (!url) return failed(error.localizedDescription);
  QLJournalIndex index = QLJournalIndex::unread(package);
  const QLEntry entry{*QLJournalEntryFile::canonicalUUID(*uuid), *url};
  if (!QLJournalIndexOSXAdditions::deleteEntry(index, entry, !permanently, &error))
    return failed(error.localizedDescription);
  if (context.json) printJson(QJsonObject{{u"deleted"_s, entry.uuid}});
  return Done;
}

void addShow(CLI::App& entry, Action& action) {
  CLI::App* shower = entry.add_subcommand("show", "Print an entry");
  const auto identifier = EntryIdentifier::addTo(*shower);
  shower->callback(
      [&action, identifier] { action = [identifier](Context& context) { return show(context, *identifier); }; });
}

void addAdd(CLI::App& entry, Action& action) {
  struct Words {
    std::string text, on;
  };
  const auto words = std::make_shared<Words>();
  CLI::App* adder = entry.add_subcommand("add", "Add an entry and print its identifier");
  const CLI::Option* text = adder->add_option(
      "TEXT", words->text, "The text; - or nothing reads the standard input, until Ctrl+D in a terminal");
  adder->add_option("--on", words->on, "When it was, in place of now: 2014-03-10, 2014-03-10T21:00, yesterday")
      ->type_name("DATE")
      ->check(notEmpty("a date is expected"));
  adder->callback([&action, words, text] {
    const bool isGiven = text->count() > 0 && words->text != "-";
    action = [word = isGiven ? std::optional(words->text) : std::nullopt, words](Context& context) {
      return add(context, word, words->on);
    };
  });
}

void addEdit(CLI::App& entry, Action& action) {
  CLI::App* editor = entry.add_subcommand("edit", "Edit an entry's text in $VISUAL, else in $EDITOR");
  const auto identifier = EntryIdentifier::addTo(*editor);
  editor->callback(
      [&action, identifier] { action = [identifier](Context& context) { return edit(context, *identifier); }; });
}

void addDelete(CLI::App& entry, Action& action) {
  const auto permanently = std::make_shared<bool>(false);
  CLI::App* deleter = entry.add_subcommand("delete", "Move an entry to the Trash")->alias("rm");
  const auto identifier = EntryIdentifier::addTo(*deleter);
  deleter->add_flag("--permanently", *permanently, "Delete it for good");
  deleter->callback([&action, identifier, permanently] {
    action = [identifier, permanently](Context& context) { return remove(context, *identifier, *permanently); };
  });
}

}  // namespace

void addEntryCommand(CLI::App& program, Action& action) {
  CLI::App* entry = program.add_subcommand("entry", "List, search, show, add, edit and delete entries");
  entry->require_subcommand(1);
  addList(*entry, action);
  addSearch(*entry, action);
  addOnThisDay(*entry, action);
  addTags(*entry, action);
  addShow(*entry, action);
  addAdd(*entry, action);
  addEdit(*entry, action);
  addDelete(*entry, action);
}

}  // namespace quillo::ctl
