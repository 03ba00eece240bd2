#include "quilloctl/EntryQuestions.h"

#include "qlcore/QLJournalPackageFile.h"
#include "qlcore/index/QuestionDates.h"
#include "quilloctl/EntryText.h"
#include "quilloctl/JournalIndex.h"
#include "quilloctl/Pager.h"
#include "quilloctl/Terminal.h"

#include <QJsonObject>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 unlimited = std::numeric_limits<qint64>::max();

// How a list of entries is printed.
struct Listing {
  int limit{0};  // 0: all
  bool isReversed{false};
  bool isLong{false};

  [[nodiscard]] qint64 most() const { return limit > 0 ? limit : unlimited; }
};

using Printer = void (*)(const IndexedEntry&);

std::shared_ptr<Listing> addListing(CLI::App& command) {
  auto listing = std::make_shared<Listing>();
  command.add_option("--limit", listing->limit, "How many at most")->type_name("COUNT")->check(atLeastOne());
  command.add_flag("--reverse", listing->isReversed, "The oldest first");
  command.add_flag("--long", listing->isLong, "The whole of each entry");
  return listing;
}

// Asks in portions, so that the first entries are printed soon and none stays in memory.
void printAnswer(const Context& context, JournalSearchIndex& index, JournalQuestion question, const Listing& listing,
                 Printer printEntry) {
  if (listing.isReversed) question.order = JournalQuestion::Order::OldestFirst;
  std::optional<JsonList> list;
  if (context.json) list.emplace();
  constexpr qint64 firstPortion = 50;
  constexpr qint64 largestPortion = 2000;
  qint64 portion = firstPortion;
  for (question.offset = 0; question.offset < listing.most() && !outputIsGone();) {
    question.limit = std::min(portion, listing.most() - question.offset);
    const JournalAnswer answer = index.ask(question);
    for (const IndexedEntry& entry : answer.entries) {
      if (list)
        list->add(question.phrases.isEmpty() ? json(entry) : jsonWithMatches(entry));
      else
        printEntry(entry);
    }
    if (answer.entries.size() < question.limit) break;
    question.offset += question.limit;
    portion = largestPortion;
  }
  if (list) list->end();
}

// Prints what `question` finds, and then which files could not be looked into.
int answer(Context& context, const JournalQuestion& question, const Listing& listing, Printer printEntry) {
  const auto package = openJournal(context);
  const auto index = package ? indexOfJournal(*package) : nullptr;
  if (!index) return Failed;
  Pager::begin();
  printAnswer(context, *index, question, listing, listing.isLong ? printIndented : printEntry);
  for (const IndexedDamage& damaged : index->damagedEntries()) failed(damaged.reason);
  return Done;
}

struct ListWords {
  std::string on, since, before;
  std::vector<std::string> tags;
};

// The days that are meant, or none where nothing is said; false, with the reason said, where it is no date.
bool readDays(const std::string& word, const QString& option, std::optional<DaySpan>& days) {
  if (word.empty()) return true;
  const QString text = QString::fromStdString(word);
  days = daysMeant(text, QDate::currentDate());
  if (!days)
    failed(u"%1: \"%2\" is no date; write one as 2014-03-10, 2014-03, yesterday or last-tuesday"_s.arg(option, text));
  return days.has_value();
}

int list(Context& context, const ListWords& words, const Listing& listing) {
  std::optional<DaySpan> on;
  std::optional<DaySpan> since;
  std::optional<DaySpan> before;
  if (!readDays(words.on, u"--on"_s, on) || !readDays(words.since, u"--since"_s, since) ||
      !readDays(words.before, u"--before"_s, before))
    return Failed;
  JournalQuestion question;
  const auto from = [&question](QDate day) { question.firstDay = std::max(question.firstDay.value_or(day), day); };
  const auto until = [&question](QDate day) { question.lastDay = std::min(question.lastDay.value_or(day), day); };
  if (on) from(on->first);
  if (on) until(on->last);
  if (since) from(since->first);
  if (before) until(before->first.addDays(-1));
  for (const std::string& tag : words.tags) {
    const QString name = QString::fromStdString(tag);
    question.tags << JournalQuestion::Name{name.startsWith(u'#') ? name.mid(1) : name, false};
  }
  return answer(context, question, listing, printLine);
}

