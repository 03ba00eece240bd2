#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QJsonObject>
#include <QString>

namespace quillo {

// Cuts a JSON document into its entries, without holding more of it than one: {"entries": [ENTRY, ...], ...}, or a bare
// list of entries. Whether an entry is one is for whoever gets its bytes to say.
class JsonEntryReader {
 public:
  // `device` is open and at its beginning.
  explicit JsonEntryReader(QIODevice& device) : m_device(device) {}

  enum class Step { Entry, End, Broken };
  // What comes next: an entry, the end of the document, or a fault in it, after which there is nothing more.
  Step next();

  // Of the entry: its bytes and the line where it begins.
  [[nodiscard]] const QByteArray& bytes() const { return m_bytes; }
  [[nodiscard]] int line() const { return m_entryLine; }
  // Of a fault: its line, and what is wrong as the end of a sentence.
  [[nodiscard]] int faultLine() const { return m_line; }
  [[nodiscard]] const QString& fault() const { return m_fault; }
  // What stands beside the entries, as far as it was read; all of it at the end.
  [[nodiscard]] const QJsonObject& head() const { return m_head; }

 private:
  enum class State { Start, InObject, AfterMember, InList, AfterEntry, AfterDocument, Ended };
  // False where there is a fault.
  bool start();
  bool member();
  bool separator(bool isInList);
  bool setFault(const QString& reason);
  Step entry();
  Step end();
  [[nodiscard]] bool isAtEnd() { return peek() < 0; }
  int peek();  // -1 at the end
  int get();
  void skipSpace();
  // Takes the value that begins here, with nothing of it understood but strings and brackets. False where it has no end
  // or is too large.
  bool takeValue(QByteArray& value, qsizetype most);
  bool takeString(QByteArray& value, qsizetype most);

  QIODevice& m_device;
  QByteArray m_buffer;
  qsizetype m_position{0};
  int m_line{1};
  State m_state{State::Start};
  bool m_isInObject{false};
  QByteArray m_bytes;
  int m_entryLine{0};
  QString m_fault;
  QJsonObject m_head;
};

}  // namespace quillo
