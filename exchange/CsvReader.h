#pragma once

#include <QByteArray>
#include <QStringList>

namespace quillo {

// The records of a text in UTF-8 whose fields stand between commas, semicolons or tabs, whichever the first line has
// most of; in quotation marks a field may hold those, line breaks and doubled quotation marks (RFC 4180).
class CsvReader {
 public:
  explicit CsvReader(const QByteArray& bytes);

  // The next record that is no empty line. False at the end and where there is a fault.
  bool next();
  [[nodiscard]] const QStringList& fields() const { return m_fields; }
  // Where the record begins, or the fault is.
  [[nodiscard]] int line() const { return m_recordLine; }
  // A quotation mark that has no end.
  [[nodiscard]] bool hasFault() const { return m_hasFault; }

 private:
  void takeRecord();
  QByteArray takeField();
  bool takeQuoted(QByteArray& field);
  [[nodiscard]] bool isAtEnd() const { return m_position >= m_bytes.size(); }
  [[nodiscard]] bool isAtLineEnd() const { return isAtEnd() || m_bytes[m_position] == '\n'; }

  QByteArray m_bytes;
  char m_separator{','};
  qsizetype m_position{0};
  int m_line{1};
  int m_recordLine{1};
  bool m_hasFault{false};
  QStringList m_fields;
};

}  // namespace quillo
