#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace quillo {

// A time zone of the system's zone files: which offset from UTC is in force when. Cheap to copy; a zone's rules are
// read once a process and shared, after which a look-up is a binary search. Safe to use from any thread.
//
// Instants are whole seconds since 1970-01-01T00:00:00Z. A wall-clock reading is the same count made of its digits, as
// if they had been read in UTC. Years beyond those that the zone file lists follow the file's rule for ever; readings
// before its first change are in the zone's local mean time.
class TimeZone {
 public:
  // Nothing when the system knows no zone of that name.
  [[nodiscard]] static std::optional<TimeZone> timeZoneWithName(const QString& name);
  // The user's zone, asked of the system at each call; UTC when there is none. The TZ variable wins.
  [[nodiscard]] static TimeZone systemTimeZone();
  [[nodiscard]] static TimeZone utc();

  // A region and city, "Europe/Berlin".
  [[nodiscard]] const QString& name() const;

  // Seconds to add to `instant` for the wall-clock reading.
  [[nodiscard]] int secondsFromUTC(qint64 instant) const;
  // The instant at which the clock on the wall reads `reading`. A reading that does not exist, because the clock was
  // set forward over it, moves forward by as much as the clock did; of one that occurs twice the earlier is meant.
  [[nodiscard]] qint64 instantOfReading(qint64 reading) const;

  bool operator==(const TimeZone& other) const;

 private:
  class Rules;
  explicit TimeZone(std::shared_ptr<const Rules> rules) : m_rules(std::move(rules)) {}
  static std::shared_ptr<const Rules> rulesWithIdentifier(const QByteArray& identifier);

  std::shared_ptr<const Rules> m_rules;
};

}  // namespace quillo
