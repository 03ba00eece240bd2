#include "PropertyListParsing.h"

#include <QtEndian>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using testing::HasSubstr;

QByteArray bigEndian(quint64 value, int width) {
  QByteArray bytes(8, 0);
  qToBigEndian(value, bytes.data());
  return bytes.right(width);
}

// A binary list of the given objects, the first at the top; references in them are as wide as `referenceWidth` says.
struct Binary {
  QList<QByteArray> objects;
  int offsetWidth{2};
  int referenceWidth{1};
  quint64 top{0};
  std::optional<quint64> count{};
  std::optional<quint64> tableOffset{};
  QByteArray fill{};  // before every object

  [[nodiscard]] QByteArray data() const {
    QByteArray data = "bplist00";
    QByteArray table;
    for (const QByteArray& object : objects) {
      data += fill;
      table += bigEndian(static_cast<quint64>(data.size()), offsetWidth);
      data += object;
    }
    const auto end = static_cast<quint64>(data.size());
    data += table + QByteArray(6, 0) + char(offsetWidth) + char(referenceWidth);
    data += bigEndian(count.value_or(static_cast<quint64>(objects.size())), 8) + bigEndian(top, 8);
    return data + bigEndian(tableOffset.value_or(end), 8);
  }
};

QByteArray hex(const QByteArray& digits) {
  return QByteArray::fromHex(digits);
}

TEST(PropertyListBinary, ReadsEveryWidth) {
  const struct {
    const char* object;
    PropertyListValue value;
  } cases[] = {
      {"09", true},
      {"10ff", 255},
      {"13ffffffffffffffff", -1},
      {"140000000000000000ffffffffffffffff", std::numeric_limits<quint64>::max()},
      {"1400000000000000000000000000000007", 7},
      {"223f000000", 0.5},
      {"333ff0000000000000", Date(1)},
      {"40", QByteArray()},
      {"4f120000000301fe02", hex("01fe02")},
      {"524142", u"AB"_s},
      {"5f13000000000000000241 42", u"AB"_s},
      {"6200fcd83d", u"\u00fc"_s + QChar(0xD83D)},
      {"a0", PropertyListArray()},
      {"d0", PropertyListDictionary()},
  };
  for (const auto& c : cases) {
    for (int width = 1; width <= 8; ++width) {
      const QByteArray reference = bigEndian(1, width);
      const auto list = parsed(Binary{{"\xa1" + reference, hex(c.object)}, width, width}.data());
      ASSERT_TRUE(list) << c.object;
      EXPECT_TRUE(identical(*list, PropertyListArray{c.value})) << c.object << list->description().toStdString();
    }
  }
  // A set reads as an array; bytes between objects belong to nobody; of equal keys the last counts.
  EXPECT_EQ(parsed(Binary{{hex("c20101"), hex("09")}, 1, 1, 0, {}, {}, hex("0f0f00")}.data()),
            PropertyListValue(PropertyListArray{true, true}));
  EXPECT_EQ(parsed(Binary{{hex("d201010203"), hex("5161"), hex("1001"), hex("1002")}}.data()),
            PropertyListValue(PropertyListDictionary{{u"a"_s, 2}}));
  EXPECT_EQ(parsed(Binary{{hex("09"), hex("1005")}, 1, 1, 1}.data()), PropertyListValue(5));
}

TEST(PropertyListBinary, RefusesWhatIsNoObject) {
  const struct {
    const char* why;
    QByteArrayList objects;
  } cases[] = {
      {"null", {"00"}},
      {"unknown object", {"01", "0f", "7161", "b0", "e0", "ff"}},
      {"UID", {"8001"}},
      {"width", {"15" + QByteArray(64, '0'), "210000", "3200000000"}},
      {"out of range", {"140000000000000001ffffffffffffffff", "14ffffffffffffffffffffffffffffffff"}},
      {"behind the last",
       {"13ff", "5361", "61ff", "42ff", "a50101", "5f11", "4f13ffffffffffffffff", "5f13ffffffffffffffff",
        "6f138000000000000000", "af132000000000000000", "df138000000000000000"}},
      {"ASCII", {"5180"}},
      {"names no object", {"d10101", "a101"}},
      {"not an integer", {"5f09", "5f1400000000000000000000000000000001", "5f"}},
      {"holds itself", {"a100", "d10000"}},
  };
  for (const auto& [why, objects] : cases)
    for (const QByteArray& object : objects)
      EXPECT_THAT(whyRefused(Binary{{hex(object)}}.data()), testing::AllOf(HasSubstr(why), HasSubstr("offset")))
          << object.toStdString();
  EXPECT_THAT(whyRefused(Binary{{hex("a101"), hex("a102"), hex("a101")}}.data()), HasSubstr("holds itself"));
  EXPECT_THAT(whyRefused(Binary{{hex("d10102"), hex("1001"), hex("09")}}.data()), HasSubstr("key is not a string"));
  EXPECT_THAT(whyRefused(Binary{{hex("d10101"), hex("a0")}}.data()), HasSubstr("key is not a string"));
}

