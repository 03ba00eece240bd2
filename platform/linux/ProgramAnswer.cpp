#include "platform/linux/ProgramAnswer.h"

#include <QTimer>

#include <sys/resource.h>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

ProgramAnswer::ProgramAnswer(const QString& program, const QStringList& arguments, Limits limits, Answered answered)
    : m_program(program), m_limits(limits), m_answered(std::move(answered)), m_process(new QProcess) {
  connect(m_process, &QProcess::readyReadStandardOutput, this, &ProgramAnswer::read);
  connect(m_process, &QProcess::finished, this, &ProgramAnswer::finished);
  // Later, as all that is answered, whenever the process finds out.
  connect(
      m_process, &QProcess::errorOccurred, this,
      [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) answer(std::nullopt, u"it could not be started"_s);
      },
      Qt::QueuedConnection);
  connect(m_process, &QProcess::started, this, [this] {
    // The person who types comes first.
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(m_process->processId()), 5);
  });
  m_process->setStandardInputFile(QProcess::nullDevice());
  m_process->setStandardErrorFile(QProcess::nullDevice());
  m_process->start(program, arguments, QIODevice::ReadOnly);
  QTimer::singleShot(limits.time, this, [this] {
    answer(std::nullopt, u"it took longer than %1 seconds"_s.arg(static_cast<double>(m_limits.time.count()) / 1000));
  });
}

ProgramAnswer::~ProgramAnswer() {
  end();
}

void ProgramAnswer::read() {
  m_output += m_process->readAllStandardOutput();
  if (m_output.size() > m_limits.bytes) answer(std::nullopt, u"it answers without an end"_s);
}

void ProgramAnswer::finished(int code, QProcess::ExitStatus status) {
  if (status == QProcess::NormalExit && code == 0)
    answer(std::exchange(m_output, {}), {});
  else
    answer(std::nullopt, u"it failed (%1)"_s.arg(code));
}

void ProgramAnswer::end() {
  QProcess* process = std::exchange(m_process, nullptr);
  if (!process) return;
  process->disconnect(this);
  if (process->state() == QProcess::NotRunning) return process->deleteLater();
  // Destroying it now would wait for its end.
  connect(process, &QProcess::finished, process, &QObject::deleteLater);
  connect(process, &QProcess::errorOccurred, process, &QObject::deleteLater);
  process->kill();
}

void ProgramAnswer::answer(const std::optional<QByteArray>& output, const QString& reason) {
  end();
  m_output.clear();
  // It may destroy this object.
  if (const auto answered = std::exchange(m_answered, {}))
    answered(output, reason.isEmpty() ? QString() : m_program + u": "_s + reason);
}

}  // namespace quillo
