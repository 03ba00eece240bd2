#pragma once

#include <QByteArrayView>

#include <unistd.h>

#include <utility>

namespace quillo {

// Owns a file descriptor; a negative number is none. Moving leaves the other without one.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int number) : m_number(number) {}
  ~FileDescriptor() { close(); }
  FileDescriptor(FileDescriptor&& other) noexcept : m_number(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    FileDescriptor old(std::exchange(m_number, other.release()));
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  [[nodiscard]] int number() const { return m_number; }
  [[nodiscard]] bool isOpen() const { return m_number >= 0; }
  // For a function that becomes the owner.
  [[nodiscard]] int release() { return std::exchange(m_number, -1); }
  // False when the last write failed late, as on a network file system.
  bool close() {
    const int number = release();
    return number < 0 || ::close(number) == 0;
  }

 private:
  int m_number{-1};
};

// Writes all of `bytes` to a descriptor that waits until it can take them, in as many calls as that needs. Answers
// errno, or 0; `written`, where given, receives how many bytes went out. Safe in a signal handler.
int writeAll(int descriptor, QByteArrayView bytes, qsizetype* written = nullptr);

}  // namespace quillo