int search(Context& context, const std::vector<std::string>& words, bool bestFirst, const Listing& listing) {
  QStringList typed;
  for (const std::string& word : words) typed << QString::fromStdString(word);
  QString problem;
  auto question = JournalQuestion::parse(typed.join(u' '), QDate::currentDate(), &problem);
  if (!question) return failed(problem);
  if (bestFirst) question->order = JournalQuestion::Order::BestFirst;
  return answer(context, *question, listing, printFound);
}

int onThisDay(Context& context, const Listing& listing) {
  JournalQuestion question;
  question.anniversary = JournalQuestion::Anniversary{QDate::currentDate()};
  return answer(context, question, listing, printFound);
}

int tags(Context& context, int limit) {
  const auto package = openJournal(context);
  const auto index = package ? indexOfJournal(*package) : nullptr;
  if (!index) return Failed;
  QList<JournalCount> counts = index->counts({}, JournalCountBy::Tag);
  if (limit > 0) counts = counts.mid(0, limit);
  Pager::begin();
  if (context.json) {
    JsonList list;
    for (const JournalCount& tag : counts) list.add({{u"tag"_s, tag.name}, {u"entries"_s, tag.count}});
    list.end();
    return Done;
  }
  const qsizetype width = counts.isEmpty() ? 0 : QString::number(counts.first().count).size();
  for (const JournalCount& tag : counts) {
    StyledLine line;
    const QString number = QString::number(tag.count);
    print(line.gap(static_cast<int>(width - number.size())).add(number).gap(2).add(tag.name, Style::Tag));
  }
  return Done;
}

}  // namespace

void addList(CLI::App& entry, Action& action) {
  const auto words = std::make_shared<ListWords>();
  CLI::App* lister = entry.add_subcommand("list", "Print the entries, newest first, one a line")->alias("ls");
  const auto day = [lister](const char* name, std::string& word, const char* help) {
    lister->add_option(name, word, help)->type_name("DATE")->check(notEmpty("a date is expected"));
  };
  day("--on", words->on, "Those of that day, month or year: 2014-03-10, 2014-03, yesterday");
  day("--since", words->since, "Those of that day and later");
  day("--before", words->before, "Those from before that day");
  lister->add_option("--tag", words->tags, "Those with that tag; with each, where given more than once")
      ->type_name("TAG")
      ->allow_extra_args(false)
      ->check(notEmpty("a tag is expected"));
  const auto listing = addListing(*lister);
  lister->callback([&action, words, listing] {
    action = [words, listing](Context& context) { return list(context, *words, *listing); };
  });
}

void addSearch(CLI::App& entry, Action& action) {
  struct Words {
    std::vector<std::string> query;
    bool bestFirst{false};
  };
  const auto words = std::make_shared<Words>();
  CLI::App* searcher = entry.add_subcommand("search", "Print the entries that have all of these, newest first");
  searcher
      ->add_option("QUERY", words->query,
                   "words, \"exact phrases\", tag:NAME, place:NAME, on:DATE, since:DATE, before:DATE, on:this-day; a "
                   "dash before one leaves out what has it")
      ->required();
  searcher->add_flag("--best", words->bestFirst, "The best matches first");
  const auto listing = addListing(*searcher);
  searcher->callback([&action, words, listing] {
    action = [words, listing](Context& context) { return search(context, words->query, words->bestFirst, *listing); };
  });
}

void addOnThisDay(CLI::App& entry, Action& action) {
  CLI::App* command = entry.add_subcommand("on-this-day", "Print the entries of this day of other years, newest first");
  const auto listing = addListing(*command);
  command->callback(
      [&action, listing] { action = [listing](Context& context) { return onThisDay(context, *listing); }; });
}

void addTags(CLI::App& entry, Action& action) {
  const auto limit = std::make_shared<int>(0);
  CLI::App* command = entry.add_subcommand("tags", "Print the tags in use and how many entries have each");
  command->add_option("--limit", *limit, "How many at most, the most used ones")
      ->type_name("COUNT")
      ->check(atLeastOne());
  command->callback([&action, limit] { action = [limit](Context& context) { return tags(context, *limit); }; });
}

}  // namespace quillo::ctl
