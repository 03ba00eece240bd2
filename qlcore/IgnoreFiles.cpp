#include "qlcore/IgnoreFiles.h"

#include "qlcore/JournalFolder.h"

#include <algorithm>

namespace quillo::IgnoreFiles {

// Sources: Syncthing's manual, "Ignoring Files"; gitignore(5) and gitattributes(5); Nextcloud's desktop manual, "Sync
// Exclude List", of which the client reads one in every folder.
const QList<File>& all() {
  static const QList<File> files{
      {QLatin1StringView(".stignore"),
       "// Files in the works stay on this machine. (?d): they keep no folder from going.\n"
       "(?d).*.tmp\n"},
      {QLatin1StringView(".gitignore"),
       "# Files in the works stay on this machine, and so does what other programs that synchronise keep here.\n"
       ".*.tmp\n"
       "~syncthing~*\n"
       ".stfolder/\n"
       ".stversions/\n"
       ".sync_*.db*\n"
       "*.part\n"
       "*.orig\n"
       "*_BACKUP_*.plist\n"
       "*_BASE_*.plist\n"
       "*_LOCAL_*.plist\n"
       "*_REMOTE_*.plist\n"},
      {QLatin1StringView(".gitattributes"),
       "# Entries are merged as wholes: marks of a conflict between their lines would make them unreadable.\n"
       "*.plist -text -merge\n"},
      {QLatin1StringView(".sync-exclude.lst"),
       "# Files in the works stay on this machine.\n"
       ".*.tmp\n"},
  };
  return files;
}

bool write(const JournalFolder& folder, Error* error) {
  return std::all_of(all().begin(), all().end(),
                     [&](const File& file) { return folder.replaceFile(file.name, file.content, error); });
}

}  // namespace quillo::IgnoreFiles
