#pragma once

#include <unistd.h>

#include <utility>

namespace quillo {

// Owns a file descriptor; a negative number is none.
class FileDescriptor {
 public:
  explicit FileDescriptor(int number) : m_number(number) {}
  ~FileDescriptor() { close(); }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  [[nodiscard]] int number() const { return m_number; }
  [[nodiscard]] bool isOpen() const { return m_number >= 0; }
  // False when the last write failed late, as on a network file system.
  bool close() {
    const int number = std::exchange(m_number, -1);
    return number < 0 || ::close(number) == 0;
  }

 private:
  int m_number;
};

}  // namespace quillo
