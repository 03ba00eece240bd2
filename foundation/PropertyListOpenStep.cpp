#include "foundation/PropertyListCoding.h"

namespace quillo::PropertyListCoding {

using namespace Qt::StringLiterals;

namespace {

bool isBareCharacter(QChar c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') || c == u'_' || c == u'$' ||
         c == u'/' || c == u':' || c == u'.' || c == u'-';
}

int hexadecimalDigit(QChar c) {
  if (c >= u'0' && c <= u'9') return c.unicode() - u'0';
  if (c >= u'a' && c <= u'f') return c.unicode() - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c.unicode() - u'A' + 10;
  return -1;
}

class Reader {
 public:
  explicit Reader(const QString& text) : m_text(text), m_builder(text.size()) {}

  std::optional<PropertyListValue> read(Error* error);

 private:
  // What may come next.
  enum class Expect { Value, ItemOrEnd, KeyOrEnd, Separator };

  bool readDocument();
  bool readStringsFile();
  bool readUntilComplete(Expect expect);
  bool readValue(Expect* next);
  bool readItemOrEnd(Expect* next);
  bool readKeyOrEnd(Expect* next);
  bool readSeparator(Expect* next);
  std::optional<QString> readString();
  std::optional<QString> readQuotedString();
  bool readEscape(QString* result);
  std::optional<QByteArray> readData();

  bool skipSpace();
  [[nodiscard]] bool atEnd() const { return m_at >= m_text.size(); }
  // The character here; a null one at the end.
  [[nodiscard]] QChar here() const { return atEnd() ? QChar() : m_text[m_at]; }
  bool take(QChar c) {
    if (atEnd() || m_text[m_at] != c) return false;
    ++m_at;
    return true;
  }
  bool refuse(const QString& problem, qsizetype at);
  bool refuse(const QString& problem) { return refuse(problem, m_at); }
  bool built(bool good) { return good || refuse(m_builder.problem()); }

