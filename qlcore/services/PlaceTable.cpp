#include "qlcore/services/PlaceTable.h"

#include "foundation/Log.h"
#include "qlcore/QLLocation.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr double earthRadius = 6371;  // kilometres
constexpr double full = (1 << 24) - 1;

std::optional<PlaceTable>& sharedTable() {
  static std::optional<PlaceTable> table;
  return table;
}

// Kilometres, by the table's measure of population: 1024 people doubled every 16 steps.
const std::array<double, 256>& reaches() {
  static const auto table = [] {
    std::array<double, 256> reach{};
    for (size_t i = 0; i < reach.size(); ++i) {
      const double people = 1024 * std::exp2(static_cast<double>(i) / 16);
      reach[i] = 4 + std::min(25.0, std::sqrt(people / (std::numbers::pi * 4000)));
    }
    return reach;
  }();
  return table;
}

double radians(double degrees) {
  return degrees * std::numbers::pi / 180;
}

double toFourDecimals(double radians) {
  return std::round(radians * 180 / std::numbers::pi * 1e4) / 1e4;
}

// The parts of an inflated table, in the order in which it is read. Answers nothing past the end.
class Reader {
 public:
  explicit Reader(QByteArrayView bytes) : m_bytes(bytes) {}

  QByteArrayView take(qsizetype count) {
    if (count > m_bytes.size()) {
      m_isShort = true;
      return {};
    }
    const QByteArrayView taken = m_bytes.first(count);
    m_bytes = m_bytes.sliced(count);
    return taken;
  }
  QByteArrayView rest() { return m_bytes; }
  [[nodiscard]] bool isShort() const { return m_isShort; }

 private:
  QByteArrayView m_bytes;
  bool m_isShort{false};
};

uint8_t byteAt(QByteArrayView bytes, size_t index) {
  return static_cast<uint8_t>(bytes[static_cast<qsizetype>(index)]);
}

// Number `index` of `count` that stand as three planes of bytes, as a fraction of the greatest possible.
double fractionAt(QByteArrayView planes, size_t index, size_t count) {
  const unsigned value = byteAt(planes, index) | static_cast<unsigned>(byteAt(planes, count + index)) << 8 |
                         static_cast<unsigned>(byteAt(planes, 2 * count + index)) << 16;
  return value / full;
}

}  // namespace

const PlaceTable& PlaceTable::shared() {
  auto& table = sharedTable();
  if (!table) {
    QFile file(u":/quillo/places/places.bin"_s);
    table = file.open(QIODevice::ReadOnly) ? fromBytes(file.readAll()) : std::nullopt;
    if (!table) {
      QLLogError(u"There is no table of places; locations are named by their coordinates."_s);
      table = PlaceTable();
    }
  }
  return *table;
}

bool PlaceTable::isLoaded() {
  return sharedTable().has_value();
}

void PlaceTable::unload() {
  sharedTable().reset();
}

std::optional<PlaceTable> PlaceTable::fromBytes(const QByteArray& bytes) {
  if (!bytes.startsWith("QLP1")) return std::nullopt;
  // Takes the size that stands before the stream.
  const QByteArray inflated = qUncompress(bytes.sliced(4));
  if (inflated.size() < 5) return std::nullopt;
  Reader reader(inflated);
  const auto count = qFromLittleEndian<uint32_t>(reader.take(4).data());
  const uint8_t countries = byteAt(reader.take(1), 0);

  PlaceTable table;
  table.m_countries = reader.take(qsizetype{2} * countries).toByteArray();
  const QByteArrayView populations = reader.take(count);
  const QByteArrayView countryIndexes = reader.take(count);
  const QByteArrayView north = reader.take(qsizetype{3} * count);
  const QByteArrayView east = reader.take(qsizetype{3} * count);
  if (reader.isShort()) return std::nullopt;
  table.m_names = reader.rest().toByteArray();

  table.m_nodes.reserve(count);
  qsizetype name = 0;
  for (size_t i = 0; i < count; ++i) {
    const qsizetype end = table.m_names.indexOf('\0', name);
    if (end < 0 || byteAt(countryIndexes, i) >= countries) return std::nullopt;
    table.m_nodes.push_back(
        {.point =
             pointAt(fractionAt(north, i, count) * 180 - 90, fractionAt(east, i, count) * 360 - 180).value_or(Point{}),
         .nameOffset = static_cast<uint32_t>(name),
         .country = byteAt(countryIndexes, i),
         .population = byteAt(populations, i),
         .largestInRange = 0});
    name = end + 1;
  }
  table.measureRange(0, count);
  return table;
}

