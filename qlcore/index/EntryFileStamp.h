#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <array>
#include <compare>
#include <optional>

namespace quillo {

// What the file system says of a file: two equal stamps mean that it is the same and was not written to in between.
struct EntryFileStamp {
  qint64 size{-1};
  qint64 written{0};  // nanoseconds since 1970
  qint64 changed{0};  // the same of what is known about the file, which nobody can set back
  quint64 inode{0};

  bool operator==(const EntryFileStamp&) const = default;

  // Of the file `name` in an open folder; nothing where there is none. A link stands for itself.
  [[nodiscard]] static std::optional<EntryFileStamp> of(int folder, const char* name);
  [[nodiscard]] static std::optional<EntryFileStamp> of(int folder, const QByteArray& name) {
    return of(folder, name.constData());
  }
  // Of an open folder: as long as it stays the same, no name in it has come, gone or changed. Nothing where the file
  // system is not known to keep to that.
  [[nodiscard]] static std::optional<EntryFileStamp> ofNames(int folder);

  // The same stamp, but one that no file has: what was read is to be read again at the next occasion.
  [[nodiscard]] EntryFileStamp distrusted() const;
  [[nodiscard]] bool isDistrusted() const { return changed == 0; }
  // Distrusted where the last change is so recent at `now` that another one may leave the stamp as it is, since clocks
  // of file systems go in steps. `now` is asked for before the stamp.
  [[nodiscard]] EntryFileStamp trustedAt(qint64 now) const;
  // Nanoseconds since 1970.
  [[nodiscard]] static qint64 now();
};

// The name of an entry's file in little room: its identifier, and whether its letters are lower case. Sorted by the
// identifier.
struct EntryFileKey {
  std::array<unsigned char, 16> uuid{};
  bool isLowerCase{false};

  auto operator<=>(const EntryFileKey&) const = default;

  static constexpr size_t nameLength = 42;
  using Name = std::array<char, nameLength + 1>;  // ends with a zero

  // Nothing where `name` is no name of an entry's file.
  [[nodiscard]] static std::optional<EntryFileKey> fromName(const char* name, size_t length);
  [[nodiscard]] static std::optional<EntryFileKey> fromName(const QByteArray& name);
  // Of the entry that the conflict copy `name` is of; nothing where it is none.
  [[nodiscard]] static std::optional<EntryFileKey> ofCopy(const QByteArray& name);
  [[nodiscard]] QByteArray uuidBytes() const;
  [[nodiscard]] QString uuidText() const;
  [[nodiscard]] Name name() const;
  [[nodiscard]] QByteArray fileName() const;
};

// Key and stamp as one value of the database, sorted by key.
struct StampedFile {
  EntryFileKey key;
  EntryFileStamp stamp;

  static constexpr qsizetype keySize = 17;
  static constexpr qsizetype size = keySize + qsizetype{4} * 8;
  [[nodiscard]] QByteArray encoded() const;
  // The first bytes of all values with this key.
  [[nodiscard]] static QByteArray encodedKey(const EntryFileKey& key);
  // Nothing where `bytes` are none.
  [[nodiscard]] static std::optional<StampedFile> decoded(QByteArrayView bytes);
};

}  // namespace quillo
