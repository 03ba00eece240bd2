#include "entry/session/Alerts.h"

#include "foundation/Error.h"

namespace quillo {

Alert Alert::withError(const Error& error) {
  const QStringList buttons =
      error.recoveryOptions.isEmpty() ? QStringList{QStringLiteral("OK")} : error.recoveryOptions;
  return {error.localizedDescription, error.recoverySuggestion, buttons};
}

}  // namespace quillo
