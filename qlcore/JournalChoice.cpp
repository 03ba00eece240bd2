#include "qlcore/JournalChoice.h"

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "foundation/UserDirectories.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QDir>
#include <QFileInfo>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// How many names are tried for a new journal. Who has so many other things by these names is told of the last.
constexpr int namesToTry = 100;

// The first place at which there is nothing, or, where that will do, a journal.
SuggestedJournal firstPlace(const QString& folder, bool takesJournal) {
  SuggestedJournal suggested;
  for (int number = 1; number <= namesToTry; ++number) {
    const QString name = number == 1 ? u"Journal"_s : u"Journal %1"_s.arg(number);
    suggested.location = QUrl::fromLocalFile(u"%1/%2.quillojournal"_s.arg(folder, name));
    const QFileInfo file(suggested.location.toLocalFile());
    if (!file.exists() && !file.isSymLink()) break;
    suggested.exists =
        takesJournal && QLJournalPackageFile::openPackage(suggested.location, /*create=*/false, nullptr) != nullptr;
    if (suggested.exists) break;
  }
  return suggested;
}

}  // namespace

SuggestedJournal suggestedJournal() {
  return firstPlace(UserDirectories::current().documents, /*takesJournal=*/true);
}

QUrl freeJournalLocation() {
  return freeJournalLocation(UserDirectories::current().documents);
}

QUrl freeJournalLocation(const QString& folder) {
  return firstPlace(folder, /*takesJournal=*/false).location;
}

bool useJournal(QuilloConfig& config, const QUrl& location, bool create, Error* error) {
  // A home that is new has no folder of documents yet.
  if (create) QDir().mkpath(QFileInfo(location.toLocalFile()).path());
  const auto package = QLJournalPackageFile::openPackage(location, create, error);
  if (!package) return false;
  config.setConfiguredJournalFileURL(package->url());
  PersistentPropertyList* list = config.groupProperties();
  if (list && !list->dirtyProperties().contains(Key::journalPackageURL)) return true;
  return fail(error, {JournalError::domain,
                      JournalError::NotWritable,
                      u"The place of the journal could not be saved in the settings."_s,
                      u"It is used until Quillo ends. The log has the reason."_s,
                      {}});
}

}  // namespace quillo
