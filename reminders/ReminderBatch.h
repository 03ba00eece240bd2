#pragma once

#include <QByteArray>

namespace quillo {

// Answers one line of `quilloctl reminder next --batch`: a JSON object in, a JSON object out, neither with a line end.
// In: "unit", "count", "base", "base_zone", and if wanted "period" (seconds, else 0), "after" (else now), "zone" (else
// the system's) and "n" (1 to 1000, else 1). Out: {"next":[...]}, each the first reminder strictly after the one
// before it, fewer than n where there are no more; or {"error":"..."}.
[[nodiscard]] QByteArray answerBatchLine(const QByteArray& jsonLine);

}  // namespace quillo
