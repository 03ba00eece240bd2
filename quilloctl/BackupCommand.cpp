#include "quilloctl/BackupCommand.h"

#include "exchange/backup/BackupCheck.h"
#include "exchange/backup/BackupRecord.h"
#include "quilloctl/BackupFiles.h"
#include "quilloctl/Interruption.h"
#include "quilloctl/ProgressLine.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <memory>
#include <string>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

QJsonValue dateJson(const std::optional<Date>& date) {
  return date ? QJsonValue(date->toISO8601()) : QJsonValue();
}

QJsonObject json(const StoredBackup& backup) {
  QJsonObject object{{u"path"_s, backup.path}, {u"size"_s, backup.size}};
  if (const auto& manifest = backup.manifest) {
    object[u"journal"_s] = manifest->journal;
    object[u"journalIdentifier"_s] = manifest->journalIdentifier;
    object[u"date"_s] = manifest->begun.toISO8601();
    object[u"entries"_s] = manifest->entries;
    object[u"bytes"_s] = manifest->bytes;
  } else {
    object[u"problem"_s] = backup.problem;
  }
  return object;
}

QJsonObject json(const BackupRecord& record) {
  return {{u"made"_s, dateJson(record.lastMade)},
          {u"path"_s, record.lastPath.isEmpty() ? QJsonValue() : QJsonValue(record.lastPath)},
          {u"tried"_s, dateJson(record.lastTry)},
          {u"failure"_s, record.failure.isEmpty() ? QJsonValue() : QJsonValue(record.failure)}};
}

// "2026-11-26 08:15    12 entries    1.2 MB  Diary-2026-11-26-081530.quillojournal.tar.zst".
void printLine(const StoredBackup& backup) {
  const QString what = backup.manifest ? entriesInWords(backup.manifest->entries) : u"no whole backup"_s;
  print(u"%1  %2  %3  %4"_s.arg(backup.begun().toString(u"yyyy-MM-dd HH:mm"_s), what.rightJustified(16),
                                sizeInWords(backup.size).rightJustified(9), withoutControls(backup.fileName)));
}

int list(Context& context, const std::string& typed) {
  const BackupRecord record = BackupRecord::of(context.directories);
  const auto folder = backupFolder(context, typed);
  Error error;
  const auto backups = folder ? backupsInFolder(*folder, &error) : std::nullopt;
  if (folder && !backups) failed(error.localizedDescription);
  if (backups && context.json) {
    QJsonArray all;
    for (const StoredBackup& one : *backups) all << json(one);
    printJson(QJsonObject{{u"folder"_s, *folder}, {u"backups"_s, all}, {u"last"_s, json(record)}});
  } else if (backups) {
    for (const StoredBackup& one : *backups) printLine(one);
    if (backups->isEmpty()) print(withoutControls(*folder) + u": there is no backup yet"_s);
  }
  if (!record.failure.isEmpty() && record.lastTry && !context.json)
    failed(u"the last backup failed, on %1: %2"_s.arg(
        record.lastTry->toDateTime().toLocalTime().toString(u"yyyy-MM-dd HH:mm"_s), record.failure));
  return backups ? Done : Failed;
}

int verify(Context& context, const std::string& typed) {
  const auto path = backupMeant(context, typed);
  if (!path) return Failed;
  BackupCheck check;
  {
    const Interruption interruption;
    ProgressLine line("Verifying");
    check = BackupCheck::of(*path, [&line](double done) {
      line.showPart(done);
      return !Interruption::isAsked();
    });
  }
  if (check.isStopped) return failed(u"stopped"_s);
  if (!check.isWhole()) return failed(check.error->localizedDescription);
  for (const QString& entry : check.damagedEntries) failed(u"damaged in the journal already: "_s + entry);
  if (context.json)
    printJson(QJsonObject{{u"path"_s, *path},
                          {u"journal"_s, check.manifest.journal},
                          {u"date"_s, check.manifest.begun.toISO8601()},
                          {u"entries"_s, check.entries},
                          {u"bytes"_s, check.bytes},
                          {u"damaged"_s, check.damaged}});
  else
    print(u"%1: whole, %2, %3"_s.arg(withoutControls(*path), entriesInWords(check.entries), sizeInWords(check.bytes)));
  return Done;
}

}  // namespace

void addBackupCommand(CLI::App& program, Action& action) {
  const auto words = std::make_shared<std::string>();
  CLI::App* backup = program.add_subcommand("backup", "Save the whole journal in an archive, and get it back");
  backup->require_subcommand(1);
  backup->footer(
      "An archive is NAME-DATE-TIME.quillojournal.tar.zst, which tar can unpack, too; it gets this name when it is "
      "written,\nread again and compared.");
  addBackupMake(*backup, action);

  CLI::App* lister = backup->add_subcommand("list", "Print the backups there are, newest first, and how the last went");
  lister->add_option("--in", *words, "The folder to look in, in place of the one of the settings")
      ->type_name("FOLDER")
      ->check(notEmpty("a folder is expected"));
  lister->callback([&action, words] { action = [words](Context& context) { return list(context, *words); }; });

  CLI::App* verifier = backup->add_subcommand("verify", "Read all of a backup and compare every file's checksum");
  verifier->add_option("FILE", *words, "Its path, or its name in the folder of backups; the newest without one")
      ->check(notEmpty("a file is expected"));
  verifier->callback([&action, words] { action = [words](Context& context) { return verify(context, *words); }; });

  addBackupRestore(*backup, action);
  addBackupSchedule(*backup, action);
}

}  // namespace quillo::ctl
