#include "qlcore/Hashtags.h"
#include "tests/support/TestHome.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

TEST(Hashtags, AreFoundInAnyScript) {
  const struct {
    QString text;
    QStringList tags;
  } cases[] = {
      {u""_s, {}},
      {u"no tag # here, nor here #"_s, {}},
      {u"#one and #two"_s, {u"one"_s, u"two"_s}},
      {u"(#one),#two.#three!"_s, {u"one"_s, u"two"_s, u"three"_s}},
      // Not inside a word.
      {u"a#b 1#c _#d -#e"_s, {u"e"_s}},
      {u"#a#b"_s, {u"a"_s}},
      {u"#a-#b"_s, {u"a-"_s, u"b"_s}},
      // At least one letter.
      {u"#1 #2-3 #_ #- #1st #_x"_s, {u"1st"_s, u"_x"_s}},
      {u"#self-made_2"_s, {u"self-made_2"_s}},
      // Each once, with the case of the first.
      {u"#Work #work #WORK #play #Work"_s, {u"Work"_s, u"play"_s}},
      {u"#Äpfel #äPFEL #Σας #σασ"_s, {u"Äpfel"_s, u"Σας"_s}},
      // Other scripts.
      {u"#日記 #Дневник #مذكرات #יומן #ημέρα"_s, {u"日記"_s, u"Дневник"_s, u"مذكرات"_s, u"יומן"_s, u"ημέρα"_s}},
      {u"、#語。"_s, {u"語"_s}},
      {u"#हिन्दी और"_s, {u"हिन्दी"_s}},
      {u"#cafe\u0301 x"_s, {u"cafe\u0301"_s}},
      {u"#٣ #٣ا"_s, {u"٣ا"_s}},
      // Outside the first plane: Deseret letters, a mathematical letter; an emoji is no letter.
      {u"#\U00010414\U0001043C x\U00010414#no \U0001F600#yes"_s, {u"\U00010414\U0001043C"_s, u"yes"_s}},
      // The keycap is no tag, nor are marks alone; other numbers are not digits.
      {u"#\uFE0F\u20E3abc #\u0301a"_s, {}},
      {u"#a½ ½#b"_s, {u"a"_s, u"b"_s}},
      // Halves of surrogate pairs are no letters.
      {u"#a"_s + QChar(0xD801) + u"b "_s + QChar(0xDC14) + u"#c"_s + QChar(0xD801), {u"a"_s, u"c"_s}},
  };
  for (const auto& [text, tags] : cases) EXPECT_EQ(hashtags(text), tags) << text.toStdString();
}

TEST(Hashtags, ComeAndGoAmongTheTagsWithTheText) {
  const struct {
    QStringList tags;
    QString before, after;
    QStringList expected;
  } cases[] = {
      {{}, u""_s, u"#one #two"_s, {u"one"_s, u"two"_s}},
      {{u"one"_s, u"two"_s}, u"#one #two"_s, u"#two"_s, {u"two"_s}},
      // Given by hand.
      {{u"hand"_s, u"one"_s}, u"#one"_s, u"none"_s, {u"hand"_s}},
      {{u"One"_s}, u"text"_s, u"#one"_s, {u"One"_s}},
      // Taken out by hand: it comes back where it is written anew.
      {{}, u"#one"_s, u"#one and more #two"_s, {u"two"_s}},
      {{}, u"#one"_s, u"nothing"_s, {}},
      {{}, u"nothing"_s, u"#one"_s, {u"one"_s}},
      {{u"Work"_s}, u"#Work"_s, u"#work"_s, {u"work"_s}},
  };
  for (const auto& [tags, before, after, expected] : cases)
    EXPECT_EQ(tagsAfterEditing(tags, before, after), expected) << before.toStdString() << after.toStdString();
}

TEST(Hashtags, OfAHugeTextTakeLinearTime) {
  const QString texts[] = {QString(2'000'000, u'#'), u"#"_s + QString(2'000'000, u'1'), u"#a"_s.repeated(1'000'000),
                           u"#1-"_s.repeated(700'000), u" #a"_s + QString(2'000'000, u'-')};
  QElapsedTimer timer;
  timer.start();
  for (const QString& text : texts) EXPECT_LE(hashtags(text).size(), 1);
  // Half a second in a sanitizer's build; minutes if a character were looked at once for each before it.
  EXPECT_LT(timer.elapsed(), 20'000);
}

}  // namespace quillo
