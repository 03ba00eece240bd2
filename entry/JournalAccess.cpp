#include "entry/JournalAccess.h"

#include "config/URLAccess.h"

#include <QFileInfo>

namespace quillo {

using namespace Qt::StringLiterals;

bool haveAccessToJournal(const std::optional<QUrl>& location) {
  return location && URLAccess::isReadable(*location) && URLAccess::isWritable(*location);
}

QString journalAccessProblem(const std::optional<QUrl>& location) {
  if (!location) return u"No journal is configured. Choose its location in Quillo's preferences."_s;
  if (!location->isLocalFile()) return u"It is not on this computer:"_s;
  if (!QFileInfo::exists(location->toLocalFile())) return u"There is nothing at its place:"_s;
  const bool readable = URLAccess::isReadable(*location);
  const bool writable = URLAccess::isWritable(*location);
  if (readable && writable) return {};
  if (readable) return u"You may read it, but not write to it:"_s;
  return writable ? u"You may write to it, but not read it:"_s : u"You may neither read it nor write to it:"_s;
}

QString journalLocationForDisplay(const std::optional<QUrl>& location) {
  if (!location) return {};
  const QString path = location->isLocalFile() ? location->toLocalFile() : location->toDisplayString();
  // A zero-width space is where a line may break.
  return QString(path).replace(u'/', u"/\u200b"_s);
}

}  // namespace quillo
