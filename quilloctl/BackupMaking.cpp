// quilloctl backup make, for a person and for the timer.

#include "config/Keys.h"
#include "exchange/backup/BackupRecord.h"
#include "exchange/backup/BackupSettings.h"
#include "quilloctl/BackupCommand.h"
#include "quilloctl/BackupFiles.h"
#include "quilloctl/Interruption.h"
#include "quilloctl/ProgressLine.h"

#include <QJsonArray>
#include <QJsonObject>

#include <memory>
#include <string>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

struct MakeWords {
  std::string folder;
  bool isScheduled{false};
};

int told(const Context& context, const JournalBackup::Result& result) {
  if (context.json)
    printJson(QJsonObject{{u"path"_s, result.path},
                          {u"entries"_s, result.entries},
                          {u"size"_s, result.size},
                          {u"changed"_s, result.changed},
                          {u"leftOut"_s, QJsonArray::fromStringList(result.leftOut)},
                          {u"removed"_s, QJsonArray::fromStringList(result.removed)}});
  else
    print(u"%1: %2, %3"_s.arg(withoutControls(result.path), entriesInWords(result.entries), sizeInWords(result.size)));
  for (const QString& reason : result.leftOut) failed(u"not in the backup: "_s + reason);
  if (result.changed > 0 && !context.json)
    failed(u"%1 changed meanwhile, which the next backup has"_s.arg(
        result.changed == 1 ? u"1 file was"_s : u"%1 files were"_s.arg(result.changed)));
  return result.isComplete ? Done : Failed;
}

int make(Context& context, const std::string& typed, const BackupSettings& settings, QString* failure) {
  const auto fails = [&](const QString& reason) {
    *failure = reason;
    return failed(reason);
  };
  const auto journal = context.config.configuredJournalFileURL();
  if (!journal) return fails(u"No journal is configured"_s);
  const auto missing = typed.empty() ? context.config.whyBackupRootIsMissing() : std::nullopt;
  if (missing) {
    BackupRecord::recordFailure(missing->localizedDescription, context.directories);
    return fails(missing->localizedDescription);
  }
  const QString folder = typed.empty() ? context.config.backupRootURL().toLocalFile() : absolutePath(typed);
  const Interruption interruption;
  JournalBackup::Result result;
  {
    ProgressLine line("Backing up");
    const JournalBackup backup{.journal = journal->toLocalFile(),
                               .folder = folder,
                               .thinning = settings.thinning(),
                               .progress = [&line](double done) {
                                 line.showPart(done);
                                 return !Interruption::isAsked();
                               }};
    result = BackupRecord::record(backup, context.directories);
  }
  switch (result.outcome) {
    case JournalBackup::Outcome::Stopped:
      return failed(u"stopped; there is no new backup"_s);
    case JournalBackup::Outcome::Failed:
      return fails(result.error.localizedDescription);
    case JournalBackup::Outcome::Made:
      break;
  }
  if (!result.isComplete) *failure = result.leftOut.join(u"; "_s);
  return told(context, result);
}

// Nobody looks at what it prints, so what fails is shown on the desktop, too. A timer that was left behind by another
// version, or calls more often than it should, does nothing.
int makeScheduled(Context& context, const BackupSettings& settings) {
  if (!settings.isEnabled) return Done;
  const BackupRecord last = BackupRecord::of(context.directories);
  const QDateTime made = last.lastMade ? last.lastMade->toDateTime() : QDateTime();
  if (last.failure.isEmpty() && !settings.isDue(made, QDateTime::currentDateTimeUtc())) return Done;
  QString failure;
  const int code = make(context, {}, settings, &failure);
  if (!failure.isEmpty()) context.session().notify(u"The journal was not backed up"_s, failure);
  return code;
}

}  // namespace

void addBackupMake(CLI::App& backup, Action& action) {
  const auto words = std::make_shared<MakeWords>();
  CLI::App* maker = backup.add_subcommand("make", "Make a backup of the journal, and thin out the older ones");
  maker->add_option("--to", words->folder, "The folder for it, in place of the one of the settings")
      ->type_name("FOLDER")
      ->check(notEmpty("a folder is expected"));
  // What the timer calls.
  maker->add_flag("--scheduled", words->isScheduled)->group("");
  maker->footer(
      "Once the new one is whole, older ones of this journal go but for the newest 5, the last of each of 14 days, of "
      "each of\n8 weeks and of each month, and but for as many as the setting AutoBackupMaxCount allows.");
  maker->callback([&action, words] {
    action = [words](Context& context) {
      const PersistentPropertyList* list = sharedList(context);
      if (!list) return int{Failed};
      const BackupSettings settings = BackupSettings::of(list);
      QString failure;
      return words->isScheduled ? makeScheduled(context, settings) : make(context, words->folder, settings, &failure);
    };
  });
}

}  // namespace quillo::ctl
