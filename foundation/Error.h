#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace quillo {

// Error domains and codes of the platform that callers test for.
namespace ErrorDomain {
inline constexpr QLatin1StringView cocoa{"NSCocoaErrorDomain"};
inline constexpr QLatin1StringView posix{"NSPOSIXErrorDomain"};
inline constexpr QLatin1StringView osStatus{"NSOSStatusErrorDomain"};
}  // namespace ErrorDomain

namespace ErrorCode {
// Codes of ErrorDomain::cocoa.
inline constexpr qint64 fileNoSuchFile = 4;
inline constexpr qint64 fileReadUnknown = 256;
inline constexpr qint64 fileReadNoPermission = 257;
inline constexpr qint64 fileReadCorrupt = 259;
inline constexpr qint64 fileReadNoSuchFile = 260;
inline constexpr qint64 fileWriteUnknown = 512;
inline constexpr qint64 fileWriteNoPermission = 513;
inline constexpr qint64 fileWriteFileExists = 516;
inline constexpr qint64 fileWriteOutOfSpace = 640;
inline constexpr qint64 fileWriteVolumeReadOnly = 642;
inline constexpr qint64 propertyListReadCorrupt = 3840;
inline constexpr qint64 propertyListWriteInvalid = 3852;
// Codes of ErrorDomain::osStatus.
inline constexpr qint64 fileNotFound = -43;
}  // namespace ErrorCode

// Why an operation failed. Functions that can fail answer false or nothing and fill an `Error*` when one is given;
// nothing throws.
struct Error {
  QString domain;
  qint64 code{0};
  QString localizedDescription;
  QString recoverySuggestion;
  QStringList recoveryOptions;

  // One line for the log: domain, code and text.
  [[nodiscard]] QString description() const;

  bool operator==(const Error&) const = default;
};

// An error of ErrorDomain::cocoa.
[[nodiscard]] Error cocoaError(qint64 code, const QString& description);
// The error that `errno` value `number` of a failed read or write of `path` stands for.
[[nodiscard]] Error fileReadError(int number, const QString& path);
[[nodiscard]] Error fileWriteError(int number, const QString& path);

// Fills `out` when the caller asked for the error; answers false so that a failing function can return it.
inline bool fail(Error* out, Error error) {
  if (out) *out = std::move(error);
  return false;
}

}  // namespace quillo