  const QString& m_text;
  qsizetype m_at{0};
  bool m_isStringsFile{false};
  Builder m_builder;
  QString m_problem;
};

bool Reader::refuse(const QString& problem, qsizetype at) {
  if (m_problem.isEmpty()) {
    const auto before = QStringView(m_text).first(std::min(at, m_text.size()));
    m_problem = u"%1, on line %2"_s.arg(problem, QString::number(1 + before.count(u'\n')));
  }
  return false;
}

// White space and comments.
bool Reader::skipSpace() {
  while (!atEnd()) {
    const QStringView rest = QStringView(m_text).sliced(m_at);
    if (m_text[m_at].isSpace()) {
      ++m_at;
    } else if (rest.startsWith(u"//")) {
      while (!atEnd() && m_text[m_at] != u'\n' && m_text[m_at] != u'\r') ++m_at;
    } else if (rest.startsWith(u"/*")) {
      const qsizetype end = m_text.indexOf(u"*/", m_at + 2);
      if (end < 0) return refuse(u"a comment has no end"_s);
      m_at = end + 2;
    } else {
      return true;
    }
  }
  return true;
}

std::optional<PropertyListValue> Reader::read(Error* error) {
  if (readDocument()) return m_builder.result();
  fail(error, readError(m_problem));
  return std::nullopt;
}

bool Reader::readDocument() {
  if (!skipSpace()) return false;
  const qsizetype start = m_at;
  const QChar first = here();
  // A file of white space and comments is a strings file without strings.
  if (atEnd()) return readStringsFile();
  if (first == u'{' || first == u'(' || first == u'<') {
    if (!readUntilComplete(Expect::Value) || !skipSpace()) return false;
    return atEnd() || refuse(u"there is more after the list"_s);
  }
  const auto text = readString();
  if (!text || !skipSpace()) return false;
  if (atEnd()) return built(m_builder.addString(*text));
  m_at = start;
  return readStringsFile();
}

// "key = value;" pairs that no braces surround.
bool Reader::readStringsFile() {
  m_isStringsFile = true;
  return built(m_builder.beginDictionary()) && readUntilComplete(Expect::KeyOrEnd);
}

// Every turn takes a character at least, or ends.
bool Reader::readUntilComplete(Expect expect) {
  while (!m_builder.result()) {
    if (!skipSpace()) return false;
    bool good = false;
    switch (expect) {
      case Expect::Value:
        good = readValue(&expect);
        break;
      case Expect::ItemOrEnd:
        good = readItemOrEnd(&expect);
        break;
      case Expect::KeyOrEnd:
        good = readKeyOrEnd(&expect);
        break;
      case Expect::Separator:
        good = readSeparator(&expect);
        break;
    }
    if (!good) return false;
  }
  return true;
}

bool Reader::readValue(Expect* next) {
  *next = Expect::Separator;
  if (take(u'{')) {
    *next = Expect::KeyOrEnd;
    return built(m_builder.beginDictionary());
  }
  if (take(u'(')) {
    *next = Expect::ItemOrEnd;
    return built(m_builder.beginArray());
  }
  if (here() == u'<') {
    const auto data = readData();
    return data && built(m_builder.add(*data));
  }
  const auto text = readString();
  return text && built(m_builder.addString(*text));
}

bool Reader::readItemOrEnd(Expect* next) {
  if (!take(u')')) return readValue(next);
  *next = Expect::Separator;
  return built(m_builder.endCollection());
}

bool Reader::readKeyOrEnd(Expect* next) {
  *next = Expect::Separator;
  if (m_isStringsFile && m_builder.depth() == 1 ? atEnd() : take(u'}')) return built(m_builder.endCollection());
  const auto key = readString();
  if (!key || !built(m_builder.setKey(*key)) || !skipSpace()) return false;
  // A key alone stands for itself; its semicolon is the separator.
  if (here() == u';') return built(m_builder.addString(*key));
  *next = Expect::Value;
  return take(u'=') || refuse(u"a key is not followed by \"=\" or \";\""_s);
}

bool Reader::readSeparator(Expect* next) {
  if (m_builder.isInDictionary()) {
    *next = Expect::KeyOrEnd;
    return take(u';') || refuse(u"a value in a dictionary is not followed by \";\""_s);
  }
  *next = Expect::ItemOrEnd;
  if (take(u',')) return true;
  *next = Expect::Separator;
  if (take(u')')) return built(m_builder.endCollection());
  return refuse(u"a value in an array is not followed by \",\" or \")\""_s);
}

std::optional<QString> Reader::readString() {
  if (here() == u'"' || here() == u'\'') return readQuotedString();
  const qsizetype start = m_at;
  while (!atEnd() && isBareCharacter(m_text[m_at])) ++m_at;
  if (m_at > start) return m_text.sliced(start, m_at - start);
  refuse(atEnd() ? u"it ends too early"_s : u"unexpected character '%1'"_s.arg(here()));
  return std::nullopt;
}

std::optional<QString> Reader::readQuotedString() {
  const qsizetype start = m_at;
  const QChar quote = m_text[m_at++];
  QString result;
  qsizetype plain = m_at;  // start of the stretch that is taken as it stands
  while (!atEnd()) {
    const QChar c = m_text[m_at];
    if (c != quote && c != u'\\') {
      ++m_at;
      continue;
    }
    const auto stretch = QStringView(m_text).sliced(plain, m_at - plain);
    if (result.isEmpty())
      result = stretch.toString();  // no larger than it must be
    else
      result.append(stretch);
    ++m_at;
    if (c == quote) return result;
    if (!readEscape(&result)) return std::nullopt;
    plain = m_at;
  }
  refuse(u"a string has no end"_s, start);
  return std::nullopt;
}

// What follows a backslash.
bool Reader::readEscape(QString* result) {
  if (atEnd()) return true;  // the caller finds the end
  const QChar c = m_text[m_at++];
  if (c >= u'0' && c <= u'7') {
    int code = c.unicode() - u'0';
    for (int digits = 1; digits < 3 && here() >= u'0' && here() <= u'7'; ++digits)
      code = code * 8 + (m_text[m_at++].unicode() - u'0');
    result->append(QChar(static_cast<char16_t>(code)));
    return true;
  }
  if (c == u'U') {
    int code = 0;
    int digits = 0;
    for (; digits < 4 && hexadecimalDigit(here()) >= 0; ++digits) code = code * 16 + hexadecimalDigit(m_text[m_at++]);
    if (digits == 0) return refuse(u"\\U is not followed by hexadecimal digits"_s);
    result->append(QChar(static_cast<char16_t>(code)));
    return true;
  }
  static constexpr QStringView letters = u"abfnrtv";
  static constexpr QStringView meanings = u"\a\b\f\n\r\t\v";
  const qsizetype letter = letters.indexOf(c);
  result->append(letter < 0 ? c : meanings[letter]);
  return true;
}

std::optional<QByteArray> Reader::readData() {
  const qsizetype start = m_at++;
  QByteArray result;
  int high = -1;
  for (; !atEnd(); ++m_at) {
    const QChar c = m_text[m_at];
    if (c.isSpace()) continue;
    if (c == u'>' && high < 0) {
      ++m_at;
      return result;
    }
    const int digit = hexadecimalDigit(c);
    if (digit < 0) {
      refuse(c == u'>' ? u"data has an odd number of digits"_s : u"unexpected character '%1' in data"_s.arg(c));
      return std::nullopt;
    }
    if (high >= 0) result.append(static_cast<char>(high << 4 | digit));
    high = high < 0 ? digit : -1;
  }
  refuse(u"data has no end"_s, start);
  return std::nullopt;
}

}  // namespace

std::optional<PropertyListValue> readOpenStep(const QString& text, Error* error) {
  return Reader(text).read(error);
}

}  // namespace quillo::PropertyListCoding
