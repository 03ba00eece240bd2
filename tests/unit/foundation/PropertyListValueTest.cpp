#include "foundation/PropertyListValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

constexpr qint64 maxSigned = std::numeric_limits<qint64>::max();
constexpr qint64 minSigned = std::numeric_limits<qint64>::min();
constexpr quint64 maxUnsigned = std::numeric_limits<quint64>::max();

TEST(PropertyListValue, ConvertsByThePlatformsRules) {
  const struct {
    PropertyListValue value;
    bool asBool;
    qint64 asInteger;
    double asDouble;
  } cases[] = {
      {true, true, 1, 1},
      {PropertyListValue(), false, 0, 0},
      {-3, true, -3, -3},
      {maxUnsigned, true, maxSigned, 18446744073709551615.0},
      {0.4, true, 0, 0.4},
      {1e300, true, maxSigned, 1e300},
      {u"YES"_s, true, 0, 0},
      {u" true"_s, true, 0, 0},
      {u"12abc"_s, true, 12, 12},
      {u"-0007.5e1x"_s, true, -7, -75},
      {u"99999999999999999999"_s, true, maxSigned, 1e20},
      {u"1e-999"_s, true, 1, 0},
      {u"-1e999"_s, true, -1, -HUGE_VAL},
      {Date(5), false, 0, 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.value.boolValue(), c.asBool) << c.value.description().toStdString();
    EXPECT_EQ(c.value.integerValue(), c.asInteger) << c.value.description().toStdString();
    EXPECT_DOUBLE_EQ(c.value.doubleValue(), c.asDouble) << c.value.description().toStdString();
  }
  EXPECT_EQ(PropertyListValue(std::nan("")).integerValue(), 0);
  EXPECT_EQ(PropertyListValue(maxUnsigned).unsignedIntegerValue(), maxUnsigned);
  EXPECT_EQ(PropertyListValue(-1).unsignedIntegerValue(), maxUnsigned);
}

TEST(PropertyListValue, EqualsAcrossNumberKindsAndNothingElse) {
  const QList<QList<PropertyListValue>> classes = {
      {true, 1, 1.0, quint64{1}},
      {false, 0, 0.0, -0.0},
      {maxSigned, quint64{9223372036854775807U}},
      {9223372036854775808.0, quint64{9223372036854775808U}},
      {maxUnsigned},
      {-1, -1.0},
      {u"1"_s},
      {PropertyListValue::Null{}},
      {PropertyListArray{}},
      {PropertyListArray{1, true}, PropertyListArray{true, 1.0}},
      {PropertyListDictionary{}},
      {PropertyListDictionary{{u"a"_s, 1}}, PropertyListDictionary{{u"a"_s, true}}},
      {PropertyListDictionary{{u"b"_s, 1}}},
      {Date(1)},
  };
  for (const auto& mine : classes)
    for (const auto& theirs : classes)
      for (const auto& a : mine)
        for (const auto& b : theirs)
          EXPECT_EQ(a == b, &mine == &theirs)
              << a.description().toStdString() << " and " << b.description().toStdString();
}

TEST(Date, ReadsAndWritesISO8601) {
  EXPECT_EQ(Date(0).toISO8601(), u"2001-01-01T00:00:00Z"_s);
  EXPECT_EQ(Date(0.25).toISO8601(), u"2001-01-01T00:00:00.250Z"_s);
  EXPECT_EQ(Date::fromISO8601(u"2001-01-01T02:00:00+02:00"_s), Date(0));
  EXPECT_EQ(Date::fromISO8601(u"2001-01-01T02:00:00"_s), std::nullopt);
  EXPECT_EQ(Date::fromISO8601(u"yesterday"_s), std::nullopt);
  for (const double hostile : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e15, -1e15})
    EXPECT_EQ(Date(hostile).toISO8601(), u"invalid date"_s);
}

}  // namespace
}  // namespace quillo
