#pragma once

#include "platform/linux/DesktopEntry.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// The installed programs, and which of them handles a type, by the rules that desktops share. Reads the files at every
// question: they are asked seldom, and programs come and go.
class ApplicationDatabase {
 public:
  // Directories, the most important first.
  struct Places {
    QStringList configuration;      // where mimeapps.list is
    QStringList data;               // which have a directory "applications"
    QStringList executables;        // of the PATH
    QStringList desktopsLowerCase;  // names of the current desktop, such as "kde"

    [[nodiscard]] static Places ofEnvironment();
  };

  explicit ApplicationDatabase(Places places);

  // The program of a desktop file's name without its path, "com.quilloapp.quillo.desktop"; nothing when it is not
  // installed, was hidden by the user or lacks its executable.
  [[nodiscard]] std::optional<DesktopEntry> application(const QString& desktopFile) const;

  // The program that opens this type ("text/plain", "x-scheme-handler/quillo"): the user's choice, the system's, or the
  // first that offers itself. Programs that need a terminal are passed over.
  [[nodiscard]] std::optional<DesktopEntry> handler(const QString& mimeType) const;

 private:
  [[nodiscard]] QStringList associationFiles() const;
  [[nodiscard]] std::optional<DesktopEntry> usable(const QString& desktopFile) const;
  [[nodiscard]] bool hasExecutable(const QString& program) const;

  const Places m_places;
};

}  // namespace quillo
