#include "qlcore/index/EntryFileStamp.h"

#include "qlcore/ConflictNames.h"

#include <QtEndian>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <time.h>

#include <algorithm>
#include <string_view>

namespace quillo {

namespace {

constexpr std::string_view suffix = ".plist";
constexpr size_t uuidLength = 36;
static_assert(uuidLength + suffix.size() == EntryFileKey::nameLength);
// Of file systems that keep times in steps, the coarsest that are in use count in twos of seconds.
constexpr qint64 coarsestClock = 2'000'000'000;

constexpr bool isDashAt(size_t at) {
  return at == 8 || at == 13 || at == 18 || at == 23;
}

constexpr std::string_view upperDigits = "0123456789ABCDEF";
constexpr std::string_view lowerDigits = "0123456789abcdef";
constexpr signed char noDigit = -1;

// What each character is worth as a digit.
constexpr auto digitValues = [] {
  std::array<signed char, 256> values{};
  values.fill(noDigit);
  for (const std::string_view digits : {upperDigits, lowerDigits})
    for (size_t i = 0; i < digits.size(); ++i)
      values.at(static_cast<unsigned char>(digits[i])) = static_cast<signed char>(i);
  return values;
}();

qint64 nanoseconds(const timespec& time) {
  return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

std::optional<EntryFileStamp> EntryFileStamp::of(int folder, const char* name) {
  struct stat status {};
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return EntryFileStamp{status.st_size, nanoseconds(status.st_mtim), nanoseconds(status.st_ctim), status.st_ino};
}

std::optional<EntryFileStamp> EntryFileStamp::ofNames(int folder) {
  // Those of other systems and of networks may be changed by a machine that sees to its times in another way.
  static constexpr std::array<quint32, 5> known{EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC,
                                                TMPFS_MAGIC};
  struct statfs system {};
  if (::fstatfs(folder, &system) != 0) return std::nullopt;
  if (std::find(known.begin(), known.end(), static_cast<quint32>(system.f_type)) == known.end()) return std::nullopt;
  const qint64 before = now();
  const auto stamp = of(folder, ".");
  return stamp ? std::optional(stamp->trustedAt(before)) : std::nullopt;
}

qint64 EntryFileStamp::now() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return nanoseconds(now);
}

EntryFileStamp EntryFileStamp::trustedAt(qint64 now) const {
  return changed > now - coarsestClock ? distrusted() : *this;
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
  unsigned any = 0;
  size_t nibble = 0;
  for (size_t i = 0; i < uuidLength; ++i) {
    const char c = name[i];
    if (isDashAt(i)) {
      if (c != '-') return std::nullopt;
      continue;
    }
    const int digit = digitValues[static_cast<unsigned char>(c)];
    if (digit == noDigit) return std::nullopt;
    hasUpper = hasUpper || (c >= 'A' && c <= 'F');
    key.isLowerCase = key.isLowerCase || c >= 'a';
    any |= static_cast<unsigned>(digit);
    unsigned char& byte = key.uuid[nibble++ / 2];
    byte = static_cast<unsigned char>(byte << 4 | digit);
  }
  if (any == 0 || (hasUpper && key.isLowerCase)) return std::nullopt;
  return key;
}

std::optional<EntryFileKey> EntryFileKey::fromName(const QByteArray& name) {
  return fromName(name.constData(), static_cast<size_t>(name.size()));
}

std::optional<EntryFileKey> EntryFileKey::ofCopy(const QByteArray& name) {
  if (!ConflictNames::isConflictCopy(name)) return std::nullopt;
  auto key = fromName(name.first(qsizetype{uuidLength}).toUpper() + QByteArray(suffix.data(), suffix.size()));
  return key;
}

QByteArray EntryFileKey::uuidBytes() const {
  QByteArray bytes(static_cast<qsizetype>(uuid.size()), Qt::Uninitialized);
  std::copy(uuid.begin(), uuid.end(), bytes.begin());
  return bytes;
}

EntryFileKey::Name EntryFileKey::name() const {
  const std::string_view digits = isLowerCase ? lowerDigits : upperDigits;
  Name name{};
  size_t at = 0;
  for (const unsigned char byte : uuid) {
    if (isDashAt(at)) name[at++] = '-';
    name[at++] = digits[byte >> 4];
    name[at++] = digits[byte & 15];
  }
  std::copy(suffix.begin(), suffix.end(), name.begin() + uuidLength);
  return name;
}

QString EntryFileKey::uuidText() const {
  return QString::fromLatin1(EntryFileKey{uuid, false}.name().data(), qsizetype{uuidLength});
}

QByteArray EntryFileKey::fileName() const {
  return {name().data(), qsizetype{nameLength}};
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

std::optional<StampedFile> StampedFile::decoded(QByteArrayView bytes) {
  if (bytes.size() != size) return std::nullopt;
  StampedFile file;
  std::copy(bytes.begin(), bytes.begin() + keySize - 1, file.key.uuid.begin());
  file.key.isLowerCase = bytes[keySize - 1] != '\0';
  const char* at = bytes.data() + keySize;
  file.stamp = {qFromBigEndian<qint64>(at), qFromBigEndian<qint64>(at + 8), qFromBigEndian<qint64>(at + 16),
                qFromBigEndian<quint64>(at + 24)};
  return file;
}

}  // namespace quillo