// As deep as the tree: at most 33 levels for 32-bit counts, as every step halves the range.
uint8_t PlaceTable::measureRange(size_t first, size_t end) {
  if (first >= end) return 0;
  const size_t middle = (first + end) / 2;
  const uint8_t below = std::max(measureRange(first, middle), measureRange(middle + 1, end));
  return m_nodes[middle].largestInRange = std::max(below, m_nodes[middle].population);
}

std::optional<PlaceTable::Point> PlaceTable::pointAt(double latitude, double longitude) {
  if (!QLLocation{latitude, longitude, {}}.isValid()) return std::nullopt;
  const double flat = std::cos(radians(latitude));
  return Point{static_cast<float>(flat * std::cos(radians(longitude))),
               static_cast<float>(flat * std::sin(radians(longitude))),
               static_cast<float>(std::sin(radians(latitude)))};
}

// Straight through the earth: over the 50 km that count, 13 cm less than on its surface.
double PlaceTable::distance(const Point& from, const Point& to) {
  const double x = static_cast<double>(from[0]) - to[0];
  const double y = static_cast<double>(from[1]) - to[1];
  const double z = static_cast<double>(from[2]) - to[2];
  return std::sqrt(x * x + y * y + z * z) * earthRadius;
}

std::optional<size_t> PlaceTable::indexOfPlaceNear(const Point& point) const {
  Search state{.point = point, .best = std::numeric_limits<double>::infinity(), .index = {}};
  search(state, 0, m_nodes.size(), 0);
  return state.index;
}

// As deep as the tree, see measureRange().
void PlaceTable::search(Search& state, size_t first, size_t end, int depth) const {
  if (first >= end) return;
  const size_t middle = (first + end) / 2;
  const Node& node = m_nodes[middle];
  const double away = distance(state.point, node.point);
  const double weighed = away / reaches()[node.population];
  if (away <= farthest && (weighed < state.best || (weighed == state.best && state.index && middle < *state.index))) {
    state.best = weighed;
    state.index = middle;
  }

  const size_t axis = static_cast<size_t>(depth) % 3;
  const double side = static_cast<double>(state.point[axis]) - node.point[axis];
  const bool isBefore = side < 0;
  search(state, isBefore ? first : middle + 1, isBefore ? middle : end, depth + 1);
  // Behind the plane nothing is nearer than the plane, nor reaches farther than the largest place there. The places
  // were sorted by finer numbers than these, so ten metres are left for rounding.
  const size_t farFirst = isBefore ? middle + 1 : first;
  const size_t farEnd = isBefore ? end : middle;
  if (farFirst >= farEnd) return;
  const double toPlane = std::max(0.0, std::abs(side) * earthRadius - 0.01);
  const Node& farSide = m_nodes[(farFirst + farEnd) / 2];
  if (toPlane <= farthest && toPlane <= state.best * reaches()[farSide.largestInRange])
    search(state, farFirst, farEnd, depth + 1);
}

std::optional<double> PlaceTable::weighedDistance(size_t index, const Point& point) const {
  const double away = distance(point, m_nodes[index].point);
  return away <= farthest ? std::optional(away / reaches()[m_nodes[index].population]) : std::nullopt;
}

QByteArrayView PlaceTable::name(size_t index) const {
  // Each ends in a null byte.
  return {m_names.constData() + m_nodes[index].nameOffset};
}

PlaceTable::Place PlaceTable::place(size_t index) const {
  return {QString::fromUtf8(name(index)),
          QString::fromLatin1(m_countries.sliced(m_nodes[index].country * qsizetype{2}, 2))};
}

double PlaceTable::latitude(size_t index) const {
  const Point& point = m_nodes[index].point;
  return toFourDecimals(std::asin(std::clamp<double>(point[2], -1, 1)));
}

double PlaceTable::longitude(size_t index) const {
  const Point& point = m_nodes[index].point;
  return toFourDecimals(std::atan2(point[1], point[0]));
}

}  // namespace quillo
