#include "foundation/Error.h"

#include <cerrno>
#include <cstring>

namespace quillo {

using namespace Qt::StringLiterals;

QString Error::description() const {
  QString text = u"%1 %2: %3"_s.arg(domain).arg(code).arg(localizedDescription);
  if (!recoverySuggestion.isEmpty()) text += u' ' + recoverySuggestion;
  return text;
}

Error cocoaError(qint64 code, const QString& description) {
  return {ErrorDomain::cocoa, code, description, {}, {}};
}

static QString reason(int number, const QString& path) {
  return path + u": "_s + QString::fromLocal8Bit(std::strerror(number));
}

Error fileReadError(int number, const QString& path) {
  qint64 code = ErrorCode::fileReadUnknown;
  if (number == ENOENT) code = ErrorCode::fileReadNoSuchFile;
  if (number == EACCES || number == EPERM) code = ErrorCode::fileReadNoPermission;
  return cocoaError(code, reason(number, path));
}

Error fileWriteError(int number, const QString& path) {
  qint64 code = ErrorCode::fileWriteUnknown;
  if (number == ENOENT) code = ErrorCode::fileNoSuchFile;
  if (number == EACCES || number == EPERM) code = ErrorCode::fileWriteNoPermission;
  if (number == EEXIST) code = ErrorCode::fileWriteFileExists;
  if (number == ENOSPC || number == EDQUOT) code = ErrorCode::fileWriteOutOfSpace;
  if (number == EROFS) code = ErrorCode::fileWriteVolumeReadOnly;
  return cocoaError(code, reason(number, path));
}

}  // namespace quillo
