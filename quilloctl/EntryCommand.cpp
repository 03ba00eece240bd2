#include "config/Keys.h"
#include "foundation/PropertyListJson.h"
#include "foundation/TimeZone.h"
#include "qlcore/Hashtags.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalIndexDeletion.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/Command.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>

#include <memory>
#include <optional>
#include <string>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

QJsonObject json(const QLJournalEntryFile& entry) {
  QJsonObject object{{u"uuid"_s, entry.uuid()},
                     {u"text"_s, entry.string()},
                     {u"tags"_s, QJsonArray::fromStringList(entry.tags())},
                     {u"creationDate"_s, entry.creationDate().toISO8601()},
                     {u"modificationDate"_s, entry.modificationDate().toISO8601()},
                     {u"timeZone"_s, entry.timeZone()}};
  if (const auto location = entry.location()) object[u"location"_s] = jsonFromPropertyList(location->toPropertyList());
  if (const auto weather = entry.weather()) object[u"weather"_s] = jsonFromPropertyList(weather->toPropertyList());
  return object;
}

// As a clock showed it where the entry was written, with that zone's offset: "2014-03-10T21:00:00+01:00".
QString timeOfEntry(Date date, const QLJournalEntryFile& entry) {
  const auto zone = TimeZone::timeZoneWithName(entry.timeZone());
  const QDateTime utc = date.toDateTime();
  if (!zone || !utc.isValid()) return date.toISO8601();
  const QString text = utc.toOffsetFromUtc(zone->secondsFromUTC(utc.toSecsSinceEpoch())).toString(Qt::ISODate);
  // There is none for years of more than four digits.
  return text.isEmpty() ? date.toISO8601() : text;
}

// One line: what it is found by, when it was written, how it begins.
QString summary(const QLJournalEntryFile& entry) {
  constexpr qsizetype shown = 60;
  QString text = entry.string().left(4 * shown).simplified();
  if (text.size() > shown) text = text.left(shown - 1) + u'…';
  return withoutControls(entry.uuid() + u"  "_s + timeOfEntry(entry.creationDate(), entry) + u"  "_s + text);
}

int list(Context& context, int limit) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  const QLJournalIndex index(package);
  // An empty list would look like an empty journal.
  if (const auto& error = index.readError()) return failed(error->localizedDescription);
  const auto entries =
      limit > 0 ? index.entries().first(std::min<qsizetype>(limit, index.entries().size())) : index.entries();
  QJsonArray array;
  for (const auto& entry : entries) {
    if (context.json)
      array << json(*entry);
    else
      print(summary(*entry));
  }
  if (context.json) printJson(array);
  for (const auto& damaged : index.damagedEntries()) failed(damaged.reason);
  return Done;
}

int show(Context& context, const QString& uuid) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  Error error;
  const auto entry = QLJournalEntryFile::entryWithUUID(*package, uuid, &error);
  if (!entry) return failed(error.localizedDescription);
  if (context.json) {
    printJson(json(*entry));
    return Done;
  }
  print(u"uuid:     "_s + entry->uuid());
  print(u"created:  "_s + timeOfEntry(entry->creationDate(), *entry) + u' ' + entry->timeZone());
  print(u"modified: "_s + timeOfEntry(entry->modificationDate(), *entry));
  if (!entry->tags().isEmpty()) print(u"tags:     "_s + entry->tags().join(u", "_s));
  if (const auto location = entry->location(); location && !location->placeName.isEmpty())
    print(u"place:    "_s + location->placeName);
  print(QString());
  print(entry->string());
  return Done;
}

int add(Context& context, const std::optional<std::string>& word) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  QString reason;
  auto text = word ? std::optional(QString::fromStdString(*word)) : textOfStandardInput(&reason);
  if (!text) return failed(reason);
  if (!word && text->endsWith(u'\n')) text->chop(1);
  if (text->trimmed().isEmpty()) return failed(u"there is no text to add"_s);
  const auto entry = QLJournalEntryFile::newEntry();
  entry->setString(*text);
  if (sharedList(context)->integerForKey(Key::shouldAddHashtags) != Key::hashtagsAreNotTags)
    entry->setTags(hashtags(*text));
  Error error;
  if (!entry->saveToJournal(package.get(), &error)) return failed(error.localizedDescription);
  if (context.json)
    printJson(json(*entry));
  else
    print(entry->uuid());
  return Done;
}

int remove(Context& context, const QString& uuid, bool permanently) {
  const auto package = openJournal(context);
  if (!package) return Failed;
  Error error;
  const auto url = QLJournalEntryFile::fileURL(*package, uuid, &error);
  if (!url) return failed(error.localizedDescription);
  QLJournalIndex index = QLJournalIndex::unread(package);
  const QLEntry entry{*QLJournalEntryFile::canonicalUUID(uuid), *url};
  if (!QLJournalIndexOSXAdditions::deleteEntry(index, entry, !permanently, &error))
    return failed(error.localizedDescription);
  if (context.json) printJson(QJsonObject{{u"deleted"_s, uuid.toUpper()}});
  return Done;
}

// The parser's own check tells the range in digits by the hundred.
CLI::Validator atLeastOne() {
  return CLI::Validator(
      [](const std::string& word) {
        return QString::fromStdString(word).toLongLong() > 0 ? std::string() : "a whole number from 1 is expected";
      },
      "");
}

}  // namespace

void addEntryCommand(CLI::App& program, Action& action) {
  struct Words {
    std::string uuid, text;
    int limit{0};
    bool permanently{false};
  };
  const auto words = std::make_shared<Words>();
  const auto uuid = [words] { return QString::fromStdString(words->uuid); };
  CLI::App* entry = program.add_subcommand("entry", "List, show, add and delete entries");
  entry->require_subcommand(1);

  CLI::App* lister = entry->add_subcommand("list", "Print the entries, newest first, one a line");
  lister->add_option("--limit", words->limit, "How many at most")->type_name("COUNT")->check(atLeastOne());
  lister->callback([&action, words] { action = [words](Context& context) { return list(context, words->limit); }; });

  CLI::App* shower = entry->add_subcommand("show", "Print an entry");
  shower->add_option("UUID", words->uuid, "Its identifier, as list prints it")->required();
  shower->callback([&action, uuid] { action = [uuid](Context& context) { return show(context, uuid()); }; });

  CLI::App* adder = entry->add_subcommand("add", "Add an entry and print its identifier");
  const CLI::Option* text = adder->add_option(
      "TEXT", words->text, "The text; - or nothing reads the standard input, until Ctrl+D in a terminal");
  adder->callback([&action, words, text] {
    const bool isGiven = text->count() > 0 && words->text != "-";
    action = [word = isGiven ? std::optional(words->text) : std::nullopt](Context& context) {
      return add(context, word);
    };
  });

  CLI::App* deleter = entry->add_subcommand("delete", "Move an entry to the Trash");
  deleter->add_option("UUID", words->uuid, "Its identifier, as list prints it")->required();
  deleter->add_flag("--permanently", words->permanently, "Delete it for good");
  deleter->callback([&action, uuid, words] {
    action = [uuid, words](Context& context) { return remove(context, uuid(), words->permanently); };
  });
}

}  // namespace quillo::ctl
