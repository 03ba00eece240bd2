#include "PropertyListParsing.h"

#include <QStringEncoder>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using testing::AllOf;
using testing::HasSubstr;
using Array = PropertyListArray;
using Dictionary = PropertyListDictionary;

TEST(PropertyListOpenStep, ReadsEveryForm) {
  const struct {
    const char* text;
    PropertyListValue value;
  } cases[] = {
      {"{ a = 1; b = (x, \"y z\", ); }", Dictionary{{u"a"_s, u"1"_s}, {u"b"_s, Array{u"x"_s, u"y z"_s}}}},
      {"{a={};b=();c=\"\";d=<>;}",
       Dictionary{{u"a"_s, Dictionary()}, {u"b"_s, Array()}, {u"c"_s, u""_s}, {u"d"_s, QByteArray()}}},
      {"<0fbd 77>", QByteArray::fromHex("0fbd77")},
      {" < AB\ncd > ", QByteArray::fromHex("abcd")},
      {"(<ff>)", Array{QByteArray("\xff")}},
      {"('it\"s', \"it's\")", Array{u"it\"s"_s, u"it's"_s}},
      {R"("\a\b\f\n\r\t\v\"\'\\\x")", u"\a\b\f\n\r\t\v\"'\\x"_s},
      {R"("\101\0\3778\7")", u"A\0\u00ff8\a"_s},
      {R"("\U00fc\Ud83d\UDE42\Ufcg")", u"\u00fc\U0001f642\u00fcg"_s},
      {"\"two\nlines\\\nthree\"", u"two\nlines\nthree"_s},
      {"word", u"word"_s},
      {"/usr/bin/a-b_c.d:$e", u"/usr/bin/a-b_c.d:$e"_s},
      {"(http://a//b)", Array{u"http://a//b"_s}},
      {"// first\n/* { */ ( /**/ a /* ) */ , b // ,\n)", Array{u"a"_s, u"b"_s}},
      {"a = b;\n/* c */ \"d e\" = (f);", Dictionary{{u"a"_s, u"b"_s}, {u"d e"_s, Array{u"f"_s}}}},
      {"\"Only me\";", Dictionary{{u"Only me"_s, u"Only me"_s}}},
      {"{ a; a = 2; }", Dictionary{{u"a"_s, u"2"_s}}},
      {"// a strings file without strings\n", Dictionary()},
      {"{\"\xc3\xbc\"='\xc3\xbc';}", Dictionary{{u"\u00fc"_s, u"\u00fc"_s}}},
  };
  for (const auto& c : cases) {
    PropertyListFormat format{};
    const auto value = parsed(c.text, &format);
    ASSERT_TRUE(value) << c.text;
    EXPECT_EQ(*value, c.value) << c.text;
    EXPECT_EQ(format, PropertyListFormat::OpenStep);
  }
  EXPECT_THAT(whyRefused("\xef\xbb\xbf{\xc3\xbc=\"\xc3\xbc\";}"), HasSubstr("unexpected character"));
  QStringEncoder wide(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
  EXPECT_EQ(parsed(QByteArray(wide.encode(u"\"\u00fc\" = \"\u4e3c\";"_s))),
            PropertyListValue(Dictionary{{u"\u00fc"_s, u"\u4e3c"_s}}));
}

TEST(PropertyListOpenStep, RefusesWhatIsNoListWithTheLine) {
  const struct {
    const char* why;
    QByteArrayList texts;
  } cases[] = {
      {"not followed", {"this is no list", "a = b; c", "{ a b; }"}},
      {"\";\"", {"a = b", "{ a = b }", "{ a = caf\xc3\xa9; }"}},
      {"\",\"", {"(a b)", "(a"}},
      {"';'", {"a = ;", "{ a = b;; }"}},
      {"'}'", {"a = b; }"}},
      {"'('", {"{ (a) = b; }"}},
      {"','", {"(a,,b)"}},
      {"'!'", {"!"}},
      {"too early", {"{ a = b;"}},
      {"more after", {"(a))", "{} {}"}},
      {"odd", {"<0fb>"}},
      {"'g'", {"<0g>"}},
      {"no end", {"(<0f", "\"a", "'a\"", "\"a\\", "/* a", "(a /* b)"}},
      {"hexadecimal", {R"("\Ug")"}},
  };
  for (const auto& [why, texts] : cases)
    for (const QByteArray& text : texts)
      EXPECT_THAT(whyRefused("// one\n\n" + text), AllOf(HasSubstr(why), HasSubstr("line 3"))) << text.toStdString();
}

TEST(PropertyListOpenStep, RefusesToTakeManyTimesItsSize) {
  // Each of four characters, and each a collection of its own.
  const auto arrays = [](qsizetype count) { return '(' + QByteArray("(a),").repeated(count) + ')'; };
  EXPECT_TRUE(PropertyListSerialization::propertyListWithData(arrays(10'000)));
  EXPECT_THAT(whyRefused(arrays(400'000)), HasSubstr("too much memory"));
}

}  // namespace
}  // namespace quillo
