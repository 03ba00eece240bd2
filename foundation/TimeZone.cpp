#include "foundation/TimeZone.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QTimeZone>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <mutex>
#include <vector>

namespace quillo {

namespace {

namespace chrono = std::chrono;

constexpr qint64 secondsPerDay = 86400;
// The zone files list changes from the nineteenth century on.
constexpr int firstListedYear = 1800;
constexpr int firstRuleYear = 2038;
constexpr int firstUnlistedYear = 1970;

constexpr qint64 startOfYear(int year) {
  return qint64{chrono::sys_days(chrono::year{year} / 1 / 1).time_since_epoch().count()} * secondsPerDay;
}

int yearOf(qint64 seconds) {
  const auto days = chrono::floor<chrono::days>(chrono::sys_seconds(chrono::seconds(seconds)));
  return static_cast<int>(chrono::year_month_day(days).year());
}

// There are fourteen kinds of year: the weekday it begins with, and whether it is a leap year.
int kindOfYear(int year) {
  const chrono::weekday first(chrono::sys_days(chrono::year{year} / 1 / 1));
  return static_cast<int>(first.c_encoding()) * 2 + (chrono::year{year}.is_leap() ? 1 : 0);
}

struct Change {
  qint64 instant;
  int offset;  // from `instant` on
};

// Changes in ascending order, and the offset before the first.
struct Changes {
  int offsetBefore{0};
  std::vector<Change> list;

  [[nodiscard]] int offsetAt(qint64 instant) const {
    const auto next = std::upper_bound(list.begin(), list.end(), instant,
                                       [](qint64 value, const Change& change) { return value < change.instant; });
    return next == list.begin() ? offsetBefore : std::prev(next)->offset;
  }

  [[nodiscard]] qint64 instantOfReading(qint64 reading) const {
    // The first span of constant offset that has not ended when the clock on the wall reads `reading`: for a reading
    // that occurs twice that is the earlier one.
    int before = offsetBefore;
    const auto next = std::partition_point(list.begin(), list.end(), [&](const Change& change) {
      const int offset = &change == list.data() ? offsetBefore : (&change - 1)->offset;
      return change.instant + offset <= reading;
    });
    if (next == list.begin()) return reading - before;
    const Change& span = *std::prev(next);
    before = std::prev(next) == list.begin() ? offsetBefore : std::prev(next, 2)->offset;
    // Before the span's first reading lies the gap. Forward by (offset - before), read with the offset after it, is the
    // reading with the offset before it.
    return reading < span.instant + span.offset ? reading - before : reading - span.offset;
  }
};

constexpr QByteArrayView zoneFiles = "/usr/share/zoneinfo/";
constexpr QByteArrayView utcName = "UTC";

// Names come from files that others write. They must not lead out of the folder of zone files, to a device say.
bool isWellFormed(const QByteArray& identifier) {
  static constexpr qsizetype longestName = 64;
  return !identifier.isEmpty() && identifier.size() <= longestName && identifier.front() != '/' &&
         !identifier.contains("..") && std::all_of(identifier.begin(), identifier.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  (c != '\0' && std::strchr("/_+-:.,<>", c));
         });
}

bool isNameOfZoneFile(const QByteArray& identifier) {
  return isWellFormed(identifier) && QFileInfo(QFile::decodeName(zoneFiles.toByteArray() + identifier)).isFile();
}

}  // namespace

class TimeZone::Rules {
 public:
  explicit Rules(const QTimeZone& zone) : m_name(QString::fromLatin1(zone.id())), m_zone(zone) {
    m_listed.offsetBefore = offsetOfSystem(startOfYear(firstListedYear));
    int offset = m_listed.offsetBefore;
    const auto transitions = zone.transitions(at(startOfYear(firstListedYear)), at(startOfYear(9999)));
    for (const QTimeZone::OffsetData& transition : transitions) {
      if (transition.offsetFromUtc == offset) continue;  // only the name changed
      offset = transition.offsetFromUtc;
      m_listed.list.push_back({transition.atUtc.toSecsSinceEpoch(), offset});
    }
    // A zone without a file, which is a rule in the TZ variable, lists nothing.
    m_firstRuleYear =
        m_listed.list.empty() ? firstUnlistedYear : std::max(firstRuleYear, yearOf(m_listed.list.back().instant) + 1);
    m_endOfListed = startOfYear(m_firstRuleYear);
    findRuleCycle();
  }

  [[nodiscard]] const QString& name() const { return m_name; }

  [[nodiscard]] int offsetAt(qint64 instant) const {
    if (instant < m_endOfListed) return m_listed.offsetAt(instant);
    return future().offsetAt(instant - shiftIntoFuture(instant));
  }

  [[nodiscard]] qint64 instantOfReading(qint64 reading) const {
    // No zone changes its clock on the days around the year's end, so either table serves there.
    if (reading < m_endOfListed) return m_listed.instantOfReading(reading);
    const qint64 shift = shiftIntoFuture(reading);
    return future().instantOfReading(reading - shift) + shift;
  }

 private:
  static QDateTime at(qint64 instant) { return QDateTime::fromSecsSinceEpoch(instant, Qt::UTC); }
  [[nodiscard]] int offsetOfSystem(qint64 instant) const { return m_zone.offsetFromUtc(at(instant)); }

