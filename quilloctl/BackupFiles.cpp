#include "quilloctl/BackupFiles.h"

#include "qlcore/QLJournalPackageFile.h"
#include "quilloctl/Command.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

QString identifierOfJournal(Context& context) {
  const auto url = context.config.configuredJournalFileURL();
  const auto package = url ? QLJournalPackageFile::openPackage(*url, /*create=*/false, nullptr) : nullptr;
  return package ? package->identifier() : QString();
}

std::optional<QString> newestIn(Context& context, const QString& folder) {
  Error error;
  const auto backups = backupsInFolder(folder, &error);
  if (!backups) {
    failed(error.localizedDescription);
    return std::nullopt;
  }
  const QString identifier = identifierOfJournal(context);
  for (const StoredBackup& one : *backups)
    if (one.manifest && (identifier.isEmpty() || one.manifest->journalIdentifier == identifier)) return one.path;
  failed(folder + u": there is no backup yet"_s);
  return std::nullopt;
}

}  // namespace

QString absolutePath(const std::string& typed) {
  return QDir::cleanPath(QDir::current().absoluteFilePath(QFile::decodeName(QByteArray::fromStdString(typed))));
}

std::optional<QString> backupFolder(Context& context, const std::string& typed) {
  if (!typed.empty()) return absolutePath(typed);
  if (const auto missing = context.config.whyBackupRootIsMissing()) {
    failed(u"the folder of backups is not there - "_s + missing->localizedDescription);
    return std::nullopt;
  }
  return context.config.backupRootURL().toLocalFile();
}

std::optional<QString> backupMeant(Context& context, const std::string& typed) {
  if (!typed.empty()) {
    const QString path = absolutePath(typed);
    if (typed.find('/') != std::string::npos || QFileInfo::exists(path)) return path;
  }
  const auto folder = backupFolder(context, {});
  if (!folder) return std::nullopt;
  if (typed.empty()) return newestIn(context, *folder);
  return *folder + u'/' + QString::fromStdString(typed);
}

QString sizeInWords(qint64 bytes) {
  return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

}  // namespace quillo::ctl