TEST(PropertyListBinary, RefusesATrailerThatDoesNotFit) {
  const QList<QByteArray> objects = {hex("a101"), hex("09")};
  constexpr quint64 huge = std::numeric_limits<quint64>::max();
  const struct {
    const char* why;
    QList<Binary> lists;
  } cases[] = {
      {"widths", {{objects, 0, 1}, {objects, 1, 0}, {objects, 1, 9}}},
      {"top object", {{objects, 1, 1, 2}, {objects, 1, 1, huge}}},
      {"number of objects",
       {{objects, 1, 1, 0, 0}, {objects, 1, 1, 0, 3}, {objects, 1, 1, 0, huge}, {objects, 8, 1, 0, huge / 8 + 2}}},
      {"offset table", {{objects, 1, 1, 0, {}, 8}, {objects, 1, 1, 0, {}, 13}, {objects, 1, 1, 0, {}, huge}}},
  };
  for (const auto& [why, lists] : cases)
    for (const Binary& list : lists) EXPECT_THAT(whyRefused(list.data()), HasSubstr(why));
  QByteArray good = Binary{objects, 1, 1}.data();
  EXPECT_TRUE(parsed(good));
  for (const char offset : {0, 7, 11, 12, 127}) {
    good[good.size() - 34] = offset;
    EXPECT_THAT(whyRefused(good), HasSubstr("outside of the objects"));
  }
}

TEST(PropertyListBinary, RefusesToTakeManyTimesItsSize) {
  // References of one byte each, for each of which an array holds a value of sixteen.
  const auto references = [](quint64 count) {
    Binary list;
    list.offsetWidth = 4;
    list.objects << "\xaf\x12" + bigEndian(count, 4) + QByteArray(static_cast<qsizetype>(count), 1) << hex("09");
    return list.data();
  };
  EXPECT_TRUE(parsed(references(1'000'000)));
  EXPECT_THAT(whyRefused(references(8'000'000)), HasSubstr("too much memory"));
}

TEST(PropertyListBinary, RefusesToBeBlownUp) {
  // Thirty levels, each holding the next twice: a billion values.
  Binary doubling;
  for (int i = 0; i < 30; ++i) doubling.objects << "\xa2" + QByteArray(2, char(i + 1));
  doubling.objects << hex("09");
  EXPECT_THAT(whyRefused(doubling.data()), HasSubstr("too large"));
  // The same with eleven is sharing that a program may well have.
  Binary harmless = doubling;
  harmless.top = 19;
  EXPECT_TRUE(parsed(harmless.data()));

  // Shared collections must not hide depth: two chains of 300, the second at the end of the first.
  Binary chained;
  chained.referenceWidth = 2;
  chained.objects << "\xa2" + bigEndian(301, 2) + bigEndian(1, 2);
  for (quint64 i = 1; i <= 600; ++i) chained.objects << "\xa1" + bigEndian(i == 300 ? 301 : i + 1, 2);
  chained.objects << hex("09");
  EXPECT_THAT(whyRefused(chained.data()), HasSubstr("too deeply"));

  // A hundred thousand levels.
  Binary deep;
  deep.offsetWidth = deep.referenceWidth = 4;
  for (quint64 i = 1; i <= 100000; ++i) deep.objects << "\xa1" + bigEndian(i, 4);
  deep.objects << hex("09");
  EXPECT_THAT(whyRefused(deep.data()), HasSubstr("too deeply"));

  // Objects inside of each other: each of 250 would be a megabyte.
  QByteArray overlapping = "bplist00";
  const QByteArray references = "\xaf\x11\x00\xfa";
  QByteArray names;
  for (int i = 1; i < 251; ++i) names.append(char(i));
  overlapping += references + names;
  const auto shared = static_cast<quint64>(overlapping.size());
  overlapping += "\x4f\x12" + bigEndian(1000000, 4) + QByteArray(1001000, '\x4f');
  const auto table = static_cast<quint64>(overlapping.size());
  overlapping += bigEndian(8, 4);
  for (int i = 0; i < 250; ++i) overlapping += bigEndian(shared, 4);
  overlapping += QByteArray(6, 0) + char(4) + char(1) + bigEndian(251, 8) + bigEndian(0, 8) + bigEndian(table, 8);
  EXPECT_THAT(whyRefused(overlapping), HasSubstr("overlap"));
}

}  // namespace
}  // namespace quillo
