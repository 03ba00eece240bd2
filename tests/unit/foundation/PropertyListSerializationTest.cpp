#include "PropertyListParsing.h"
#include "foundation/PropertyListSerialization.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using testing::HasSubstr;
using Format = PropertyListFormat;

std::optional<QByteArray> written(const PropertyListValue& value, Format format, std::string* why = nullptr) {
  Error error;
  auto result = PropertyListSerialization::dataWithPropertyList(value, format, &error);
  EXPECT_EQ(error.code, result ? 0 : ErrorCode::propertyListWriteInvalid);
  if (why) *why = error.localizedDescription.toStdString();
  return result;
}

// So that files under version control do not change without need.
TEST(PropertyListSerialization, WritesXMLTheSameToTheByte) {
  EXPECT_EQ(*written(parsed(R"(<dict><key>a</key><array><data>AAEC</data><array/><dict/></array></dict>)").value(),
                     Format::XML),
            QByteArray(R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>a</key>
	<array>
		<data>
		AAEC
		</data>
		<array/>
		<dict/>
	</array>
</dict>
</plist>
)"));
}

TEST(PropertyListSerialization, RoundTripsEveryValue) {
  const double infinity = std::numeric_limits<double>::infinity();
  PropertyListArray values = {
      u""_s,
      u"a\rb\r\nc\td"_s,
      u" ]]> &amp; "_s,
      u"\u00fc"_s,
      u"\U0001f642"_s,
      QByteArray(),
      QByteArray(1000, 'x'),
      PropertyListDictionary{{u"a & b"_s, u"<tag>"_s},
                             {u""_s, PropertyListArray{PropertyListDictionary(), PropertyListArray()}}}};
  for (const double real :
       {0.0, -0.0, 1.0, 0.1, 1e300, 5e-324, 1.7976931348623157e308, -2.5, infinity, -infinity, std::nan("")})
    values << real;
  for (const qint64 integer : {0LL, 1LL, 127LL, 128LL, 255LL, 256LL, 65535LL, 65536LL, 4294967295LL, 4294967296LL, -1LL,
                               -128LL, std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()})
    values << integer;
  for (const quint64 integer : {9223372036854775808ULL, 18446744073709551615ULL}) values << integer;
  for (const double instant : {0.0, 1.0, -1e9, -63114076800.0, 64092211200.0}) values << Date(instant);
  values << true << 1 << 1.0 << false << 0 << 0.0 << u"1"_s;
  for (int i = 0; i < 300; ++i) values << i << QString::number(i);
  // All of them in one list, too, where equal ones may be shared.
  values.append(PropertyListValue(values));
  for (const auto format : {Format::XML, Format::Binary}) {
    for (const PropertyListValue& value : values) {
      const auto data = written(value, format);
      ASSERT_TRUE(data) << value.description().toStdString();
      Format read{};
      const auto again = parsed(*data, &read);
      ASSERT_TRUE(again) << data->toStdString();
      EXPECT_TRUE(identical(value, *again)) << value.description().toStdString();
      EXPECT_EQ(read, format);
    }
  }
  // Binary holds what XML cannot.
  for (const PropertyListValue& value :
       PropertyListArray{QString(QChar(0)), QString(QChar(0xD800)), Date(0.25), Date(1e300)}) {
    EXPECT_EQ(parsed(*written(value, Format::Binary)), value);
  }
}

TEST(PropertyListSerialization, SharesEqualScalarsInBinary) {
  PropertyListArray many;
  for (int i = 0; i < 100; ++i)
    many << u"a string that repeats"_s << 123456 << 0.1 << Date(5) << QByteArray("some data")
         << PropertyListDictionary{{u"a string that repeats"_s, true}};
  EXPECT_LT(written(many, Format::Binary)->size(), 600 + 100 * (1 + 2 + 1) + 200 + 150);
}

TEST(PropertyListSerialization, RefusesToWriteWhatCannotBeRead) {
  const auto within = [](const PropertyListValue& value) {
    return PropertyListDictionary{{u"Outer"_s, PropertyListArray{1, PropertyListDictionary{{u"Inner"_s, value}}}}};
  };
  const struct {
    PropertyListValue value;
    bool inBinary;
    const char* why;
  } cases[] = {
      {PropertyListValue(), true, "null"},       {u"a\u0001"_s, false, "U+0001"},
      {QString(QChar(0xFFFF)), false, "U+ffff"}, {QString(QChar(0xD83D)) + u'x', false, "U+d83d"},
      {Date(std::nan("")), false, "date"},
  };
  for (const auto& c : cases) {
    for (const auto format : {Format::XML, Format::Binary}) {
      if (format == Format::Binary && !c.inBinary) continue;
      std::string why;
      EXPECT_FALSE(written(within(c.value), format, &why));
      EXPECT_THAT(why, HasSubstr(c.why));
      EXPECT_THAT(why, HasSubstr("at Outer[1].Inner."));
    }
  }
  std::string why;
  EXPECT_FALSE(written(PropertyListDictionary{{u"a\u0002"_s, 1}}, Format::XML, &why));
  EXPECT_FALSE(written(u"text"_s, Format::OpenStep, &why));
  EXPECT_THAT(why, HasSubstr("OpenStep"));
}

TEST(PropertyListSerialization, LimitsDepthAlikeInReadingAndWriting) {
  const auto nested = [](int depth) {
    PropertyListValue value = PropertyListArray();
    for (int i = 1; i < depth; ++i) value = PropertyListArray{value};
    return value;
  };
  constexpr int most = PropertyListSerialization::maximumDepth;
  for (const auto format : {Format::XML, Format::Binary}) {
    const auto deepest = written(nested(most), format);
    ASSERT_TRUE(deepest);
    EXPECT_EQ(parsed(*deepest), nested(most));
    std::string why;
    EXPECT_FALSE(written(nested(most + 1), format, &why));
    EXPECT_THAT(why, HasSubstr("too deeply"));
  }
  const auto repeated = [](const char* text, qsizetype count) { return QByteArray(text).repeated(count); };
  EXPECT_TRUE(parsed(repeated("(", most) + repeated(")", most)));
  const QByteArray deep[] = {
      repeated("(", most + 1) + repeated(")", most + 1),
      repeated("{a=", 100000),
      repeated("(", 100000) + repeated(")", 100000),
      repeated("<array>", most + 1) + repeated("</array>", most + 1),
      repeated("<array>", 100000) + repeated("</array>", 100000),
      repeated("<dict><key>a</key>", 100000),
  };
  for (const QByteArray& data : deep) EXPECT_THAT(whyRefused(data), HasSubstr("too deeply"));
}

TEST(PropertyListSerialization, RefusesWhatIsNoList) {
  EXPECT_THAT(whyRefused(""), HasSubstr("empty"));
  EXPECT_THAT(whyRefused("bplist15" + QByteArray(100, 0)), HasSubstr("version \"15\""));
  EXPECT_THAT(whyRefused(QByteArray(4096, 0)), HasSubstr("line 1"));
  EXPECT_THAT(whyRefused("{ a = \"\xff\"; }"), HasSubstr("not valid in its encoding"));
}

}  // namespace
}  // namespace quillo
