// What the shells ask while a command line is typed: the completions of its last word, one a line with a tabulator and
// a description behind it. A line ":directories" or ":files" leaves it to the shell.

#include "config/Keys.h"
#include "config/SettingText.h"
#include "exchange/ExportFormat.h"
#include "exchange/ImportFormat.h"
#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/BackupFiles.h"
#include "quilloctl/Command.h"
#include "quilloctl/CommandTree.h"
#include "quilloctl/JournalIndex.h"

#include <QMap>

#include <algorithm>
#include <memory>
#include <utility>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

constexpr int mostEntries = 50;
constexpr qsizetype mostTags = 500;
constexpr qsizetype longestDescription = 50;

// Where in a command line the word stands that is to be completed.
struct Place {
  const CLI::App* command{nullptr};
  const CLI::Option* option{nullptr};  // whose value the word is
  QStringList values;                  // that stand before it and are none of an option
  QString word;
};

class Completion {
 public:
  Completion(Context& context, const Place& place) : m_context(context), m_place(place) {}

  void print() {
    if (!m_place.option && m_place.word.startsWith(u'-')) return printOptions();
    if (!m_place.option && m_place.values.isEmpty()) printCommands();
    const CLI::Option* asked = m_place.option ? m_place.option : positional();
    if (asked) printValues(QString::fromStdString(asked->get_name()));
    if (!m_place.option && !m_hasPrinted) printOptions();
  }

 private:
  void offer(const QString& candidate, const QString& description = {}) {
    if (!candidate.startsWith(m_place.word, Qt::CaseInsensitive)) return;
    // One line, whatever a tag or a text holds.
    const QString told = description.isEmpty() ? QString() : u'\t' + description.simplified();
    ctl::print(withoutControls(candidate.simplified() + told));
    m_hasPrinted = true;
  }
  void offer(const QStringList& candidates) {
    for (const QString& candidate : candidates) offer(candidate);
  }

  void printCommands() {
    for (const QString& name : namesOfCommands(*m_place.command))
      offer(name, QString::fromStdString(commandNamed(*m_place.command, name)->get_description()));
  }

  void printOptions() {
    for (const CLI::Option* option : m_place.command->get_options()) {
      const bool isOfPeople = !option->get_group().empty() && !option->get_positional();
      const QString help = QString::fromStdString(option->get_description());
      for (const std::string& name : option->get_lnames())
        if (isOfPeople) offer(u"--"_s + QString::fromStdString(name), help);
      for (const std::string& name : option->get_snames())
        if (isOfPeople) offer(u'-' + QString::fromStdString(name), help);
    }
  }

  // The next that is expected; the last one may take many words.
  [[nodiscard]] const CLI::Option* positional() const {
    const auto all = m_place.command->get_options([](const CLI::Option* one) { return one->get_positional(); });
    const auto index = static_cast<size_t>(m_place.values.size());
    if (index < all.size()) return all[index];
    return !all.empty() && all.back()->get_items_expected_max() > 1 ? all.back() : nullptr;
  }

  [[nodiscard]] bool isOfBackups() const {
    for (const CLI::App* app = m_place.command; app; app = app->get_parent())
      if (app->get_name() == "backup") return true;
    return false;
  }

  void printValues(const QString& name) {
    const QString dates = u"today yesterday last-week this-month last-month this-year last-year"_s;
    const QMap<QString, QString> fixed{
        {u"--type"_s, u"bool int real string date data json"_s},
        {u"--resolve"_s, u"this that both merge"_s},
        {u"--remind"_s, u"never"_s},
        {u"--by"_s, u"window notification sound window,notification window,notification,sound"_s},
        {u"--every"_s, isOfBackups() ? u"hour day week month"_s : u"minute hour day week month year"_s},
        {u"--on"_s, dates},
        {u"--since"_s, dates},
        {u"--before"_s, dates},
        {u"URL"_s,
         u"quillo://open quillo://preferences quillo://post quillo://edit?entryId= quillo://setup quillo://updatebookmarks"_s}};
    if (fixed.contains(name)) return offer(fixed[name].split(u' '));
    if (name == u"KEY") return offerSettings();
    if (name == u"VALUE") return offerSettingValues();
    if (name == u"ID") return m_place.command->get_name() == "conflicts" ? offerConflicts() : offerEntries();
    if (name == u"QUERY") return offerQuery();
    if (name == u"--tag") return offerTags({});
    if (name == u"NOTIFICATION-NAME") return offerNotices();
    if (name == u"FORMAT") return offerFormats();
    const QStringList folders{u"PATH"_s,       u"FOLDER"_s, u"--home"_s, u"--journal"_s,
                              u"--existing"_s, u"--to"_s,   u"--in"_s,   u"--folder"_s};
    if (folders.contains(name)) leaveToShell(u":directories"_s);
    if (name == u"FILE") return offerBackups();
    if (name == u"SOURCE" || name == u"--output") leaveToShell(u":files"_s);
  }

  void leaveToShell(const QString& what) {
    ctl::print(what);
    m_hasPrinted = true;
  }

  // Those in the folder of backups; with a slash it is a path.
  void offerBackups() {
    if (m_place.word.contains(u'/')) return leaveToShell(u":files"_s);
    const auto folder = backupFolder(m_context, {});
    const auto backups = folder ? backupsInFolder(*folder, nullptr) : std::nullopt;
    if (!backups) return;
    for (const StoredBackup& one : *backups)
      if (one.manifest) offer(one.fileName, entriesInWords(one.manifest->entries));
  }

