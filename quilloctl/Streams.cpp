#include "quilloctl/Streams.h"

#include "foundation/Utf8.h"
#include "quilloctl/Pager.h"
#include "quilloctl/Terminal.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

// Why the output could not be written; 0 while it could.
int outputError = 0;

// What is to be said once the terminal is ours again.
QByteArray heldErrors;

void writeNow(const QByteArray& bytes) {
  const auto size = static_cast<size_t>(bytes.size());
  if (std::fwrite(bytes.constData(), 1, size, stdout) != size && outputError == 0) outputError = errno;
}

void write(const QByteArray& bytes) {
  writeNow(Pager::passOn(bytes));
}

void writeError(const QByteArray& bytes) {
  std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
}

QString reasonOf(int error) {
  return QString::fromLocal8Bit(std::strerror(error));
}

bool isControl(QChar c) {
  return c.category() == QChar::Other_Control;
}

// The writer of JSON leaves the control characters beyond ASCII as they are. They can only stand inside of strings.
QString withEscapedControls(const QByteArray& json) {
  QString escaped;
  for (const QChar c : QString::fromUtf8(json)) {
    if (isControl(c) && c != u'\n')
      escaped += u"\\u%1"_s.arg(c.unicode(), 4, 16, QChar(u'0'));
    else
      escaped += c;
  }
  return escaped;
}

}  // namespace

void holdStandardStreams() {
  // Each is opened for what it is not used for. The lowest free descriptor is the one that is given out.
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF)
      static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
}

QString withoutControls(const QString& text) {
  QString clean = text;
  clean.replace(u"\r\n"_s, u"\n"_s);
  for (QChar& c : clean)
    if (isControl(c) && c != u'\n' && c != u'\t') c = QChar::ReplacementCharacter;
  return clean;
}

QString entriesInWords(qint64 count) {
  return QString::number(count) + (count == 1 ? u" entry"_s : u" entries"_s);
}

int failed(const QString& reason) {
  // One line, whatever a library's text, or the user's, holds.
  const QByteArray bytes = u"quilloctl: %1\n"_s.arg(withoutControls(reason.simplified())).toUtf8();
  if (Pager::isInUse())
    heldErrors += bytes;
  else
    writeError(bytes);
  return Failed;
}

void print(const QString& line) {
  write((outputIsTerminal() ? withoutControls(line) : line).toUtf8() + '\n');
}

void print(const StyledLine& line) {
  write(line.text().toUtf8() + '\n');
}

void printPart(const QByteArray& utf8) {
  write(outputIsTerminal() ? withoutControls(QString::fromUtf8(utf8)).toUtf8() : utf8);
}

bool outputIsGone() {
  return outputError != 0;
}

void printJson(const QJsonValue& value) {
  if (value.isObject()) return print(withEscapedControls(QJsonDocument(value.toObject()).toJson().trimmed()));
  if (value.isArray()) return print(withEscapedControls(QJsonDocument(value.toArray()).toJson().trimmed()));
  // A document must be a collection: the bare value is what stands between the brackets of an array of one.
  const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
  print(withEscapedControls(array.mid(1, array.size() - 2)));
}

JsonList::JsonList() {
  write("[");
}

void JsonList::add(const QJsonObject& object) {
  QByteArray lines = QJsonDocument(object).toJson().trimmed();
  // Line breaks stand between the parts of a document alone, never in a string.
  lines.replace('\n', "\n    ");
  write((m_isEmpty ? "\n    " : ",\n    ") + withEscapedControls(lines).toUtf8());
  m_isEmpty = false;
}

void JsonList::end() {
  write("\n]\n");
}

int finishOutput(int code) {
  writeNow(Pager::rest());
  if (std::fflush(stdout) != 0 && outputError == 0) outputError = errno;
  // A write that somebody else made and did not look at.
  if (outputError == 0 && std::ferror(stdout) != 0) outputError = EIO;
  Pager::end();
  writeError(std::exchange(heldErrors, {}));
  if (outputError == 0 || outputError == EPIPE || code != Done) return code;
  return failed(u"done, but the output could not be written - "_s + reasonOf(outputError));
}

std::optional<QString> textFromUtf8(const QByteArray& bytes, const QString& what, QString* reason) {
  if (const qsizetype at = firstInvalidUtf8Byte(bytes); at >= 0) {
    *reason = u"%1 is no UTF-8 text: byte %2 of it, counted from 0, is wrong"_s.arg(what).arg(at);
    return std::nullopt;
  }
  return QString::fromUtf8(bytes);
}

std::optional<QString> textOfStandardInput(QString* reason) {
  constexpr qsizetype piece = qsizetype{64} * 1024;
  QByteArray bytes;
  // Each turn reads at least a byte or is the last: at most the bound and one piece are read.
  while (std::feof(stdin) == 0 && bytes.size() <= largestInput) {
    const qsizetype before = bytes.size();
    bytes.resize(before + piece);
    const size_t length = std::fread(bytes.data() + before, 1, static_cast<size_t>(piece), stdin);
    const int error = errno;
    bytes.resize(before + static_cast<qsizetype>(length));
    if (std::ferror(stdin) != 0) {
      *reason = u"the standard input cannot be read - %1"_s.arg(reasonOf(error));
      return std::nullopt;
    }
  }
  if (bytes.size() > largestInput) {
    *reason = u"the standard input is longer than %1 MiB; nothing was saved"_s.arg(largestInput / 1024 / 1024);
    return std::nullopt;
  }
  return textFromUtf8(bytes, u"the standard input"_s, reason);
}

}  // namespace quillo::ctl
