#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>

namespace quillo::ctl {

class StyledLine;

// How a command ends. What failed has been said, in one line on the error stream.
enum ExitCode : int { Done = 0, Failed = 1, Usage = 2 };

// Takes the places of standard streams that are closed, so that no file of ours gets their descriptors: what is read
// from them, or written to them, fails. Called before anything is opened.
void holdStandardStreams();

// One line on the error stream; answers Failed.
int failed(const QString& reason);

// "1 entry", "12 entries".
[[nodiscard]] QString entriesInWords(qint64 count);

// A line on the standard output, in UTF-8. What goes to a terminal goes without the control characters it would obey.
void print(const QString& line);
void print(const StyledLine& line);
// A part of a document on the standard output, with nothing added.
void printPart(const QByteArray& utf8);
// One JSON document on the standard output, also for a bare value.
void printJson(const QJsonValue& value);

// A list of any length as one JSON document, whose items go out as they come.
class JsonList {
 public:
  JsonList();
  void add(const QJsonObject& object);
  // To be called last.
  void end();

 private:
  bool m_isEmpty{true};
};

// Whether nobody gets what is printed any more, and there is no use in going on.
[[nodiscard]] bool outputIsGone();

// A copy with a mark in the place of each control character but line breaks and tabs.
[[nodiscard]] QString withoutControls(const QString& text);

// The last thing of all: sends what was printed on its way. Answers `code`, or Failed, with the reason said, where not
// all of it could be written. A pipe that nobody reads any more is no failure.
[[nodiscard]] int finishOutput(int code);

// What every text from outside goes through: nothing, with the reason and the place of the first wrong byte, where it
// is no UTF-8. `what` begins the reason.
[[nodiscard]] std::optional<QString> textFromUtf8(const QByteArray& bytes, const QString& what, QString* reason);

// The standard input to its end, whatever pieces it comes in; nothing, with the reason, where it cannot be read, is no
// UTF-8 or is longer than the bound.
inline constexpr qsizetype largestInput = qsizetype{64} * 1024 * 1024;
[[nodiscard]] std::optional<QString> textOfStandardInput(QString* reason);

}  // namespace quillo::ctl
