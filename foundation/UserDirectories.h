#pragma once

#include <QString>
#include <QUrl>

namespace quillo {

// The user's directories, as absolute paths without a trailing slash. Nothing is created here.
struct UserDirectories {
  QString home;           // of the password database, or the one given by --home
  QString configuration;  // ~/.config
  QString data;           // ~/.local/share; application support goes below it
  QString caches;         // ~/.cache
  QString documents;      // ~/Documents, or as the desktop has it
  QString state;          // ~/.local/state

  // From the password database and the XDG environment.
  [[nodiscard]] static UserDirectories ofRealUser();
  // All of them below `home`, whatever the environment says.
  [[nodiscard]] static UserDirectories below(const QString& home);

  // What the process uses; ofRealUser() until the entry function sets another.
  [[nodiscard]] static const UserDirectories& current();
  static void setCurrent(const UserDirectories& directories);
  // What --home does: everything of ours goes below `home`, and so does what the libraries keep for us (the Trash), by
  // way of the XDG environment. The variable HOME stays: the display's authority file may be found through it.
  static void moveTo(const QString& home);
};

// The path of a file or folder as people know it: "~/Documents/Journal.quillojournal"; and such a path as a whole, of
// which a relative one begins in the user's documents.
[[nodiscard]] QString pathForPeople(const QUrl& location);
[[nodiscard]] QString pathOfPeople(const QString& typed);

}  // namespace quillo
