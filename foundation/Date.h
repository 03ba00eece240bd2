#pragma once

#include <QDateTime>
#include <QString>

#include <compare>
#include <optional>

namespace quillo {

// An instant: seconds since 2001-01-01T00:00:00Z, which is what the property-list formats store. Not a number and the
// infinities are values that a hostile file can hold; every conversion answers sensibly for them.
class Date {
 public:
  // 2001-01-01T00:00:00Z in seconds since 1970-01-01T00:00:00Z.
  static constexpr double secondsFrom1970ToReference = 978307200.0;

  constexpr Date() = default;
  constexpr explicit Date(double secondsSinceReferenceDate) : m_seconds(secondsSinceReferenceDate) {}
  static constexpr Date since1970(double seconds) { return Date(seconds - secondsFrom1970ToReference); }
  // By the clock that the user can set, as exactly as it tells. What has a Clock asks that one.
  static Date now();
  // An invalid QDateTime gives the reference date.
  static Date fromDateTime(const QDateTime& dateTime);
  // ISO 8601 with a zone, "2014-03-10T21:00:00Z"; nothing when the text is something else.
  static std::optional<Date> fromISO8601(const QString& text);

  [[nodiscard]] constexpr double timeIntervalSinceReferenceDate() const { return m_seconds; }
  [[nodiscard]] constexpr double timeIntervalSince1970() const { return m_seconds + secondsFrom1970ToReference; }
  [[nodiscard]] constexpr double timeIntervalSince(Date other) const { return m_seconds - other.m_seconds; }
  [[nodiscard]] constexpr Date addingTimeInterval(double seconds) const { return Date(m_seconds + seconds); }

  // In UTC, to the millisecond; invalid where QDateTime cannot hold the instant.
  [[nodiscard]] QDateTime toDateTime() const;
  // "2014-03-10T20:00:00Z", with milliseconds only where there are any; "invalid date" outside years 1 to 9999.
  [[nodiscard]] QString toISO8601() const;
  // "2014-03-10 20:00:00 +0000", the way log lines show a date.
  [[nodiscard]] QString description() const;

  constexpr bool operator==(const Date&) const = default;
  constexpr std::partial_ordering operator<=>(const Date&) const = default;

 private:
  double m_seconds{0};
};

}  // namespace quillo
