#include "qlcore/services/PlaceSearch.h"
#include "qlcore/services/PlaceTable.h"
#include "qlcore/services/QLLocationFormatter.h"

#include <QElapsedTimer>
#include <QSet>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

static const QLLocationFormatter english{QLocale(QLocale::English)};

TEST(PlaceSearch, FindsTheLargestPlaceThatBeginsSo) {
  const struct {
    QString text;
    QString title;
  } cases[] = {{u"berl"_s, u"Berlin, Germany"_s},
               {u"  new   yor"_s, u"New York City, United States"_s},
               {u"paris, u"_s, u"Paris, United States"_s},
               {u"PARIS,fr"_s, u"Paris, France"_s},
               {u"malmo"_s, u"Malmö, Sweden"_s},
               {u"Łód"_s, u"Łódź, Poland"_s},
               {u"lodz"_s, u"Łódź, Poland"_s},
               {u"Singapore"_s, u"Singapore"_s},
               {u"nosuchplace"_s, {}},
               {u" , "_s, {}},
               {u""_s, {}}};
  for (const auto& [text, title] : cases) {
    const QList<FoundPlace> found = placesNamed(text, english);
    EXPECT_EQ(found.value(0).title, title) << text.toStdString();
    EXPECT_EQ(found.value(0).location.placeName, title) << text.toStdString();
  }
}

TEST(PlaceSearch, WhatItFindsIsWhereTheTableHasIt) {
  const QLLocation berlin = placesNamed(u"Berlin"_s, english).value(0).location;
  EXPECT_NEAR(berlin.latitude, 52.52, 0.01);
  EXPECT_NEAR(berlin.longitude, 13.41, 0.01);
  EXPECT_EQ(english.placeNameForLocation(berlin), u"Berlin, Germany"_s);
  // There are many of them in one country.
  const QList<FoundPlace> springfields = placesNamed(u"springfield, united states"_s, english, 6);
  QSet<QString> titles;
  for (const FoundPlace& place : springfields) titles << place.title;
  EXPECT_EQ(titles.size(), 6);
  EXPECT_EQ(springfields.value(5).location.placeName, u"Springfield, United States"_s);
}

TEST(PlaceSearch, IsDoneBetweenTwoKeys) {
  (void)placesNamed(u"a"_s, english);
  QElapsedTimer timer;
  timer.start();
  for (const QString& text : {u"s"_s, u"ł"_s, u"san"_s, u"zzz"_s}) (void)placesNamed(text, english);
  // A few milliseconds each; more in a sanitizer's build.
  EXPECT_LT(timer.elapsed(), 2000);
}

}  // namespace quillo
