#include "PropertyListParsing.h"

#include <QStringEncoder>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using testing::AllOf;
using testing::HasSubstr;

TEST(PropertyListXML, ReadsEveryKindOfElement) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double notANumber = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char* text;
    PropertyListValue value;
  } cases[] = {
      {"<string>a<!-- b -->c<![CDATA[<&>]]>&lt;&amp;&gt;&quot;&apos;&#65;&#x1F642;</string>",
       u"ac<&><&>\"'A\U0001f642"_s},
      {"<string/>", u""_s},
      {"<string> two\r\nlines </string>", u" two\nlines "_s},
      {"<integer> 12 </integer>", 12},
      {"<integer>+7</integer>", 7},
      {"<integer>0x1F</integer>", 31},
      {"<integer>-0X10</integer>", -16},
      {"<integer>-9223372036854775808</integer>", std::numeric_limits<qint64>::min()},
      {"<integer>18446744073709551615</integer>", std::numeric_limits<quint64>::max()},
      {"<integer>0xffffffffffffffff</integer>", std::numeric_limits<quint64>::max()},
      {"<real>1</real>", 1.0},
      {"<real>-.5E-1</real>", -0.05},
      {"<real>-0.1e310</real>", -infinity},
      {"<real>100e-999</real>", 0.0},
      {"<real>-0</real>", -0.0},
      {"<real>nan</real>", notANumber},
      {"<array><real>1e999</real><real>1e99999999999999999999</real></array>", PropertyListArray{infinity, infinity}},
      {"<array><real>inf</real><real>Infinity</real><real>+infinity</real></array>",
       PropertyListArray{infinity, infinity, infinity}},
      {"<real>-infinity</real>", -infinity},
      {"<date>2001-01-01T00:00:01Z</date>", Date(1)},
      {"<date>2001-01-01T00:00:00.5Z</date>", Date(0.5)},
      {"<date>0000-12-30T00:00:00Z</date>", Date(-63114076800.0)},
      {"<data>\n\tAAEC\n\tAw==\n</data>", QByteArray::fromHex("00010203")},
      {"<data/>", QByteArray()},
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
  const struct {
    const char* why;
    QByteArrayList texts;
  } cases[] = {
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
  for (const auto& [why, texts] : cases)
    for (const QByteArray& text : texts)
      EXPECT_THAT(whyRefused("<?xml version='1.0'?>\n<plist>\n" + text + "</plist>"),
                  AllOf(HasSubstr(why), HasSubstr("line 3")))
          << text.toStdString();
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
  // What looks like that inside of text is text.
  const QByteArray text = "<!DOCTYPE [ " + QByteArray(5000, '=') + '>';
  const QByteArray harmless[] = {"<string><![CDATA[" + text + "]]></string>", "<!--" + text + "--><true/>",
                                 "<?target " + text + " ?><true/>", "<!DOCTYPE plist SYSTEM '[>'><true/>"};
  for (const QByteArray& list : harmless) EXPECT_TRUE(parsed(list)) << list.toStdString();
}

}  // namespace
}  // namespace quillo
