#include "foundation/RelativeDateText.h"

#include <QDateTime>

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

TEST(RelativeDateText, NamesNearDaysAndReadsInTheCalendarsZone) {
  const auto calendar = Calendar::withTimeZoneName(u"Africa/Cairo"_s);
  // Cairo keeps summer time again since 2023, which older zone data does not know: 19:00 UTC is 22:00 there in July.
  EXPECT_EQ(relativeDateText(*Date::fromISO8601(u"2024-07-10T19:00:00Z"_s), *calendar, QLocale(u"de_DE"_s)),
            u"10.07.24, 22:00"_s);
  const Calendar utc(TimeZone::utc());
  const QDateTime noon(QDateTime::currentDateTimeUtc().date(), QTime(12, 0), Qt::UTC);
  const QDateTime tomorrow = noon.addDays(1);
  EXPECT_EQ(relativeDateText(Date::fromDateTime(noon), utc, QLocale(u"en_GB"_s)), u"Today at 12:00"_s);
  EXPECT_EQ(relativeDateText(Date::fromDateTime(tomorrow), utc, QLocale(u"en_GB"_s)), u"Tomorrow at 12:00"_s);
  EXPECT_EQ(relativeDateText(Date::fromDateTime(noon), utc, QLocale(u"de_DE"_s)), u"heute um 12:00"_s);
  EXPECT_EQ(relativeDateText(Date::fromDateTime(noon.addDays(40)), utc, QLocale(u"en_GB"_s)),
            noon.addDays(40).toString(u"dd/MM/yyyy, HH:mm"_s));
  EXPECT_EQ(relativeDateText(Date(1e300), utc), QString());
}

}  // namespace
}  // namespace quillo
