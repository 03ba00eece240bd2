// quilloctl backup restore.

#include "config/Keys.h"
#include "exchange/backup/BackupReader.h"
#include "exchange/backup/BackupRestore.h"
#include "qlcore/JournalChoice.h"
#include "quilloctl/BackupCommand.h"
#include "quilloctl/BackupFiles.h"
#include "quilloctl/Interruption.h"
#include "quilloctl/ProgressLine.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonObject>

#include <memory>
#include <string>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

struct RestoreWords {
  std::string file;
  std::string place;
  bool isToBeSet{false};
};

// Beside the journal, by the name it had where that is free.
QString freePlace(Context& context, const BackupManifest& manifest) {
  const auto configured = context.config.configuredJournalFileURL();
  QString folder = configured ? QFileInfo(configured->toLocalFile()).path() : QString();
  if (!QFileInfo(folder).isDir()) {
    folder = context.directories.documents;
    QDir().mkpath(folder);
  }
  return BackupRestore::freePlace(folder, manifest.journal);
}

// A folder that is there is one to put it into, else the journal itself is named.
QString placeTyped(const std::string& typed, const BackupManifest& manifest) {
  const QString path = absolutePath(typed);
  const QString ending = u".quillojournal"_s;
  if (path.endsWith(ending)) return path;
  return QFileInfo(path).isDir() ? BackupRestore::freePlace(path, manifest.journal) : path + ending;
}

int restore(Context& context, const RestoreWords& words) {
  const auto path = backupMeant(context, words.file);
  if (!path) return Failed;
  Error error;
  const auto reader = BackupReader::open(*path, &error);
  if (!reader) return failed(error.localizedDescription);
  const BackupManifest manifest = reader->manifest();
  const Interruption interruption;
  BackupRestore::Result result;
  {
    ProgressLine line("Restoring");
    const BackupRestore restore{
        .archive = *path,
        .journal = words.place.empty() ? freePlace(context, manifest) : placeTyped(words.place, manifest),
        .progress = [&line](double done) {
          line.showPart(done);
          return !Interruption::isAsked();
        }};
    result = restore.run();
  }
  if (result.outcome == BackupRestore::Outcome::Stopped) return failed(u"stopped; nothing was restored"_s);
  if (result.outcome == BackupRestore::Outcome::Failed) return failed(result.error.localizedDescription);
  const QString journal = result.journal.toLocalFile();
  if (words.isToBeSet) {
    if (!useJournal(context.config, result.journal, /*create=*/false, &error))
      return failed(u"restored to %1, but it was not set - %2"_s.arg(journal, error.localizedDescription));
    context.post(Notice::journalPackagePathDidChange);
  }
  if (context.json)
    printJson(QJsonObject{{u"path"_s, journal}, {u"entries"_s, result.entries}, {u"set"_s, words.isToBeSet}});
  else
    print(u"%1: %2"_s.arg(withoutControls(journal), entriesInWords(result.entries)));
  return Done;
}

}  // namespace

void addBackupRestore(CLI::App& backup, Action& action) {
  const auto words = std::make_shared<RestoreWords>();
  CLI::App* restorer = backup.add_subcommand("restore", "Make a new journal of a backup; never over one that is there");
  restorer->add_option("FILE", words->file, "Its path, or its name in the folder of backups; the newest without one")
      ->check(notEmpty("a file is expected"));
  restorer
      ->add_option("--to", words->place,
                   "The new journal, or a folder for it; without it, a free name beside the journal")
      ->type_name("PATH")
      ->check(notEmpty("a path is expected"));
  restorer->add_flag("--set", words->isToBeSet, "Make it the journal that is written to");
  restorer->callback([&action, words] { action = [words](Context& context) { return restore(context, *words); }; });
}

}  // namespace quillo::ctl
