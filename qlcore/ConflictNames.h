#pragma once

#include <QByteArrayView>
#include <QDateTime>
#include <QString>

#include <optional>

namespace quillo {

// The programs that carry a journal from one machine to another.
enum class Synchroniser { Syncthing, Nextcloud, OwnCloud, Dropbox, Unison, Other };

// What the name of a conflict copy says. Where two machines changed the same entry, a program that synchronises them
// leaves one version in the entry's file, UUID.plist, and puts the other beside it, under a name that begins and ends
// as that one does.
struct ConflictName {
  QString uuid;  // of the entry, as file names have it
  Synchroniser origin{Synchroniser::Other};
  QString from;    // the machine or person that the copy is of, as the name has it; empty where it does not say
  QDateTime made;  // by the clock there, without its zone; invalid where the name does not say

  bool operator==(const ConflictName&) const = default;
};

namespace ConflictNames {

// Nothing for an entry's own file, a temporary file, and whatever does not belong to an entry. A name of an entry with
// something of unknown make in it is a copy, too: nobody's words are passed over because of how they are named.
[[nodiscard]] std::optional<ConflictName> parse(const QString& fileName);
// The same for folders of very many names; `name` as the file system has it.
[[nodiscard]] bool isConflictCopy(QByteArrayView name);
// Whether it ends as the names of entries and of copies do, and is not hidden.
[[nodiscard]] bool hasEnding(QByteArrayView name);

// The name that the copy `fileName` would have in a folder that is not encrypted: one that every program can move.
[[nodiscard]] QString plainName(const QString& fileName);

// Whether it is a file that a synchroniser, a merge of versions or we ourselves have in the works, or keep an account
// in: no entry, and no damage.
[[nodiscard]] bool isTemporary(const QString& fileName);

// As its makers write it; "another program" for others.
[[nodiscard]] QString nameOf(Synchroniser synchroniser);

}  // namespace ConflictNames
}  // namespace quillo
