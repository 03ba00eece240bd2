#include "PropertyListParsing.h"

#include <QStringEncoder>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using testing::AllOf;
using testing::HasSubstr;

struct Refusals {
  const char* why;
  QByteArrayList texts;
};

// Each text is refused for its reason, which names the third line; two lines go before it.
void expectRefusals(const QList<Refusals>& cases, const QByteArray& head, const QByteArray& tail) {
  for (const auto& [why, texts] : cases)
    for (const QByteArray& text : texts)
      EXPECT_THAT(whyRefused(head + text + tail), AllOf(HasSubstr(why), HasSubstr("line 3"))) << text.toStdString();
}

TEST(PropertyListXML, ReadsEveryKindOfElement) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double notANumber = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char* text;
    PropertyListValue value;
  } cases[] = {
      {"<string>a<!-- b -->c<![CDATA[<&>]]>&lt;&amp;&gt;&quot;&apos;&#65;&#x1F642;</string>",
       u"ac<&><&>\"'A\U0001f642"_s},
      {"<string> two\r\nlines </string>", u" two\nlines "_s},
      {"<string>\xef\xbb\xbfseven.. \xf0\x9f\x99\x82\xc3\xbc and what is behind</string>",
       u"\ufeffseven.. \U0001f642\u00fc and what is behind"_s},
      {"<integer> 12 </integer>", 12},
      {"<integer>0x1F</integer>", 31},
      {"<integer>-9223372036854775808</integer>", std::numeric_limits<qint64>::min()},
      {"<integer>18446744073709551615</integer>", std::numeric_limits<quint64>::max()},
      {"<real>-.5E-1</real>", -0.05},
      {"<real>-0.1e310</real>", -infinity},
      {"<real>100e-999</real>", 0.0},
      {"<real>nan</real>", notANumber},
      {"<array><real>1e999</real><real>1e99999999999999999999</real></array>", PropertyListArray{infinity, infinity}},
      {"<array><real>inf</real><real>Infinity</real><real>+infinity</real></array>",
       PropertyListArray{infinity, infinity, infinity}},
      {"<date>2001-01-01T00:00:01Z</date>", Date(1)},
      {"<date>2001-01-01T00:00:00.5Z</date>", Date(0.5)},
      {"<date>0000-12-30T00:00:00Z</date>", Date(-63114076800.0)},
      {"<data>\n\tAAEC\n\tAw==\n</data>", QByteArray::fromHex("00010203")},
      {"<true/>", true},
      {"<false></false>", false},
      {"<array><!-- a --><true/>\n<array/></array>", PropertyListArray{true, PropertyListArray()}},
      {"<dict><key>k</key><!-- c --><true/><key>k</key><false/></dict>", PropertyListDictionary{{u"k"_s, false}}},
  };
  for (const auto& c : cases) {
    const QByteArray text = QByteArray("<!-- before --><plist version=\"1.0\">") + c.text + "</plist><!-- after -->";
    const auto value = parsed(text);
    ASSERT_TRUE(value) << c.text;
    EXPECT_TRUE(identical(*value, c.value)) << c.text << " is " << value->description().toStdString();
    // The wrapper may be missing.
    EXPECT_TRUE(parsed(c.text)) << c.text;
    EXPECT_TRUE(parsed(QByteArray("\n <?xml version='1.0'?>") + c.text)) << c.text;
  }
}

TEST(PropertyListXML, RefusesWhatIsNoListWithTheLine) {
  const QList<Refusals> cases = {
      {"integer",
       {"<integer>18446744073709551616</integer>", "<integer>-9223372036854775809</integer>", "<integer>0x</integer>",
        "<integer>1 2</integer>", "<integer>1.0</integer>", "<integer/>"}},
      {"real", {"<real>1e</real>", "<real>1,5</real>", "<real>0x1p3</real>", "<real></real>"}},
      {"date", {"<date>yesterday</date>", "<date>2001-02-29T00:00:00Z</date>", "<date>2001-01-01T00:00:00</date>"}},
      {"data", {"<data>AAE=C</data>", "<data>A?</data>"}},
      {"not empty", {"<true>x</true>"}},
      {"inside of <string>", {"<string>a<b/></string>"}},
      {"unknown", {"<string>&unknown;</string>"}},
      {"<widget> is not known", {"<widget/>"}},
      {"not known", {"<x:dict xmlns:x='y'/>"}},
      {"\"k\" has no value", {"<dict><key>k</key></dict>", "<dict><key>k</key><key>l</key><true/></dict>"}},
      {"no key", {"<dict><true/></dict>", "<dict><array/></dict>"}},
      {"outside of a dictionary", {"<array><key>k</key></array>", "<key>k</key>"}},
      {"text outside", {"<array>text</array>"}},
      {"more than one", {"<true/><true/>", "<true/><array/>"}},
      {"<plist> is inside", {"<array><plist/></array>"}},
      {"no value", {"<!-- -->"}},
      {"line 3", {"<array></dict>", "<string>\x01</string>"}},
  };
  expectRefusals(cases, "<?xml version='1.0'?>\n<plist>\n", "</plist>");
  EXPECT_THAT(whyRefused("\n\n<?xml version='1.0'?><real>%1</real>"), AllOf(HasSubstr("\"%1\""), HasSubstr("line 3")));
  EXPECT_NE(whyRefused("<plist><true/></plist><plist><true/></plist>"), "");
  EXPECT_NE(whyRefused("<plist><true/></plist>{}"), "");
}

