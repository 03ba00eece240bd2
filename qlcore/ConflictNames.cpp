#include "qlcore/ConflictNames.h"

#include "qlcore/QLJournalEntryFile.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace quillo::ConflictNames {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype uuidLength = 36;
constexpr QLatin1StringView suffix{".plist"};
// What gocryptfs(1), option -badname, puts behind the name of a copy that was made in the encrypted folder, where a
// name has no ending that a synchroniser would keep at its end: UUID.plist.sync-conflict-... GOCRYPTFS_BAD_NAME.
constexpr QLatin1StringView badName{" GOCRYPTFS_BAD_NAME"};

struct Form {
  Synchroniser origin;
  QRegularExpression pattern;  // of what stands between identifier and ending
};

// Sources:
//   Syncthing   User's manual, "Understanding Synchronization", Conflicting Changes:
//               <filename>.sync-conflict-<date>-<time>-<modifiedBy>.<ext>; without the last part before version
//               0.14.50.
//   Nextcloud   User manual, Desktop, "Conflicts": (conflicted copy YYYY-MM-DD HHMMSS), with the user's name before the
//   ownCloud    date where the server takes conflict files. The client of ownCloud has had the same since version 2.5,
//               and _conflict-YYYYMMDD-HHMMSS, or _conflict_USER-..., before it.
//   Dropbox     Help Center, "What's a conflicted copy?": (NAME's conflicted copy YYYY-MM-DD), in the language of the
//               person, with a number where there are several in a day.
//   Unison      Manual, preference copyonconflict: (copy: conflict on YYYY-MM-DD), with a number likewise.
const std::array<Form, 9>& forms() {
  static const std::array<Form, 9> all{{
      {Synchroniser::Syncthing,
       QRegularExpression(u"^\\.sync-conflict-(?<date>\\d{8})-(?<time>\\d{6})(?:-(?<from>[A-Z0-9]+))?$"_s)},
      {Synchroniser::Nextcloud,
       QRegularExpression(
           u"^ \\(conflicted copy (?:(?<from>[^()]+) )?(?<date>\\d{4}-\\d\\d-\\d\\d) (?<time>\\d{6})\\)$"_s)},
      {Synchroniser::OwnCloud, QRegularExpression(u"^_conflict(?:_(?<from>.+))?-(?<date>\\d{8})-(?<time>\\d{6})$"_s)},
      {Synchroniser::Unison,
       QRegularExpression(u"^ \\(copy: conflict(?: #\\d+)? on (?<date>\\d{4}-\\d\\d-\\d\\d)(?<from>)(?<time>)\\)$"_s)},
      {Synchroniser::Dropbox,
       QRegularExpression(u"^ \\((?:(?<from>.+?)(?:'s|’s)? )?conflicted copy(?: (?<date>\\d{4}-\\d\\d-\\d\\d))?"
                          "(?<time>)(?: \\(\\d+\\)| \\d+)?\\)(?: \\(\\d+\\))?$"_s,
                          QRegularExpression::CaseInsensitiveOption)},
      {Synchroniser::Dropbox,
       QRegularExpression(u"^ \\((?<from>.+?)s? in Konflikt stehende Kopie(?: (?<date>\\d{4}-\\d\\d-\\d\\d))?"
                          "(?<time>)(?: \\(\\d+\\))?\\)$"_s)},
      {Synchroniser::Dropbox,
       QRegularExpression(u"^ \\((?:In Konflikt stehende Kopie von|Copie en conflit de|Copia en conflicto de|"
                          "Copia conflictiva de|Copia in conflitto di|Cópia em conflito de) (?<from>.+?)"
                          "(?: (?<date>\\d{4}-\\d\\d-\\d\\d))?(?<time>)(?: \\(\\d+\\))?\\)$"_s,
                          QRegularExpression::CaseInsensitiveOption)},
      {Synchroniser::Dropbox,
       QRegularExpression(
           u"^ \\((?<from>.+?) ?の競合コピー(?: (?<date>\\d{4}-\\d\\d-\\d\\d))?(?<time>)(?: \\(\\d+\\))?\\)$"_s)},
      // Of two files whose names differ in their letters' case, on a machine that takes them for the same.
      {Synchroniser::Dropbox,
       QRegularExpression(u"^ \\((?<from>)Case Conflict(?<date>)(?<time>)(?: \\(?\\d+\\)?)?\\)$"_s)},
  }};
  return all;
}

// Invalid where the digits are no date.
QDateTime madeAt(QString date, const QString& time) {
  const QDate day = QDate::fromString(date.remove(u'-'), u"yyyyMMdd"_s);
  if (!day.isValid()) return {};
  const QTime clock = QTime::fromString(time, u"HHmmss"_s);
  return {day, clock.isValid() ? clock : QTime(0, 0), Qt::UTC};
}

