// The first start from a terminal: by questions, by options, or by both.

#include "PTHotKey/ShortcutText.h"
#include "foundation/TildeExpansion.h"
#include "preferences/model/FirstStart.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/Command.h"
#include "quilloctl/Questions.h"
#include "quilloctl/ReminderText.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>

#include <memory>
#include <string>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView suffix{".quillojournal"};

struct Words {
  std::string journal, existing, remind, from, until, by, shortcut;
  bool login{false}, noLogin{false}, yes{false};
  // Which of them were given.
  bool hasJournal{false}, hasRemind{false}, hasBy{false}, hasShortcut{false};
};

QUrl urlOfPath(const QString& text) {
  const QString path = stringByExpandingTildeInPath(text);
  return QUrl::fromLocalFile(QDir::cleanPath(QDir::current().absoluteFilePath(path)));
}

// Each takes an answer over; else it says why not.

bool takeNewJournal(FirstStart& start, const QString& text, QString* reason) {
  start.journal = FirstStart::Journal::New;
  start.newJournal = urlOfPath(text);
  if (!start.newJournal.path().endsWith(suffix)) start.newJournal.setPath(start.newJournal.path() + suffix);
  *reason = start.journalProblem();
  return reason->isEmpty();
}

bool takeExistingJournal(FirstStart& start, const QString& text, QString* reason) {
  start.journal = FirstStart::Journal::Existing;
  start.existingJournal = urlOfPath(text);
  *reason = start.journalProblem();
  return reason->isEmpty();
}

// One that is there, or a new one where nothing is.
bool takeJournal(FirstStart& start, const QString& text, QString* reason) {
  const QString path = urlOfPath(text).toLocalFile();
  for (const QString& known : {path, path + suffix})
    if (QFileInfo::exists(known)) return takeExistingJournal(start, known, reason);
  return takeNewJournal(start, text, reason);
}

bool takeReminder(FirstStart& start, const QString& text, QString* reason) {
  start.reminders.isOn = text.compare(u"never"_s, Qt::CaseInsensitive) != 0;
  if (!start.reminders.isOn) return true;
  const auto rule = ruleFromText(text, Date::now(), reason);
  if (rule) start.reminders.rule = *rule;
  if (rule) *reason = start.reminders.problem();
  return rule && reason->isEmpty();
}

QString waysInWords(const ReminderChoice& reminders) {
  QStringList words;
  if (reminders.opensWindow) words << u"window"_s;
  if (reminders.notifies) words << u"notification"_s;
  if (reminders.playsSound) words << u"sound"_s;
  return words.join(u", "_s);
}

bool takeWays(FirstStart& start, const QString& text, QString* reason) {
  ReminderChoice ways = start.reminders;
  ways.opensWindow = ways.notifies = ways.playsSound = false;
  for (const QString& word : text.split(u',', Qt::SkipEmptyParts)) {
    const QString way = word.trimmed().toLower();
    if (way == u"window")
      ways.opensWindow = true;
    else if (way == u"notification")
      ways.notifies = true;
    else if (way == u"sound")
      ways.playsSound = true;
    else
      *reason = u"\"%1\" is no way of reminding; they are window, notification and sound"_s.arg(way);
  }
  if (reason->isEmpty() && waysInWords(ways).isEmpty()) *reason = u"a reminder has to come in some way"_s;
  if (!reason->isEmpty()) return false;
  start.reminders = ways;
  return true;
}

bool takeShortcut(FirstStart& start, const QString& text, QString* reason) {
  const auto combo = keyComboFromText(text, reason);
  if (combo) start.shortcut = combo;
  return combo != nullptr;
}

bool takeLogin(FirstStart& start, const QString& text, QString* reason) {
  const auto yes = yesOrNo(text);
  if (yes) start.agent = *yes ? FirstStart::Agent::StartsAtLogin : FirstStart::Agent::StartsNow;
  if (!yes) *reason = u"yes or no"_s;
  return yes.has_value();
}

// Of one question.
using Take = bool (*)(FirstStart& start, const QString& text, QString* reason);