TEST(PropertyListXML, ReadsItsEncodings) {
  const QString body = u"<plist><string>Gr\u00fc\u00dfe \u4e3c</string></plist>"_s;
  const auto expected = PropertyListValue(u"Gr\u00fc\u00dfe \u4e3c"_s);
  for (const auto encoding : {QStringConverter::Utf8, QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
    for (const auto flag : {QStringConverter::Flag::Default, QStringConverter::Flag::WriteBom}) {
      QStringEncoder encoder(encoding, flag);
      EXPECT_EQ(parsed(QByteArray(encoder.encode(body))), expected);
      QStringEncoder declaring(encoding, flag);
      const QString name = encoding == QStringConverter::Utf8 ? u"utf-8"_s : u"UTF-16"_s;
      EXPECT_EQ(parsed(QByteArray(declaring.encode(u"<?xml version='1.0' encoding='%1'?>"_s.arg(name) + body))),
                expected);
    }
  }
  EXPECT_EQ(parsed("<?xml version=\"1.0\" encoding = \"ISO-8859-1\"?><string>\xfc</string>"),
            PropertyListValue(u"\u00fc"_s));
  EXPECT_EQ(parsed("<?xml version='1.0' encoding='windows-1252'?><string>\x80</string>"),
            PropertyListValue(u"\u20ac"_s));
  // No text in two bytes a character could be read this far.
  EXPECT_EQ(parsed("<?xml version='1.0' encoding='UTF-16'?><string>a</string>"), PropertyListValue(u"a"_s));
  EXPECT_THAT(whyRefused("<?xml version='1.0' encoding='klingon'?><string/>"), HasSubstr("\"klingon\""));
  EXPECT_THAT(whyRefused("<plist>\n<string>\xfc</string></plist>"), HasSubstr("line 2"));
}

TEST(PropertyListXML, RefusesMarkupThatIsDearToParse) {
  QByteArray bomb = "<!DOCTYPE plist [<!ENTITY a0 \"ha\">";
  for (int i = 1; i < 30; ++i) {
    const QByteArray name = QByteArray::number(i);
    const QByteArray before = "&a" + QByteArray::number(i - 1) + ";";
    bomb += "<!ENTITY a" + name + " \"" + before + before + "\">";
  }
  EXPECT_THAT(whyRefused(bomb + "]><string>&a29;</string>"), HasSubstr("document type"));
  EXPECT_THAT(whyRefused("<!DOCTYPE plist SYSTEM \"'[\" [\n<!ENTITY % x 'y'>]><true/>"), HasSubstr("document type"));
  QByteArray attributes = "<plist";
  for (int i = 0; i < 1000000; ++i) attributes += " a" + QByteArray::number(i) + "=\"\"";
  EXPECT_THAT(whyRefused("<!-- <![CDATA[ -->\n" + attributes + "><true/></plist>"),
              AllOf(HasSubstr("too long"), HasSubstr("line 2")));
  // Also where no other tag is near, and where a value hides its end; one of that length is none too many.
  const auto tagOf = [](qsizetype size) { return "<true a='>" + QByteArray(size - 13, 'x') + "'/>"; };
  EXPECT_TRUE(parsed(tagOf(1026)));
  EXPECT_THAT(whyRefused(tagOf(1027)), HasSubstr("too long"));
  EXPECT_THAT(whyRefused("<array><string>" + QByteArray(5000, '>') + "</string>" + tagOf(5000) + "</array>"),
              HasSubstr("too long"));
  // What looks like that inside of text is text.
  const QByteArray text = "<!DOCTYPE [ " + QByteArray(5000, '=') + '>';
  const QByteArray harmless[] = {"<string><![CDATA[" + text + "]]></string>", "<!--" + text + "--><true/>",
                                 "<?target " + text + " ?><true/>", "<!DOCTYPE plist SYSTEM '[>'><true/>"};
  for (const QByteArray& list : harmless) EXPECT_TRUE(parsed(list)) << list.toStdString();
}

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
      {"('it\"s', \"it's\")", Array{u"it\"s"_s, u"it's"_s}},
      {R"("\a\b\f\n\r\t\v\"\'\\\x")", u"\a\b\f\n\r\t\v\"'\\x"_s},
      {R"("\101\0\3778\7")", u"A\0\u00ff8\a"_s},
      {R"("\U00fc\Ud83d\UDE42\Ufcg")", u"\u00fc\U0001f642\u00fcg"_s},
      {"\"two\nlines\\\nthree\"", u"two\nlines\nthree"_s},
      {"/usr/bin/a-b_c.d:$e", u"/usr/bin/a-b_c.d:$e"_s},
      {"(http://a//b)", Array{u"http://a//b"_s}},
      {"// first\n/* { */ ( /**/ a /* ) */ , b // ,\n)", Array{u"a"_s, u"b"_s}},
      {"a = b;\n/* c */ \"d e\" = (f);", Dictionary{{u"a"_s, u"b"_s}, {u"d e"_s, Array{u"f"_s}}}},
      {"{ a; a = 2; }", Dictionary{{u"a"_s, u"2"_s}}},
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
  const QList<Refusals> cases = {
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
  expectRefusals(cases, "// one\n\n", "");
}

TEST(PropertyListOpenStep, RefusesToTakeManyTimesItsSize) {
  // Each of four characters, and each a collection of its own.
  const auto arrays = [](qsizetype count) { return '(' + QByteArray("(a),").repeated(count) + ')'; };
  EXPECT_TRUE(PropertyListSerialization::propertyListWithData(arrays(10'000)));
  EXPECT_THAT(whyRefused(arrays(400'000)), HasSubstr("too much memory"));
}

}  // namespace
}  // namespace quillo
