#include "qlcore/index/EntryFileStamp.h"

#include <QtEndian>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <string_view>

namespace quillo {

namespace {

constexpr std::string_view suffix = ".plist";
constexpr size_t uuidLength = 36;

bool isDashAt(size_t at) {
  return at == 8 || at == 13 || at == 18 || at == 23;
}

qint64 nanoseconds(const timespec& time) {
  return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

std::optional<EntryFileStamp> EntryFileStamp::of(int folder, const QByteArray& name) {
  struct stat status {};
  if (::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return EntryFileStamp{status.st_size, nanoseconds(status.st_mtim), nanoseconds(status.st_ctim), status.st_ino};
}

EntryFileStamp EntryFileStamp::distrusted() const {
  EntryFileStamp stamp = *this;
  stamp.changed = 0;
  return stamp;
}

std::optional<EntryFileKey> EntryFileKey::fromName(const char* name, size_t length) {
  if (length != uuidLength + suffix.size() || std::string_view(name + uuidLength, suffix.size()) != suffix)
    return std::nullopt;
  EntryFileKey key;
  bool hasUpper = false;
  bool isZero = true;
  size_t nibble = 0;
  for (size_t i = 0; i < uuidLength; ++i) {
    const char c = name[i];
    if (isDashAt(i)) {
      if (c != '-') return std::nullopt;
      continue;
    }
    int digit = -1;
    if (c >= '0' && c <= '9') digit = c - '0';
    if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
    if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
    if (digit < 0) return std::nullopt;
    hasUpper = hasUpper || (c >= 'A' && c <= 'F');
    key.isLowerCase = key.isLowerCase || c >= 'a';
    isZero = isZero && digit == 0;
    unsigned char& byte = key.uuid.at(nibble++ / 2);
    byte = static_cast<unsigned char>(byte << 4 | digit);
  }
  if (isZero || (hasUpper && key.isLowerCase)) return std::nullopt;
  return key;
}

std::optional<EntryFileKey> EntryFileKey::fromName(const QByteArray& name) {
  return fromName(name.constData(), static_cast<size_t>(name.size()));
}

QString EntryFileKey::uuidText() const {
  static constexpr char digits[] = "0123456789ABCDEF";
  QString text(static_cast<qsizetype>(uuidLength), u'-');
  qsizetype at = 0;
  for (const unsigned char byte : uuid) {
    if (isDashAt(static_cast<size_t>(at))) ++at;
    text[at++] = QLatin1Char(digits[byte >> 4]);
    text[at++] = QLatin1Char(digits[byte & 15]);
  }
  return text;
}

QByteArray EntryFileKey::fileName() const {
  const QByteArray name = uuidText().toLatin1();
  return (isLowerCase ? name.toLower() : name) + QByteArray(suffix.data(), static_cast<qsizetype>(suffix.size()));
}

QByteArray StampedFile::encodedKey(const EntryFileKey& key) {
  QByteArray bytes(keySize, Qt::Uninitialized);
  std::copy(key.uuid.begin(), key.uuid.end(), bytes.begin());
  bytes[keySize - 1] = key.isLowerCase ? '\1' : '\0';
  return bytes;
}

QByteArray StampedFile::encoded() const {
  QByteArray bytes = encodedKey(key);
  bytes.resize(size);
  char* at = bytes.data() + keySize;
  qToBigEndian(stamp.size, at);
  qToBigEndian(stamp.written, at + 8);
  qToBigEndian(stamp.changed, at + 16);
  qToBigEndian(stamp.inode, at + 24);
  return bytes;
}

std::optional<StampedFile> StampedFile::decoded(const QByteArray& bytes) {
  if (bytes.size() != size) return std::nullopt;
  StampedFile file;
  std::copy(bytes.begin(), bytes.begin() + keySize - 1, file.key.uuid.begin());
  file.key.isLowerCase = bytes[keySize - 1] != '\0';
  const char* at = bytes.constData() + keySize;
  file.stamp = {qFromBigEndian<qint64>(at), qFromBigEndian<qint64>(at + 8), qFromBigEndian<qint64>(at + 16),
                qFromBigEndian<quint64>(at + 24)};
  return file;
}

}  // namespace quillo