bool takeOptions(FirstStart& start, const Words& words, QString* reason) {
  const auto taken = [&](bool isGiven, Take take, const std::string& text) {
    return !isGiven || take(start, QString::fromStdString(text), reason);
  };
  QString remind = QString::fromStdString(words.remind);
  if (!words.from.empty())
    remind += u" from %1 to %2"_s.arg(QString::fromStdString(words.from), QString::fromStdString(words.until));
  if (words.login) start.agent = FirstStart::Agent::StartsAtLogin;
  if (words.noLogin) start.agent = FirstStart::Agent::StartsNow;
  return taken(!words.journal.empty(), takeNewJournal, words.journal) &&
         taken(!words.existing.empty(), takeExistingJournal, words.existing) &&
         taken(words.hasRemind, takeReminder, remind.toStdString()) && taken(words.hasBy, takeWays, words.by) &&
         taken(words.hasShortcut, takeShortcut, words.shortcut);
}

// What no option says and nobody is asked stays as it is.
void skipWhatIsNotSaid(FirstStart& start, const Words& words) {
  if (!words.hasJournal) start.journal = FirstStart::Journal::None;
  if (!words.hasRemind) start.reminders.isOn = false;
  if (!words.hasShortcut) start.shortcut = PTKeyCombo::clearKeyCombo();
  if (!words.login && !words.noLogin) start.agent = FirstStart::Agent::Untouched;
}

QString agentInWords(FirstStart::Agent agent) {
  if (agent == FirstStart::Agent::Untouched) return u"as it is"_s;
  return agent == FirstStart::Agent::StartsAtLogin ? u"yes"_s : u"no"_s;
}

QString journalInWords(const FirstStart& start) {
  if (start.journal == FirstStart::Journal::None) return u"none"_s;
  const QString path = pathForPeople(start.chosenJournal());
  return start.journal == FirstStart::Journal::New ? path + u", new"_s : path;
}

QString remindersInWords(const FirstStart& start) {
  return start.reminders.isOn ? start.reminders.inWords() + u" By "_s + waysInWords(start.reminders) + u'.' : u"none"_s;
}

void printSummary(const FirstStart& start) {
  print(u"Journal:         "_s + journalInWords(start));
  print(u"Reminders:       "_s + remindersInWords(start));
  print(u"Key:             "_s + (start.shortcut->isClearCombo() ? u"none"_s : wordsForKeyCombo(*start.shortcut)));
  print(u"Starts at login: "_s + agentInWords(start.agent));
}

// False where the answers end before the last one, or that is no.
bool askAll(FirstStart& start, const Words& words) {
  Questions questions(u"Enter takes what is in brackets, - skips a question, Ctrl+C leaves everything as it is."_s);
  const auto ask = [&](const QString& question, const QString& usual, Take take) {
    return questions.ask(question, usual,
                         [&start, take](const QString& text, QString* reason) { return take(start, text, reason); });
  };
  using Answer = Questions::Answer;
  if (!words.hasJournal) {
    const Answer answer =
        ask(u"Your journal: a new one, or one that you have"_s, pathForPeople(start.chosenJournal()), takeJournal);
    if (answer == Answer::None) return false;
    if (answer == Answer::Skipped) start.journal = FirstStart::Journal::None;
  }
  if (!words.hasRemind) {
    QString usual = start.reminders.inWords();
    usual.chop(1);
    const Answer answer = ask(u"Remind you to write"_s, usual.toLower().remove(u','), takeReminder);
    if (answer == Answer::None) return false;
    if (answer == Answer::Skipped) start.reminders.isOn = false;
  }
  if (start.reminders.isOn && !words.hasBy)
    if (ask(u"Remind by window, notification, sound"_s, waysInWords(start.reminders), takeWays) == Answer::None)
      return false;
  if (!words.hasShortcut) {
    const Answer answer =
        ask(u"A key from anywhere that opens the entry window"_s, wordsForKeyCombo(*start.shortcut), takeShortcut);
    if (answer == Answer::None) return false;
    if (answer == Answer::Skipped) start.shortcut = PTKeyCombo::clearKeyCombo();
  }
  if (!words.login && !words.noLogin)
    if (ask(u"Start at login"_s, u"yes"_s, takeLogin) == Answer::None) return false;
  print(QString());
  printSummary(start);
  return questions.confirms(u"Set it up so"_s);
}

