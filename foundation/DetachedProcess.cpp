#include "foundation/DetachedProcess.h"

#include "foundation/FileModeMask.h"

#include <QProcess>

namespace quillo {

std::optional<qint64> startDetached(const QString& program, const QStringList& arguments,
                                    const QString& workingDirectory, QString* errorString) {
  QProcess process;
  process.setProgram(program);
  process.setArguments(arguments);
  process.setWorkingDirectory(workingDirectory);
  process.setStandardInputFile(QProcess::nullDevice());
  process.setStandardOutputFile(QProcess::nullDevice());
  process.setStandardErrorFile(QProcess::nullDevice());
  qint64 identifier = 0;
  const FileModeMask maskOfUser;
  if (process.startDetached(&identifier)) return identifier;
  if (errorString) *errorString = process.errorString();
  return std::nullopt;
}

}  // namespace quillo