// Files that a merge of git leaves beside: what both came from, and what each has. In the names of before version 2.5,
// and in those since.
bool isOfMerge(QStringView middle) {
  static const QRegularExpression pattern(
      u"^(?:\\.plist\\.(?:BACKUP|BASE|LOCAL|REMOTE)\\.\\d+|_(?:BACKUP|BASE|LOCAL|REMOTE)_\\d+)$"_s);
  return pattern.match(middle).hasMatch();
}

// The identifier that `name` begins with, and what comes before the ending; nothing where it has neither.
struct Parts {
  QString uuid;
  QString middle;
};
std::optional<Parts> partsOf(const QString& name) {
  if (name.size() <= uuidLength + suffix.size()) return std::nullopt;
  const auto uuid = QLJournalEntryFile::canonicalUUID(name.first(uuidLength));
  const QString rest = name.sliced(uuidLength);
  if (uuid && rest.startsWith(suffix) && rest.endsWith(badName))
    return Parts{*uuid, rest.chopped(badName.size()).sliced(suffix.size())};
  if (uuid && rest.endsWith(suffix)) return Parts{*uuid, rest.chopped(suffix.size())};
  return std::nullopt;
}

// Sources: Syncthing's manual, "Understanding Synchronization", Temporary Files; the list sync-exclude.lst of the
// desktop clients of Nextcloud and ownCloud, whose downloads are .NAME.~NUMBER; Unison's manual, "Keeping Backups" and
// the preference "atomic temporary"; rsync(1), --partial-dir; git-mergetool(1).
const QRegularExpression& temporaryPattern() {
  static const QRegularExpression pattern(
      u"^(?:[.~]syncthing[.~].*\\.tmp"
      "|\\.syncthing-enc.*"
      "|\\..*\\.~[0-9a-fA-F]+"
      "|\\.(?:owncloud|nextcloud)sync\\.log.*"
      "|\\._?sync_.*\\.db.*|\\.csync_journal\\.db.*"
      "|\\.(?:unison\\.|#).*\\.unison\\.tmp"
      "|\\.dropbox(?:\\.attr|\\.cache)?"
      "|\\.[^.]+\\.plist\\.[A-Za-z0-9]{6}"
      "|\\..*\\.plist\\.[0-9]+\\.[0-9]+\\.tmp"
      "|.*\\.(?:part|partial|filepart|crdownload|orig))$"_s);
  return pattern;
}

}  // namespace

std::optional<ConflictName> parse(const QString& fileName) {
  const auto parts = partsOf(fileName);
  if (!parts || isOfMerge(parts->middle)) return std::nullopt;
  ConflictName name{parts->uuid, Synchroniser::Other, {}, {}};
  for (const Form& form : forms()) {
    const auto match = form.pattern.match(parts->middle);
    if (!match.hasMatch()) continue;
    name.origin = form.origin;
    name.from = match.captured(u"from"_s);
    name.made = madeAt(match.captured(u"date"_s), match.captured(u"time"_s));
    break;
  }
  return name;
}

bool isConflictCopy(QByteArrayView name) {
  if (name.size() <= uuidLength + suffix.size() || !hasEnding(name) || name[8] != '-' || name[13] != '-') return false;
  return parse(QFile::decodeName(name.toByteArray())).has_value();
}

QString plainName(const QString& fileName) {
  const auto parts = fileName.endsWith(badName) ? partsOf(fileName) : std::nullopt;
  return parts ? fileName.first(uuidLength) + parts->middle + suffix : fileName;
}

bool hasEnding(QByteArrayView name) {
  return !name.startsWith('.') &&
         (name.endsWith(".plist") || name.endsWith(QByteArrayView(badName.data(), badName.size())));
}

bool isTemporary(const QString& fileName) {
  const auto parts = partsOf(fileName);
  return parts ? isOfMerge(parts->middle) : temporaryPattern().match(fileName).hasMatch();
}

QString nameOf(Synchroniser synchroniser) {
  switch (synchroniser) {
    case Synchroniser::Syncthing:
      return u"Syncthing"_s;
    case Synchroniser::Nextcloud:
      return u"Nextcloud"_s;
    case Synchroniser::OwnCloud:
      return u"ownCloud"_s;
    case Synchroniser::Dropbox:
      return u"Dropbox"_s;
    case Synchroniser::Unison:
      return u"Unison"_s;
    case Synchroniser::Other:
      break;
  }
  return u"another program"_s;
}

}  // namespace quillo::ConflictNames
