#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace quillo {

struct DesktopFileGroup;

// What a launcher file (NAME.desktop) says about a program.
struct DesktopEntry {
  QString path;
  QString name;
  QString icon;
  QString exec;     // a command line with field codes
  QString tryExec;  // a program that has to be there; empty for none
  QString workingDirectory;
  QStringList mimeTypes;
  bool isHidden{false};  // says that the program was removed
  bool needsTerminal{false};

  // Nothing when the file cannot be read, is larger than a megabyte, or launches no program.
  [[nodiscard]] static std::optional<DesktopEntry> read(const QString& path);
  // As read(), from the text of the file; `path` is only kept.
  [[nodiscard]] static std::optional<DesktopEntry> parse(const QString& text, const QString& path);
  [[nodiscard]] static std::optional<DesktopEntry> fromGroup(const DesktopFileGroup& group, const QString& path);

  // The program and its arguments to open `url` with (an invalid one: just to start it). The URL is always one argument
  // of its own or part of one, whatever is in it; no shell is involved. Empty when the command line is malformed.
  [[nodiscard]] QStringList commandLine(const QUrl& url) const;
};

}  // namespace quillo
