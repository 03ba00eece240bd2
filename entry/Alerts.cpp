#include "entry/Alerts.h"

#include "foundation/Error.h"

namespace quillo {

void Alerts::presentError(const Error& error, QWidget* window) {
  const QStringList buttons =
      error.recoveryOptions.isEmpty() ? QStringList{QStringLiteral("OK")} : error.recoveryOptions;
  runAlert({error.localizedDescription, error.recoverySuggestion, buttons}, window);
}

}  // namespace quillo
