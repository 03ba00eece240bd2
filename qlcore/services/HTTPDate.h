#pragma once

#include <QByteArray>

#include <optional>

namespace quillo {

// Seconds since 1970 of a date in a header, "Wed, 25 Nov 2026 00:38:29 GMT"; nothing when it is something else.
[[nodiscard]] std::optional<double> secondsFromHTTPDate(const QByteArray& text);

// Until when a "Retry-After" asks for silence, which is seconds from `now` on or a date.
[[nodiscard]] std::optional<double> secondsFromRetryAfter(const QByteArray& text, double now);

}  // namespace quillo