  // The rule's changes fall on the same days in every year of one kind. The calendar goes through all fourteen kinds in
  // any 28 years that hold no leap year left out (2100).
  void findRuleCycle() {
    const int first = m_firstRuleYear + 27 < 2100 ? m_firstRuleYear : std::max(m_firstRuleYear, 2101);
    for (int year = first; year < first + 28; ++year) m_yearOfKind.at(static_cast<size_t>(kindOfYear(year))) = year;
    m_endOfFuture = startOfYear(first + 28);
  }

  // How many seconds lie between `seconds` and the same day in a year that the table of the future covers.
  [[nodiscard]] qint64 shiftIntoFuture(qint64 seconds) const {
    if (seconds < m_endOfFuture) return 0;
    const int year = yearOf(seconds);
    return startOfYear(year) - startOfYear(m_yearOfKind.at(static_cast<size_t>(kindOfYear(year))));
  }

  // The years that the file does not list, found by asking for the offset every week. Read when first needed, which is
  // for a date beyond 2037: it costs a few milliseconds.
  const Changes& future() const {
    std::call_once(m_futureRead, [this] {
      m_future.offsetBefore = m_listed.offsetAt(m_endOfListed);
      int offset = m_future.offsetBefore;
      qint64 known = m_endOfListed - secondsPerDay;
      // A rule that moves the clock does so every year.
      const qint64 endOfFirstYear = m_endOfListed + 366 * secondsPerDay;
      // Ends: at most a century and a half of weeks.
      while (known < (m_future.list.empty() ? endOfFirstYear : m_endOfFuture)) {
        const qint64 next = known + 7 * secondsPerDay;
        if (const int offsetThen = offsetOfSystem(next); offsetThen != offset) {
          m_future.list.push_back({changeBetween(known, next, offset), offsetThen});
          offset = offsetThen;
        }
        known = next;
      }
    });
    return m_future;
  }

  // The first instant after `before` whose offset is another one: twenty halvings of a week.
  [[nodiscard]] qint64 changeBetween(qint64 before, qint64 after, int offsetBefore) const {
    while (after - before > 1) {
      const qint64 middle = before + (after - before) / 2;
      (offsetOfSystem(middle) == offsetBefore ? before : after) = middle;
    }
    return after;
  }

  QString m_name;
  QTimeZone m_zone;
  Changes m_listed;
  int m_firstRuleYear{firstRuleYear};
  qint64 m_endOfListed{0};
  qint64 m_endOfFuture{0};
  std::array<int, 14> m_yearOfKind{};
  mutable std::once_flag m_futureRead;
  mutable Changes m_future;
};

std::shared_ptr<const TimeZone::Rules> TimeZone::rulesWithIdentifier(const QByteArray& identifier) {
  static QMutex mutex;
  static QHash<QByteArray, std::shared_ptr<const Rules>> known;
  const QMutexLocker lock(&mutex);
  if (auto rules = known.value(identifier)) return rules;
  const QTimeZone zone(identifier);
  if (!zone.isValid()) return nullptr;
  auto rules = std::make_shared<const Rules>(zone);
  // There are six hundred zone files, some of them in two folders more; a rule of the TZ variable is one name.
  static constexpr qsizetype mostZones = 2000;
  if (known.size() < mostZones) known.insert(identifier, rules);
  return rules;
}

std::optional<TimeZone> TimeZone::timeZoneWithName(const QString& name) {
  const QByteArray identifier = name.toUtf8();
  // Qt takes any word for a rule without an offset; only a name with a file counts here.
  if (isNameOfZoneFile(identifier)) {
    if (auto rules = rulesWithIdentifier(identifier)) return TimeZone(std::move(rules));
  }
  if (identifier == utcName) return utc();
  return std::nullopt;
}

TimeZone TimeZone::systemTimeZone() {
  // Qt looks at the system's setting anew at each call.
  QByteArray identifier = QTimeZone::systemTimeZoneId();
  // What the TZ variable may put before a name.
  for (const QByteArrayView prefix : {QByteArrayView(":"), zoneFiles})
    if (identifier.startsWith(prefix)) identifier.remove(0, prefix.size());
  // The variable may hold a rule instead: "CET-1CEST,M3.5.0,M10.5.0/3".
  const bool isRule = std::any_of(identifier.begin(), identifier.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (isNameOfZoneFile(identifier) || (isRule && isWellFormed(identifier))) {
    if (auto rules = rulesWithIdentifier(identifier)) return TimeZone(std::move(rules));
  }
  return utc();
}

TimeZone TimeZone::utc() {
  static const auto rules = std::make_shared<const Rules>(QTimeZone::utc());
  return TimeZone(rules);
}

const QString& TimeZone::name() const {
  return m_rules->name();
}

int TimeZone::secondsFromUTC(qint64 instant) const {
  return m_rules->offsetAt(instant);
}

qint64 TimeZone::instantOfReading(qint64 reading) const {
  return m_rules->instantOfReading(reading);
}

bool TimeZone::operator==(const TimeZone& other) const {
  return m_rules == other.m_rules || m_rules->name() == other.m_rules->name();
}

}  // namespace quillo
