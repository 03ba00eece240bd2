#include "qlcore/services/PlaceTable.h"
#include "qlcore/services/QLLocationFormatter.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

struct Spot {
  double latitude;
  double longitude;
  QString name;
};

QString nameOf(double latitude, double longitude, QLocale::Language language = QLocale::English) {
  return QLLocationFormatter(QLocale(language)).localLocationStringForLocation({latitude, longitude, {}});
}

TEST(APlaceTable, IsLoadedByTheFirstQuestionForAPlace) {
  if (PlaceTable::isLoaded()) GTEST_SKIP() << "another test came first";
  const QLLocationFormatter formatter;
  EXPECT_EQ(formatter.localLocationStringForLocation({91, 0, {}}), QString());
  EXPECT_EQ(formatter.localLocationStringForLocation({52.52, 13.405, u"At home"_s}), u"At home"_s);
  EXPECT_FALSE(PlaceTable::isLoaded());
  EXPECT_FALSE(formatter.placeNameForLocation({52.52, 13.405, {}}).isEmpty());
  EXPECT_TRUE(PlaceTable::isLoaded());
  PlaceTable::unload();
  EXPECT_FALSE(PlaceTable::isLoaded());
  EXPECT_FALSE(formatter.placeNameForLocation({52.52, 13.405, {}}).isEmpty());
}

TEST(LocationFormatter, NamesSpotsAllOverTheWorld) {
  const Spot spots[] = {
      {52.5219, 13.4132, u"Berlin, Germany"_s},          // Alexanderplatz
      {50.6741, 7.1950, u"Königswinter, Germany"_s},     // across the river from Bonn
      {48.9354, 2.3597, u"Saint-Denis, France"_s},       // its basilica
      {51.5142, -0.0931, u"London, United Kingdom"_s},   // the City, a place of 8,000
      {40.7440, -74.0324, u"Hoboken, United States"_s},  // across the river
      {78.2232, 15.6267, u"Longyearbyen, Svalbard & Jan Mayen"_s},
      {47.5951, 7.6110, u"Weil am Rhein, Germany"_s},   // 4 km on, over the border
      {47.4979, 8.7260, u"Winterthur, Switzerland"_s},  // a district of it has an entry in the gazetteer
      {43.9363, 12.4466, u"San Marino"_s},
      {1.2903, 103.8519, u"Singapore"_s},
      // Across the date line, up to 50 km.
      {66.32, -179.12, u"Egvekinot, Russia"_s},
      {66.32, 179.95, u"Egvekinot, Russia"_s},
      {66.32, 179.7, u"66.32° N, 179.70° E"_s},
      // Where nobody lives.
      {0, 0, u"0.00° N, 0.00° E"_s},
      {-48.8767, -123.3933, u"48.88° S, 123.39° W"_s},  // farthest from any land
      {-90, -180, u"90.00° S, 180.00° W"_s},
      {-16.5, -179.95, u"16.50° S, 179.95° W"_s},
  };
  for (const Spot& spot : spots) EXPECT_EQ(nameOf(spot.latitude, spot.longitude), spot.name);
}

TEST(LocationFormatter, SaysNothingOfCoordinatesThatAreNone) {
  const double notANumber = std::numeric_limits<double>::quiet_NaN();
  const double infinite = std::numeric_limits<double>::infinity();
  for (const auto& [latitude, longitude] : {std::pair{91.0, 0.0}, {0.0, 180.5}, {notANumber, 0.0}, {0.0, infinite}}) {
    EXPECT_EQ(nameOf(latitude, longitude), QString()) << latitude << ' ' << longitude;
    EXPECT_EQ(QLLocationFormatter().placeNameForLocation({latitude, longitude, {}}), QString());
  }
}

TEST(LocationFormatter, NamesTheCountryInTheUsersLanguage) {
  EXPECT_EQ(nameOf(52.5219, 13.4132, QLocale::German), u"Berlin, Deutschland"_s);
  EXPECT_EQ(nameOf(35.6595, 139.7005, QLocale::Japanese), u"Tokyo, 日本"_s);
  EXPECT_EQ(nameOf(52.5219, 13.4132, QLocale::C), u"Berlin, Germany"_s);
  EXPECT_EQ(nameOf(49.6116, 6.1319, QLocale::German), u"Luxembourg"_s);  // not "Luxembourg, Luxemburg"
}

// The tree leaves out what cannot win; a look at every place must find the same.
TEST(APlaceTable, FindsWhatALookAtEveryPlaceFinds) {
  const PlaceTable& table = PlaceTable::shared();
  std::mt19937 random(20140310);
  const auto between = [&random](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  for (int round = 0; round < 300; ++round) {
    // Two thirds where people live, the rest anywhere, with its share of poles and date line.
    const bool isDense = round % 3 != 0;
    const double latitude = isDense ? between(47, 53) : between(-90, 90);
    const double longitude = isDense ? between(2, 14) : between(-180, 180);
    const PlaceTable::Point point = *PlaceTable::pointAt(latitude, longitude);
    std::optional<size_t> nearest;
    double best = std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < table.count(); ++i) {
      const auto weighed = table.weighedDistance(i, point);
      if (!weighed || *weighed >= best) continue;
      nearest = i;
      best = *weighed;
    }
    EXPECT_EQ(table.indexOfPlaceNear(point), nearest) << latitude << ' ' << longitude;
  }
}

}  // namespace
