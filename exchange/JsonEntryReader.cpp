#include "exchange/JsonEntryReader.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <optional>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype largestEntry = qsizetype{64} * 1024 * 1024;
// Others count the tags of all entries there.
constexpr qsizetype largestHead = qsizetype{1024} * 1024;

bool isSpace(int c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The value of a piece of JSON, also of a bare one.
std::optional<QJsonValue> valueOf(const QByteArray& json) {
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson('[' + json + ']', &error);
  if (error.error != QJsonParseError::NoError || document.array().size() != 1) return std::nullopt;
  return document.array().first();
}

}  // namespace

int JsonEntryReader::peek() {
  constexpr qint64 portion = qint64{64} * 1024;
  if (m_position == m_buffer.size()) {
    m_buffer = m_device.read(portion);
    m_position = 0;
  }
  return m_buffer.isEmpty() ? -1 : static_cast<uchar>(m_buffer[m_position]);
}

int JsonEntryReader::get() {
  const int c = peek();
  if (c >= 0) ++m_position;
  if (c == '\n') ++m_line;
  return c;
}

void JsonEntryReader::skipSpace() {
  while (isSpace(peek())) get();
}

bool JsonEntryReader::setFault(const QString& reason) {
  m_state = State::Ended;
  m_fault = reason;
  return false;
}

// Behind the opening quotation mark, up to the closing one.
bool JsonEntryReader::takeString(QByteArray& value, qsizetype most) {
  for (int c = get(); c >= 0 && value.size() <= most; c = get()) {
    value += static_cast<char>(c);
    if (c == '"') return true;
    if (c == '\\' && !isAtEnd()) value += static_cast<char>(get());
  }
  return false;
}

bool JsonEntryReader::takeValue(QByteArray& value, qsizetype most) {
  value.clear();
  int depth = 0;
  // Each turn takes a byte; ends at the bound or at the end of the device.
  while (!isAtEnd() && value.size() <= most) {
    const int c = peek();
    const bool isEnd = c == ',' || c == ']' || c == '}' || c == ':' || isSpace(c);
    if (depth == 0 && isEnd) return !value.isEmpty();
    value += static_cast<char>(get());
    if (c == '"' && !takeString(value, most)) return false;
    if (c == '[' || c == '{') ++depth;
    if (c == ']' || c == '}') --depth;
    const bool isComplete = c == '"' || c == ']' || c == '}';
    if (depth == 0 && isComplete) return true;
  }
  return false;
}

bool JsonEntryReader::start() {
  // A mark of the byte order, as some editors leave it.
  if (peek() == 0xEF && m_buffer.startsWith("\xEF\xBB\xBF")) m_position = 3;
  skipSpace();
  const int c = get();
  if (c != '{' && c != '[') return setFault(c < 0 ? u"the file is empty"_s : u"it is no JSON object or list"_s);
  m_isInObject = c == '{';
  m_state = m_isInObject ? State::InObject : State::InList;
  skipSpace();
  if (peek() == (m_isInObject ? '}' : ']')) {
    get();
    m_state = State::AfterDocument;
  }
  return true;
}

bool JsonEntryReader::member() {
  skipSpace();
  QByteArray piece;
  if (peek() != '"' || !takeValue(piece, largestHead)) return setFault(u"a name in quotation marks is expected here"_s);
  const auto name = valueOf(piece);
  skipSpace();
  if (!name || get() != ':') return setFault(u"a colon is expected here"_s);
  skipSpace();
  m_state = State::AfterMember;
  if (name->toString() == u"entries" && peek() == '[') {
    get();
    skipSpace();
    const bool isEmpty = peek() == ']';
    if (isEmpty) get();
    m_state = isEmpty ? State::AfterMember : State::InList;
    return true;
  }
  const auto value = takeValue(piece, largestHead) ? valueOf(piece) : std::nullopt;
  if (!value) return setFault(u"the value of \"%1\" is no JSON"_s.arg(name->toString().left(40)));
  m_head[name->toString()] = *value;
  return true;
}

bool JsonEntryReader::separator(bool isInList) {
  skipSpace();
  const int c = get();
  if (c == ',')
    m_state = isInList ? State::InList : State::InObject;
  else if (c == (isInList ? ']' : '}'))
    m_state = isInList && m_isInObject ? State::AfterMember : State::AfterDocument;
  else
    return setFault(c < 0 ? u"the file ends too early"_s : u"a comma or an end is expected here"_s);
  return true;
}

JsonEntryReader::Step JsonEntryReader::entry() {
  skipSpace();
  m_entryLine = m_line;
  m_state = State::AfterEntry;
  if (takeValue(m_bytes, largestEntry)) return Step::Entry;
  setFault(m_bytes.size() > largestEntry ? u"the entry is longer than 64 MiB"_s
           : isAtEnd()                   ? u"the file ends within an entry"_s
                                         : u"an entry is expected here"_s);
  return Step::Broken;
}

JsonEntryReader::Step JsonEntryReader::end() {
  skipSpace();
  const bool isAll = isAtEnd();
  if (!isAll) setFault(u"there is something behind the end of the document"_s);
  m_state = State::Ended;
  return isAll ? Step::End : Step::Broken;
}

JsonEntryReader::Step JsonEntryReader::next() {
  // Each turn takes at least a byte, returns, or goes to a state that does.
  for (bool isWhole = true; isWhole;) {
    switch (m_state) {
      case State::Start:
        isWhole = start();
        break;
      case State::InObject:
        isWhole = member();
        break;
      case State::AfterMember:
      case State::AfterEntry:
        isWhole = separator(m_state == State::AfterEntry);
        break;
      case State::InList:
        return entry();
      case State::AfterDocument:
        return end();
      case State::Ended:
        return Step::End;
    }
  }
  return Step::Broken;
}

}  // namespace quillo
