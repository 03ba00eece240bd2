#include "exchange/CsvReader.h"

#include <QByteArrayView>

namespace quillo {

CsvReader::CsvReader(const QByteArray& bytes) : m_bytes(bytes) {
  m_bytes.replace("\r\n", "\n");
  const qsizetype end = m_bytes.indexOf('\n');
  const QByteArrayView first = QByteArrayView(m_bytes).first(end < 0 ? m_bytes.size() : end);
  for (const char separator : {';', '\t'})
    if (first.count(separator) > first.count(m_separator)) m_separator = separator;
}

bool CsvReader::takeQuoted(QByteArray& field) {
  const int start = m_line;
  for (++m_position; !isAtEnd(); ++m_position) {
    const char c = m_bytes[m_position];
    const bool isDoubled = m_position + 1 < m_bytes.size() && m_bytes[m_position + 1] == '"';
    if (c == '"' && !isDoubled) {
      ++m_position;
      return true;
    }
    if (c == '"') ++m_position;
    if (c == '\n') ++m_line;
    field += c;
  }
  m_recordLine = start;
  m_hasFault = true;
  return false;
}

QByteArray CsvReader::takeField() {
  QByteArray field;
  if (!isAtEnd() && m_bytes[m_position] == '"' && !takeQuoted(field)) return field;
  for (; !isAtLineEnd() && m_bytes[m_position] != m_separator; ++m_position) field += m_bytes[m_position];
  return field;
}

void CsvReader::takeRecord() {
  m_fields.clear();
  // Each turn takes a separator or is the last.
  while (true) {
    m_fields << QString::fromUtf8(takeField());
    if (m_hasFault || isAtLineEnd()) break;
    ++m_position;
  }
  if (isAtEnd()) return;
  ++m_position;
  ++m_line;
}

bool CsvReader::next() {
  while (!isAtEnd() && !m_hasFault) {
    m_recordLine = m_line;
    takeRecord();
    const bool isEmptyLine = m_fields.size() == 1 && m_fields.first().trimmed().isEmpty();
    if (!m_hasFault && !isEmptyLine) return true;
  }
  return false;
}

}  // namespace quillo
