// quilloctl backup schedule.

#include "config/Keys.h"
#include "exchange/backup/BackupSchedule.h"
#include "quilloctl/BackupCommand.h"
#include "quilloctl/BackupFiles.h"
#include "quilloctl/ReminderText.h"

#include <QFileInfo>
#include <QJsonObject>

#include <algorithm>
#include <memory>
#include <string>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

struct ScheduleWords {
  std::string every, folder;
  int most{-1};
  bool isDefaultFolder{false};

  [[nodiscard]] bool isEmpty() const { return every.empty() && folder.empty() && most < 0 && !isDefaultFolder; }
};

int show(Context& context) {
  const PersistentPropertyList* list = sharedList(context);
  if (!list) return Failed;
  const BackupSettings settings = BackupSettings::of(list);
  const auto missing = context.config.whyBackupRootIsMissing();
  const QString folder = context.config.backupRootURL().toLocalFile();
  const BackupSchedule& schedule = context.backupSchedule();
  const auto next = schedule.next();
  if (context.json) {
    printJson(QJsonObject{{u"enabled"_s, settings.isEnabled},
                          {u"every"_s, settings.inWords().sliced(QStringView(u"every ").size())},
                          {u"keep"_s, settings.most},
                          {u"folder"_s, missing ? QJsonValue() : QJsonValue(folder)},
                          {u"installed"_s, schedule.isOn()},
                          {u"next"_s, next ? QJsonValue(next->toUTC().toString(Qt::ISODate)) : QJsonValue()}});
    return Done;
  }
  QString text = settings.isEnabled ? settings.inWords() : u"off"_s;
  text[0] = text[0].toUpper();
  if (settings.isEnabled && next) text += u", next: "_s + next->toLocalTime().toString(u"yyyy-MM-dd HH:mm"_s);
  if (settings.isEnabled && !schedule.isOn()) text += u", but the session does not know of it"_s;
  text += settings.most == 0 ? u"; all backups stay"_s : u"; at most %1 stay"_s.arg(settings.most);
  print(text + (missing ? u"; the folder is not there - "_s + missing->localizedDescription : u"; in "_s + folder));
  return Done;
}

bool setFolder(Context& context, const ScheduleWords& words) {
  if (words.folder.empty() && !words.isDefaultFolder) return true;
  Error error;
  const auto url =
      words.isDefaultFolder ? std::nullopt : std::optional(QUrl::fromLocalFile(absolutePath(words.folder)));
  if (context.config.setBackupRootURL(url, &error)) return true;
  failed(error.localizedDescription);
  return false;
}

// Nothing where the settings stay as they are.
bool change(Context& context, const ScheduleWords& words, std::optional<bool> isEnabled) {
  PersistentPropertyList* list = sharedList(context);
  if (!list) return false;
  const QString every = QString::fromStdString(words.every);
  const auto step = words.every.empty() ? std::nullopt : stepFromText(every);
  const bool isStep = step && std::ranges::find(BackupSettings::units, step->unit) != BackupSettings::units.end() &&
                      step->count <= BackupSettings::largestInterval;
  if (!words.every.empty() && !isStep) {
    failed(u"\"%1\" is no step of hours, days, weeks or months; one is \"6 hours\" or \"day\""_s.arg(every));
    return false;
  }
  if (!setFolder(context, words)) return false;
  if (step) {
    list->setIntegerForKey(static_cast<qint64>(step->unit), Key::autoBackupFrequency);
    list->setIntegerForKey(static_cast<qint64>(step->count), Key::autoBackupInterval);
  }
  if (words.most >= 0) list->setIntegerForKey(words.most, Key::autoBackupMaxCount);
  if (isEnabled) list->setBoolForKey(*isEnabled, Key::autoBackupEnabled);
  if (!isSaved(*list, u"when backups are made"_s)) return false;
  context.post(Notice::settingsDidChange);
  return applyBackupSchedule(context);
}

int changeAndShow(Context& context, const ScheduleWords& words, std::optional<bool> isEnabled) {
  return change(context, words, isEnabled) ? show(context) : int{Failed};
}

void addOptions(CLI::App& command, ScheduleWords& words) {
  command.add_option("--every", words.every, "How often: \"6 hours\", \"day\", \"week\", \"2 months\"")
      ->type_name("STEP");
  command.add_option("--keep", words.most, "How many backups stay at most; 0 keeps all")
      ->type_name("COUNT")
      ->check(CLI::NonNegativeNumber.description(""));
  CLI::Option* folder = command.add_option("--folder", words.folder, "Where backups are made; it must be there")
                            ->type_name("FOLDER")
                            ->check(notEmpty("a folder is expected"));
  command.add_flag("--default-folder", words.isDefaultFolder, "Where they are made without a choice")->excludes(folder);
}

}  // namespace

bool applyBackupSchedule(Context& context) {
  const PersistentPropertyList* list = sharedList(context);
  if (!list) return false;
  QString reason;
  switch (context.backupSchedule().apply(BackupSettings::of(list), &reason)) {
    case BackupSchedule::Outcome::Failed:
      failed(u"the session was not told - "_s + reason);
      return false;
    case BackupSchedule::Outcome::NotStarted:
      failed(u"saved, but backups do not start by themselves yet - "_s + reason);
      return true;
    default:
      return true;
  }
}

void addBackupSchedule(CLI::App& backup, Action& action) {
  const auto words = std::make_shared<ScheduleWords>();
  CLI::App* schedule = backup.add_subcommand("schedule", "When backups are made by themselves");
  schedule->require_subcommand(1);
  schedule->footer(
      "The session's systemd calls for it with a timer of the user's, quillo-backup.timer; one that was missed is made "
      "up for.");

  schedule->add_subcommand("show", "Print whether, how often and where")->callback([&action] { action = show; });

  CLI::App* on = schedule->add_subcommand("on", "Make backups by themselves from now on");
  addOptions(*on, *words);
  on->callback(
      [&action, words] { action = [words](Context& context) { return changeAndShow(context, *words, true); }; });

  schedule->add_subcommand("off", "Make none by themselves")->callback([&action, words] {
    action = [words](Context& context) { return changeAndShow(context, *words, false); };
  });

  CLI::App* setter = schedule->add_subcommand("set", "Change how often, how many or where");
  addOptions(*setter, *words);
  setter->callback([&action, words] {
    if (words->isEmpty()) throw CLI::ValidationError("set", "--every, --keep or --folder is expected");
    action = [words](Context& context) { return changeAndShow(context, *words, std::nullopt); };
  });
}

}  // namespace quillo::ctl
