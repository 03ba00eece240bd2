#include "foundation/Bookmark.h"

#include "foundation/PropertyListSerialization.h"

#include <QFile>

#include <sys/stat.h>

#include <cerrno>

namespace quillo::Bookmark {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView pathKey{"path"};
constexpr QLatin1StringView deviceKey{"device"};
constexpr QLatin1StringView inodeKey{"inode"};
constexpr QLatin1StringView scopeKey{"securityScope"};

struct Identity {
  quint64 device;
  quint64 inode;
};

std::optional<Identity> identityOf(const QString& path, Error* error) {
  struct stat status {};
  if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
    fail(error, fileReadError(errno, path));
    return std::nullopt;
  }
  return Identity{status.st_dev, status.st_ino};
}

}  // namespace

std::optional<QByteArray> bookmarkData(const std::optional<QUrl>& url, int options, Error* error) {
  if (!url || !url->isLocalFile() || !url->toLocalFile().startsWith(u'/')) {
    fail(error, cocoaError(ErrorCode::fileNoSuchFile, u"There is no file to make a bookmark of"_s));
    return std::nullopt;
  }
  const QString path = url->toLocalFile();
  const auto identity = identityOf(path, error);
  if (!identity) return std::nullopt;
  return PropertyListSerialization::dataWithPropertyList(
      PropertyListDictionary{{pathKey, path},
                             {deviceKey, identity->device},
                             {inodeKey, identity->inode},
                             {scopeKey, (options & creationWithSecurityScope) != 0}},
      PropertyListFormat::Binary, error);
}

std::optional<Resolution> resolve(const QByteArray& data, int, Error* error) {
  const auto list = PropertyListSerialization::propertyListWithData(data, nullptr, error);
  if (!list) return std::nullopt;
  const PropertyListDictionary& fields = list->dictionary();
  const QString path = fields.value(pathKey).string();
  if (!path.startsWith(u'/')) {
    fail(error, cocoaError(ErrorCode::fileReadCorrupt, u"The data is not a bookmark"_s));
    return std::nullopt;
  }
  const auto identity = identityOf(path, error);
  if (!identity) return std::nullopt;
  const bool same = fields.value(deviceKey).unsignedIntegerValue() == identity->device &&
                    fields.value(inodeKey).unsignedIntegerValue() == identity->inode;
  return Resolution{QUrl::fromLocalFile(path), !same};
}

}  // namespace quillo::Bookmark
