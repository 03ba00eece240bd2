#pragma once

#include <QStringView>

#include <limits>

namespace quillo {

// A range of a text, in UTF-16 units.
struct TextRange {
  // The location of a range that stands for "nowhere"; its length is 0.
  static constexpr qsizetype notFound = std::numeric_limits<qsizetype>::max();

  qsizetype location{0};
  qsizetype length{0};

  [[nodiscard]] static constexpr TextRange nowhere() { return {notFound, 0}; }
  [[nodiscard]] static constexpr TextRange between(qsizetype start, qsizetype end) { return {start, end - start}; }
  [[nodiscard]] constexpr bool isNowhere() const { return location == notFound; }
  [[nodiscard]] constexpr qsizetype end() const { return location + length; }

  bool operator==(const TextRange&) const = default;
};

// The run of characters around `location` that are neither spaces nor line ends; empty where there is none. Locations
// outside the text count as its nearest end.
[[nodiscard]] TextRange rangeBetweenSpaces(QStringView text, qsizetype location);

}  // namespace quillo
