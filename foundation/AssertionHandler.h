#pragma once

#include <QString>

namespace quillo {

// Reports a programming error found in a method: one line in the log with the method, the file, the line and the
// description. The program goes on; what the method was about is dropped.
void handleFailureInMethod(QLatin1StringView method, QLatin1StringView file, int line, QLatin1StringView description);

}  // namespace quillo
