#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace quillo {

// What we read and write of a desktop file in the autostart folder. Only the group "Desktop Entry" counts; keys that
// are not ours are passed over.
struct AutostartEntry {
  QString name;
  QString comment, icon;  // written only
  QString program;        // of the Exec line, as written there: a path, or a name to be looked up
  QStringList arguments;  // written only: reading stops after the program
  QString tryProgram;     // of TryExec; empty where there is none
  // Switched off by hand: by the desktop's settings, in the way of the standard or in GNOME's.
  bool isHidden{false};
  bool onDemand{false};
  // The item's URL and its place in the session's list; the smaller number comes first.
  std::optional<QUrl> url;
  qint64 order{0};

  // Nothing for what is no desktop file of an application.
  [[nodiscard]] static std::optional<AutostartEntry> fromBytes(const QByteArray& bytes);
  [[nodiscard]] QByteArray toBytes() const;

  // The absolute path of what the session would start; empty where there is nothing, so that it starts nothing.
  [[nodiscard]] QString executable() const;
};

}  // namespace quillo
