#pragma once

#include <QByteArray>
#include <QObject>
#include <QProcess>
#include <QStringList>

#include <chrono>
#include <functional>
#include <optional>

namespace quillo {

// What a program prints, read while this one goes on: started without a shell, at low priority, with neither input nor
// error stream, and ended with this object or when it exceeds a limit. Needs an event loop. Main thread only.
class ProgramAnswer : public QObject {
  Q_OBJECT

 public:
  struct Limits {
    qsizetype bytes;
    std::chrono::milliseconds time;
  };
  // All of its standard output; nothing, with the reason, where it could not be started, failed, or exceeded a limit.
  using Answered = std::function<void(const std::optional<QByteArray>& output, const QString& reason)>;

  // Starts the program. `answered` is called once, from the event loop, unless the object is gone before.
  ProgramAnswer(const QString& program, const QStringList& arguments, Limits limits, Answered answered);
  ~ProgramAnswer() override;

 private:
  void read();
  void end();
  void finished(int code, QProcess::ExitStatus status);
  void answer(const std::optional<QByteArray>& output, const QString& reason);

  QString m_program;
  Limits m_limits;
  Answered m_answered;
  QProcess* m_process;  // goes by itself once it has ended
  QByteArray m_output;
};

}  // namespace quillo
