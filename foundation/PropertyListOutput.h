#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace quillo::PropertyListCoding {

// The bytes written so far, with room for more behind them: whoever writes has made sure of the room.
class Output {
 public:
  [[nodiscard]] qsizetype size() const { return m_at - m_bytes.constData(); }
  void makeRoom(qsizetype count) {
    if (m_end - m_at < count) grow(count);
  }
  void put(char c) { *m_at++ = c; }
  void put(std::string_view text) {
    std::memcpy(m_at, text.data(), text.size());
    m_at += text.size();
  }
  void fill(char c, qsizetype count) {
    std::memset(m_at, c, static_cast<size_t>(count));
    m_at += count;
  }
  // The same with the room for it.
  void append(std::string_view text) {
    makeRoom(static_cast<qsizetype>(text.size()));
    put(text);
  }
  // For functions that write to a range; what they have written ends at `end`.
  [[nodiscard]] char* at() const { return m_at; }
  [[nodiscard]] char* end() const { return m_end; }
  void moveTo(char* end) { m_at = end; }
  [[nodiscard]] QByteArray taken() {
    m_bytes.truncate(size());
    // Doubling has left up to as much room again.
    if (m_bytes.capacity() - m_bytes.size() > m_bytes.size() / 8) m_bytes.squeeze();
    return std::move(m_bytes);
  }

 private:
  void grow(qsizetype count) {
    const qsizetype used = m_at ? size() : 0;
    m_bytes.resize(std::max(2 * used, used + count + 4096));
    m_at = m_bytes.data() + used;
    m_end = m_bytes.data() + m_bytes.size();
  }
  QByteArray m_bytes;
  char* m_at{nullptr};
  char* m_end{nullptr};
};

}  // namespace quillo::PropertyListCoding
