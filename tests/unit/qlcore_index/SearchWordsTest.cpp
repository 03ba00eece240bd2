#include "qlcore/index/SearchWords.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

TEST(SearchWordsTest, PartsAndFoldsWhatPeopleWrite) {
  struct Case {
    QString text;
    QStringList words;
  };
  const Case cases[] = {
      {u""_s, {}},
      {u" -- !? \u0301 "_s, {}},
      {u"Don't STOP, co-op_2024"_s, {u"don"_s, u"t"_s, u"stop"_s, u"co"_s, u"op"_s, u"2024"_s}},
      {u"Café cafe\u0301 ÅNGSTRÖM Straße ŁÓDŹ Ærø İstanbul"_s,
       {u"cafe"_s, u"cafe"_s, u"angstrom"_s, u"strasse"_s, u"lodz"_s, u"aero"_s, u"istanbul"_s}},
      {u"Ёлка й ΆΛΦΑΣ άλφας"_s, {u"елка"_s, u"и"_s, u"αλφασ"_s, u"αλφασ"_s}},
      {u"Ｆｕｌｌ ﬁne ½ x²"_s, {u"full"_s, u"fine"_s, u"12"_s, u"x2"_s}},
      {u"今日iPhone買う"_s, {u"今"_s, u"日"_s, u"iphone"_s, u"買"_s, u"う"_s}},
      // The same kana and syllable, composed, in parts and narrow.
      {u"ガ カ\u3099 ｶﾞ コーヒー"_s, {u"ガ"_s, u"ガ"_s, u"ガ"_s, u"コ"_s, u"ー"_s, u"ヒ"_s, u"ー"_s}},
      {u"한국 \u1112\u1161\u11ab"_s, {u"한"_s, u"국"_s, u"한"_s}},
      {u"हिन्दी สวัสดี"_s, {u"हिन्दी"_s, u"ส"_s, u"วั"_s, u"ส"_s, u"ดี"_s}},
      {u"שָׁלוֹם مَرْحَبًا"_s, {u"שלום"_s, u"مرحبا"_s}},
      {u"party🎉🎉 𝔘𝔫𝔦 𠀋"_s, {u"party"_s, u"🎉"_s, u"🎉"_s, u"uni"_s, u"𠀋"_s}},
      {QString(QChar(0xD800)) + u"a"_s + QChar(0xE000), {u"a"_s}},
  };
  for (const Case& expected : cases) {
    QStringList words;
    qsizetype end = 0;
    SearchWords next(expected.text);
    while (next.next()) {
      words << next.folded().toString();
      EXPECT_GE(next.range().location, end);
      end = next.range().location + next.range().length;
    }
    EXPECT_EQ(words, expected.words) << expected.text.toStdString();
    EXPECT_LE(end, expected.text.size());
  }
  // A form of many letters is one word, whatever it stands for.
  SearchWords greeting(u"\uFDFA");
  EXPECT_TRUE(greeting.next());
  EXPECT_FALSE(greeting.folded().contains(u' '));
  EXPECT_FALSE(greeting.next());
  EXPECT_EQ(foldedName(u" New  YORK-Été "_s), u"new york-ete"_s);
}

}  // namespace quillo