  void offerFormats() {
    if (m_place.command->get_name() == "import") {
      for (const ImportFormat& format : importFormats())
        offer(QString::fromLatin1(format.name), QString::fromLatin1(format.description));
      // The source may be there in its place.
      if (!m_hasPrinted) leaveToShell(u":files"_s);
    } else {
      for (const ExportFormat& format : exportFormats())
        offer(QString::fromLatin1(format.name), QString::fromLatin1(format.description));
    }
  }

  void offerSettings() {
    PersistentPropertyList* list = sharedList(m_context);
    const PropertyListDictionary values = list ? list->properties() : PropertyListDictionary();
    // What is not set cannot be removed.
    const bool onlySet = m_place.command->get_name() == "remove";
    QMap<QString, QString> names;
    for (const Setting& setting : settingsTable())
      if (isShared(setting) && !onlySet) names[setting.key] = setting.note;
    for (auto it = values.begin(); it != values.end(); ++it) names[it.key()] = bareText(*it).left(longestDescription);
    for (auto it = names.cbegin(); it != names.cend(); ++it) offer(it.key(), it.value());
  }

  void offerSettingValues() {
    const Setting* setting = m_place.values.isEmpty() ? nullptr : settingForKey(m_place.values.first());
    if (setting && setting->type == SettingType::Bool) offer({u"true"_s, u"false"_s});
  }

  void offerNotices() {
    QStringList names;
    for (const Setting& setting : settingsTable())
      if (!setting.notice.isEmpty()) names << setting.notice;
    names << QString(Notice::remindersManagerValuesDidChange) << QString(Notice::agentManagerValuesDidChange);
    names.removeDuplicates();
    offer(names);
  }

  void offerTags(const QString& before) {
    const auto index = openIndex();
    if (!index) return;
    const QList<JournalCount> counts = index->counts({}, JournalCountBy::Tag).mid(0, mostTags);
    for (const JournalCount& tag : counts) offer(before + tag.name, entriesInWords(tag.count));
  }

  void offerQuery() {
    for (const QString& before : {u"tag:"_s, u"-tag:"_s, u"#"_s})
      if (m_place.word.startsWith(before)) return offerTags(before);
    const QStringList keys{u"tag:"_s, u"place:"_s, u"on:this-day"_s, u"on:"_s, u"since:"_s, u"before:"_s};
    if (!m_place.word.isEmpty()) offer(keys);
  }

  void offerConflicts() {
    const auto index = openIndex();
    if (!index) return;
    for (const ConflictedEntry& conflict : index->conflicts()) {
      const auto entry = index->entryWithUUID(conflict.uuid);
      offer(conflict.uuid, entry ? entry->text.left(longestDescription) : QString());
    }
  }

  void offerEntries() {
    const auto index = openIndex();
    if (!index) return;
    const auto offerEntry = [this](const IndexedEntry& entry) {
      offer(entry.uuid, entry.day.toString(Qt::ISODate) + u' ' + entry.text.left(longestDescription));
    };
    if (m_place.word.isEmpty()) {
      JournalQuestion newest;
      newest.limit = mostEntries;
      for (const IndexedEntry& entry : index->ask(newest).entries) offerEntry(entry);
      return;
    }
    for (const QString& uuid : index->uuidsWithPrefix(m_place.word, mostEntries)) {
      const auto entry = index->entryWithUUID(uuid);
      entry ? offerEntry(*entry) : offer(uuid, u"(damaged)"_s);
    }
  }

  std::unique_ptr<JournalSearchIndex> openIndex() {
    const auto package = openJournal(m_context);
    return package ? indexOfJournal(*package) : nullptr;
  }

  Context& m_context;
  const Place& m_place;
  bool m_hasPrinted{false};
};

const CLI::Option* optionNamed(const CLI::App& command, const QString& name) {
  return command.get_option_no_throw(name.toStdString());
}

// Goes through the words as the parser would. What `home` is given in them is put there.
Place placeIn(const CLI::App& program, QStringList words, std::string& home) {
  Place place{&program, nullptr, {}, words.isEmpty() ? QString() : words.takeLast()};
  for (const QString& word : std::as_const(words)) {
    if (place.option) {
      if (place.option->get_name() == "--home") home = word.toStdString();
      place.option = nullptr;
    } else if (word.startsWith(u'-')) {
      const CLI::Option* option = optionNamed(*place.command, word);
      if (option && option->get_items_expected_min() > 0) place.option = option;
    } else if (const CLI::App* command = commandNamed(*place.command, word)) {
      place.command = command;
    } else {
      place.values << word;
    }
  }
  return place;
}

}  // namespace

void addCompleteCommand(CLI::App& program, Action& action, std::string& home) {
  CLI::App* completer = program.add_subcommand("complete", "Print the completions of a command line's last word");
  // Everything from the program's name on is the command line's, options and all.
  completer->group("")->prefix_command();
  completer->callback([&program, &action, &home, completer] {
    QStringList words;
    for (const std::string& word : completer->remaining()) words << QString::fromStdString(word);
    action = [place = placeIn(program, words.mid(1), home)](Context& context) {
      Completion(context, place).print();
      return Done;
    };
  });
}

}  // namespace quillo::ctl
