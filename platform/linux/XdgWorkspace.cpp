#include "platform/linux/XdgWorkspace.h"

#include "foundation/DetachedProcess.h"
#include "foundation/Log.h"
#include "platform/linux/ApplicationDatabase.h"

#include <QMimeDatabase>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

ApplicationDatabase installedApplications() {
  return ApplicationDatabase(ApplicationDatabase::Places::ofEnvironment());
}

bool start(const DesktopEntry& entry, const QUrl& url) {
  auto arguments = entry.commandLine(url);
  if (arguments.isEmpty()) return false;
  const QString program = arguments.takeFirst();
  QString reason;
  if (startDetached(program, arguments, entry.workingDirectory, &reason)) return true;
  QLLogError(u"%1 could not be started: %2"_s.arg(program, reason));
  return false;
}

}  // namespace

std::optional<DesktopEntry> handlerOfURL(const QUrl& url, const ApplicationDatabase& database) {
  if (!url.isValid() || url.scheme().isEmpty()) return {};
  if (!url.isLocalFile()) return database.handler(u"x-scheme-handler/"_s + url.scheme());
  const auto type = QMimeDatabase().mimeTypeForFile(url.toLocalFile());
  for (const auto& name : QStringList{type.name()} + type.allAncestors())
    if (auto entry = database.handler(name)) return entry;
  return {};
}

bool XdgWorkspace::openURL(const QUrl& url) {
  const auto entry = handlerOfURL(url, installedApplications());
  if (entry) return start(*entry, url);
  // Without the rest of the URL, which may be private.
  QLLogInfo(u"No installed program opens this \"%1:\" URL"_s.arg(url.scheme().left(40)));
  return false;
}

std::optional<QUrl> XdgWorkspace::urlForApplication(const QString& bundleIdentifier) const {
  const auto entry = installedApplications().application(bundleIdentifier + u".desktop"_s);
  if (!entry) return {};
  return QUrl::fromLocalFile(entry->path);
}

bool XdgWorkspace::launchApplication(const QString& bundleIdentifier) {
  const auto entry = installedApplications().application(bundleIdentifier + u".desktop"_s);
  return entry && !entry->needsTerminal && start(*entry, {});
}

}  // namespace quillo
