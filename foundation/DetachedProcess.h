#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// Starts a program that outlives this one, with nothing as its input and output: what it prints belongs into no
// terminal of ours, and whoever waits for the end of our output must not wait for the program's. It starts with this
// process's working directory where none is given, and gives its new files the rights that the user has set. Answers
// its process identifier; on failure nothing, and `errorString` says why. Main thread only.
std::optional<qint64> startDetached(const QString& program, const QStringList& arguments,
                                    const QString& workingDirectory = {}, QString* errorString = nullptr);

}  // namespace quillo