QJsonObject jsonOf(const FirstStart& start) {
  const auto orNull = [](const QString& text) { return text.isEmpty() ? QJsonValue() : QJsonValue(text); };
  QJsonObject object{
      {u"journal"_s, orNull(start.chosenJournal().toLocalFile())},
      {u"created"_s, start.journal == FirstStart::Journal::New},
      {u"reminders"_s, orNull(start.reminders.isOn ? start.reminders.inWords() : QString())},
      {u"shortcut"_s, orNull(start.shortcut->isClearCombo() ? QString() : wordsForKeyCombo(*start.shortcut))}};
  if (start.agent != FirstStart::Agent::Untouched) object[u"login"_s] = start.agent == FirstStart::Agent::StartsAtLogin;
  return object;
}

int write(Context& context, const FirstStart& start, bool wasShown) {
  const Session session = context.session();
  const FirstStartServices services{.config = context.config,
                                    .post = [&context](const QString& name) { context.post(name); },
                                    .agentManager = session.agentManager,
                                    .loginItemServices = session.loginItemServices,
                                    .agent = session.agent};
  Error error;
  if (!start.apply(services, &error)) return failed(error.localizedDescription);
  QString reason;
  const bool runs = start.startAgent(services, &reason);
  if (context.json)
    printJson(jsonOf(start));
  else if (!wasShown)
    printSummary(start);
  return runs ? Done : failed(u"all of it is saved, but the agent does not run: "_s + reason);
}

int setup(Context& context, const Words& words) {
  if (!sharedList(context)) return Failed;
  const bool isTold = words.hasJournal || words.hasRemind || words.hasShortcut || words.login || words.noLogin;
  const bool canAsk = !words.yes && !context.json && Questions::canBeAsked();
  if (!canAsk && !isTold && !words.yes) {
    failed(u"there is no terminal to ask in: say what is wanted with options, or --yes (--help tells more)"_s);
    return Usage;
  }
  FirstStart start = FirstStart::suggested(context.config);
  QString reason;
  if (!takeOptions(start, words, &reason)) return failed(reason);
  if (canAsk && !askAll(start, words)) return failed(u"nothing was changed"_s);
  if (!canAsk && !words.yes) skipWhatIsNotSaid(start, words);
  if (reason = start.journalProblem(); !reason.isEmpty()) return failed(reason);
  return write(context, start, canAsk);
}

void addOptions(CLI::App& command, Words& words) {
  const auto path = notEmpty("a path is expected");
  CLI::Option* journal =
      command.add_option("--journal", words.journal, "Where to make a new journal")->type_name("PATH")->check(path);
  CLI::Option* existing = command.add_option("--existing", words.existing, "A journal that is there already")
                              ->type_name("PATH")
                              ->check(path);
  journal->excludes(existing);
  CLI::Option* remind =
      command.add_option("--remind", words.remind, "\"every day at 21:00\", \"every 3 hours\", or never")
          ->type_name("WHEN");
  CLI::Option* from = command.add_option("--from", words.from, "When the daily window of hours and minutes begins")
                          ->type_name("TIME")
                          ->needs(remind);
  CLI::Option* until = command.add_option("--until", words.until, "When it ends")->type_name("TIME")->needs(from);
  from->needs(until);
  command.add_option("--by", words.by, "How reminders come: window,notification,sound")
      ->type_name("WAYS")
      ->needs(remind);
  command.add_option("--shortcut", words.shortcut, "The key that opens the entry window: \"cmd+shift+J\"")
      ->type_name("SHORTCUT");
  CLI::Option* login = command.add_flag("--login", words.login, "Start the agent, now and at each login");
  command.add_flag("--no-login", words.noLogin, "Start it now only")->excludes(login);
  command.add_flag("--yes", words.yes, "Take what would be proposed for the rest, and ask nothing");
}

}  // namespace

int setUpByQuestions(Context& context) {
  return setup(context, {});
}

void addSetupCommand(CLI::App& program, Action& action) {
  const auto words = std::make_shared<Words>();
  CLI::App* command = program.add_subcommand("setup", "Begin with Quillo: journal, reminders, key, start at login");
  addOptions(*command, *words);
  command->footer("On a terminal it asks for what no option says. Nothing is written before the last answer.");
  command->callback([&action, command, words] {
    words->hasJournal = command->count("--journal") + command->count("--existing") > 0;
    words->hasRemind = command->count("--remind") > 0;
    words->hasBy = command->count("--by") > 0;
    words->hasShortcut = command->count("--shortcut") > 0;
    action = [words](Context& context) { return setup(context, *words); };
  });
}

}  // namespace quillo::ctl
