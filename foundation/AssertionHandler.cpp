#include "foundation/AssertionHandler.h"

#include "foundation/Log.h"

namespace quillo {

using namespace Qt::StringLiterals;

void handleFailureInMethod(QLatin1StringView method, QLatin1StringView file, int line, QLatin1StringView description) {
  QLLogError(u"*** Assertion failure in %1, %2:%3: %4"_s.arg(method, file).arg(line).arg(description));
}

}  // namespace quillo
