#include "entry/session/JournalAccess.h"

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "config/URLAccess.h"
#include "foundation/UserDirectories.h"
#include "qlcore/JournalError.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QDir>
#include <QFileInfo>

namespace quillo {

using namespace Qt::StringLiterals;

// How many names are tried for a new journal. Who has so many other things by these names is told of the last.
static constexpr int namesToTry = 100;
// Of a path, in characters: four lines of the panel.
static constexpr qsizetype longestPath = 140;

bool haveAccessToJournal(const std::optional<QUrl>& location) {
  return location && URLAccess::isReadable(*location) && URLAccess::isWritable(*location);
}

SuggestedJournal suggestedJournal() {
  const QString documents = UserDirectories::current().documents;
  SuggestedJournal suggested;
  for (int number = 1; number <= namesToTry; ++number) {
    const QString name = number == 1 ? u"Journal"_s : u"Journal %1"_s.arg(number);
    suggested.location = QUrl::fromLocalFile(u"%1/%2.quillojournal"_s.arg(documents, name));
    const QFileInfo file(suggested.location.toLocalFile());
    if (!file.exists() && !file.isSymLink()) break;
    suggested.exists = QLJournalPackageFile::openPackage(suggested.location, /*create=*/false, nullptr) != nullptr;
    if (suggested.exists) break;
  }
  return suggested;
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

// The location as a part of a sentence that can be wrapped after any slash.
static QString forDisplay(const QUrl& location) {
  QString path = location.isLocalFile() ? location.toLocalFile() : location.toDisplayString();
  if (const QString home = UserDirectories::current().home; path.startsWith(home + u'/'))
    path.replace(0, home.size(), u"~"_s);
  if (path.size() > longestPath) path.replace(longestPath / 2, path.size() - longestPath, u"\u2026"_s);
  // A zero-width space is where a line may break.
  return path.replace(u'/', u"/\u200b"_s);
}

static QString journalAccessProblem(const QUrl& location) {
  const QString path = forDisplay(location);
  if (!location.isLocalFile()) return u"%1 is not on this computer."_s.arg(path);
  if (!QFileInfo::exists(location.toLocalFile()))
    return u"There is nothing at %1. Its drive may be unplugged, or the folder moved."_s.arg(path);
  const bool readable = URLAccess::isReadable(location);
  const bool writable = URLAccess::isWritable(location);
  if (readable && writable) return {};
  if (readable) return u"You may read %1, but not write to it."_s.arg(path);
  return (writable ? u"You may write to %1, but not read it."_s : u"You may neither read %1 nor write to it."_s)
      .arg(path);
}

JournalPanel journalPanel(const std::optional<QUrl>& location, bool isConfigurable) {
  if (location) return {u"The journal cannot be reached"_s, journalAccessProblem(*location)};
  if (!isConfigurable)
    return {u"The settings cannot be read"_s, u"They say where the journal is. The log has the reason."_s};
  const SuggestedJournal suggested = suggestedJournal();
  const QString place = forDisplay(suggested.location);
  if (suggested.exists)
    return {u"No journal is chosen yet"_s, u"There is one at %1. Use it, or choose another."_s.arg(place),
            JournalPanel::Offer::UseOrChoose};
  return {u"No journal yet"_s,
          u"A journal is a folder of plain files. Create one at %1, or choose one that you have."_s.arg(place),
          JournalPanel::Offer::CreateOrChoose};
}

QString whatWasWrittenIsKept() {
  return u"What you wrote is kept, and comes back with the journal."_s;
}

}  // namespace quillo
