#include "app/switches/URLAdditions.h"

#include "platform/LoginItems.h"

#include <QDir>
#include <QStringList>

namespace quillo::URLAdditions {

namespace {

QString standardizedPath(const QUrl& url) {
  return QDir::cleanPath(url.path(QUrl::FullyDecoded));
}

// The path itself where there is no way up.
QString parentOf(const QString& path) {
  const qsizetype slash = path.lastIndexOf(u'/');
  if (slash < 0) return path;
  return path.left(slash > 0 ? slash : 1);
}

// A name that is nothing but ".app" has no extension.
bool hasBundleExtension(const QString& path) {
  const QString name = path.mid(path.lastIndexOf(u'/') + 1);
  return name.size() > 4 && name.endsWith(QLatin1StringView(".app"));
}

// "/" is the first component of an absolute path.
QStringList pathComponents(const QString& path) {
  QStringList components = path.split(u'/', Qt::SkipEmptyParts);
  if (path.startsWith(u'/')) components.prepend(QStringLiteral("/"));
  return components;
}

}  // namespace

std::optional<QUrl> containingBundleURL(const QUrl& url) {
  QString child = standardizedPath(url);
  QString current = parentOf(child);
  // Each turn the path is shorter, or it ends.
  while (current != child) {
    if (hasBundleExtension(current)) {
      QUrl bundle = url;
      bundle.setPath(current, QUrl::DecodedMode);
      return bundle;
    }
    child = current;
    current = parentOf(child);
  }
  return std::nullopt;
}

bool appURLWillStartAtLogin(const QUrl& url, LoginItemServices services) {
  const auto items = services.loginItems ? services.loginItems->sessionLoginItems() : std::nullopt;
  return items && items->contains(url);
}

void setAppURLWillStartAtLogin(const QUrl& url, bool willStart, LoginItemServices services) {
  const auto items = services.loginItems ? services.loginItems->sessionLoginItems() : std::nullopt;
  if (!items || items->contains(url) == willStart) return;
  if (willStart)
    services.loginItems->insertSessionLoginItemAtFront(url);
  else
    services.loginItems->removeSessionLoginItem(url);
}

bool isSubpathOfURL(const QUrl& url, const std::optional<QUrl>& other) {
  if (!other || other->isEmpty()) return false;
  const QStringList own = pathComponents(standardizedPath(url));
  const QStringList outer = pathComponents(standardizedPath(*other));
  return outer.size() <= own.size() && own.first(outer.size()) == outer;
}

}  // namespace quillo::URLAdditions
