#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace quillo {

// The populated places of the earth of 2,000 people and more, and which of them a point belongs to.
//
// A place is not a point: a city reaches out farther than a village. Distances are therefore weighed: a place's is
// divided by 4 km plus the radius that a round town of its population has at 4,000 people a square kilometre (at most
// 25 km), and the least quotient wins. So two places of one size meet half way, a town of 20,000 keeps the 2.4 km
// around it when a city of two millions lies 10 km away, and a village in the open keeps what lies 15 km off against a
// city 40 km off. The table itself leaves out what lies in the very middle of a city and villages far inside one.
class PlaceTable {
 public:
  // Kilometres. Farther from every place a point belongs to none.
  static constexpr double farthest = 50;

  struct Place {
    QString name;
    QString countryCode;  // ISO 3166, two letters
  };
  // On the unit sphere: to 0° N 0° E, to 90° E, to the north pole.
  using Point = std::array<float, 3>;

  // The program's own table, read from its resources at the first call, which takes some milliseconds. Empty, logged,
  // when the program carries none. Main thread only.
  static const PlaceTable& shared();
  // Whether there was a first call.
  [[nodiscard]] static bool isLoaded();
  // Lets go of its two megabytes; the next call is a first one again. No reference to it may be kept over this.
  static void unload();

  // The form that resources/places/build writes; nothing when `bytes` is something else.
  [[nodiscard]] static std::optional<PlaceTable> fromBytes(const QByteArray& bytes);

  // Of degrees north and east; nothing where they are not on this earth.
  [[nodiscard]] static std::optional<Point> pointAt(double latitude, double longitude);
  // The index of the place that the point belongs to; nothing where it belongs to none.
  [[nodiscard]] std::optional<size_t> indexOfPlaceNear(const Point& point) const;
  // The quotient for place `index`, less being nearer; nothing beyond `farthest`.
  [[nodiscard]] std::optional<double> weighedDistance(size_t index, const Point& point) const;

  [[nodiscard]] size_t count() const { return m_nodes.size(); }
  [[nodiscard]] Place place(size_t index) const;
  // Its name in UTF-8, as long as the table lives.
  [[nodiscard]] QByteArrayView name(size_t index) const;
  // Greater for more people; the table's own measure.
  [[nodiscard]] int population(size_t index) const { return m_nodes[index].population; }
  // Degrees north and east, to some ten metres.
  [[nodiscard]] double latitude(size_t index) const;
  [[nodiscard]] double longitude(size_t index) const;

 private:
  struct Node {
    Point point;
    uint32_t nameOffset;     // in m_names
    uint8_t country;         // in m_countries
    uint8_t population;      // the table's logarithmic measure
    uint8_t largestInRange;  // the greatest population of the tree below, this one included
  };
  struct Search {
    Point point{};
    double best{0};
    std::optional<size_t> index;
  };

  PlaceTable() = default;
  static double distance(const Point& from, const Point& to);
  uint8_t measureRange(size_t first, size_t end);
  void search(Search& state, size_t first, size_t end, int depth) const;

  std::vector<Node> m_nodes;  // in the order of a k-d tree
  QByteArray m_names;
  QByteArray m_countries;
};

}  // namespace quillo
