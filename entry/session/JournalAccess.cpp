#include "entry/session/JournalAccess.h"

#include "config/URLAccess.h"
#include "foundation/UserDirectories.h"
#include "qlcore/JournalChoice.h"

#include <QFileInfo>

namespace quillo {

using namespace Qt::StringLiterals;

// Of a path, in characters: four lines of the panel.
static constexpr qsizetype longestPath = 140;

bool haveAccessToJournal(const std::optional<QUrl>& location) {
  return location && URLAccess::isReadable(*location) && URLAccess::isWritable(*location);
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
