#include "qlcore/index/JournalQuestion.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// A Wednesday.
const QDate today(2025, 3, 12);

QString described(const JournalQuestion& question) {
  QStringList parts;
  for (const auto& phrase : question.phrases)
    parts << (phrase.isExcluded ? u"-"_s : u""_s) + u'[' + phrase.text + u']' + (phrase.isPrefix ? u"*"_s : u""_s);
  for (const auto& tag : question.tags) parts << (tag.isExcluded ? u"-#"_s : u"#"_s) + tag.name;
  for (const auto& place : question.places) parts << (place.isExcluded ? u"-@"_s : u"@"_s) + place.name;
  if (question.firstDay) parts << u">="_s + question.firstDay->toString(Qt::ISODate);
  if (question.lastDay) parts << u"<="_s + question.lastDay->toString(Qt::ISODate);
  if (question.anniversary) parts << u"~"_s + question.anniversary->day.toString(Qt::ISODate);
  return parts.join(u' ');
}

}  // namespace

TEST(JournalQuestionTest, ReadsWordsPhrasesTagsAndPlaces) {
  const QPair<QString, QString> cases[] = {
      {u""_s, u""_s},
      {u"  sea  harb"_s, u"[sea] [harb]*"_s},
      {u"sea -rain"_s, u"[sea]* -[rain]"_s},
      {u"\"by the sea\" harb"_s, u"[by the sea] [harb]*"_s},
      {u"\"by the"_s, u"[by the]"_s},
      {u"“by the sea” -\"old man\""_s, u"[by the sea] -[old man]"_s},
      {u"one\"two three\""_s, u"[one]* [two three]"_s},
      {u"tag:work #Café -#play -tag:\"two words\" tag:#x"_s, u"#work #Café -#play -#two words #x"_s},
      {u"PLACE:oslo place:\"new york\" -place:rome"_s, u"@oslo @new york -@rome"_s},
      {u"don't"_s, u"[don't]"_s},
      {u"d"_s, u"[d]*"_s},
      {u"東京"_s, u"[東京]"_s},
      {u"http://example.org note:x"_s, u"[http://example.org] [note:x]"_s},
      {u"!! sea ..."_s, u"[sea]*"_s},
      {u"a\" OR NEAR(b) * ^c AND"_s, u"[a]* [ OR NEAR(b) * ^c AND]"_s},
  };
  for (const auto& [typed, expected] : cases) {
    QString problem;
    const auto question = JournalQuestion::parse(typed, today, &problem);
    EXPECT_EQ(question ? described(*question) : problem, expected) << typed.toStdString();
  }
}

TEST(JournalQuestionTest, ReadsDatesAsPeopleNameThem) {
  const QPair<QString, QString> cases[] = {
      {u"on:2025-03-10"_s, u">=2025-03-10 <=2025-03-10"_s},
      {u"on:2024-02"_s, u">=2024-02-01 <=2024-02-29"_s},
      {u"on:2024"_s, u">=2024-01-01 <=2024-12-31"_s},
      {u"since:2024-02 before:2024-05"_s, u">=2024-02-01 <=2024-04-30"_s},
      {u"since:2020 since:2024"_s, u">=2024-01-01"_s},
      {u"on:today"_s, u">=2025-03-12 <=2025-03-12"_s},
      {u"On:Yesterday"_s, u">=2025-03-11 <=2025-03-11"_s},
      {u"on:wednesday"_s, u">=2025-03-12 <=2025-03-12"_s},
      {u"on:last-wednesday"_s, u">=2025-03-05 <=2025-03-05"_s},
      {u"on:last_Tue"_s, u">=2025-03-11 <=2025-03-11"_s},
      {u"on:\"last tuesday\" sea"_s, u"[sea]* >=2025-03-11 <=2025-03-11"_s},
      {u"since:last tuesday sea"_s, u"[sea]* >=2025-03-11"_s},
      {u"since:3 weeks ago"_s, u">=2025-02-19"_s},
      {u"before:\"a month ago\""_s, u"<=2025-02-11"_s},
      {u"on:2-days-ago"_s, u">=2025-03-10 <=2025-03-10"_s},
      {u"on:last week"_s, u">=2025-03-03 <=2025-03-09"_s},
      {u"on:this-month"_s, u">=2025-03-01 <=2025-03-31"_s},
      {u"on:last-year"_s, u">=2024-01-01 <=2024-12-31"_s},
      {u"on:today last"_s, u"[last]* >=2025-03-12 <=2025-03-12"_s},
      {u"on:this-day"_s, u"~2025-03-12"_s},
      {u"on:this day sea"_s, u"[sea]* ~2025-03-12"_s},
  };
  for (const auto& [typed, expected] : cases) {
    QString problem;
    const auto question = JournalQuestion::parse(typed, today, &problem);
    EXPECT_EQ(question ? described(*question) : problem, expected) << typed.toStdString();
  }
}

TEST(JournalQuestionTest, SaysInOneSentenceWhatMakesNoSense) {
  const QPair<QString, QString> cases[] = {
      {u"on:soon"_s, u"\"soon\" is no date"_s},
      {u"on:2025-13"_s, u"\"2025-13\" is no date"_s},
      {u"on:2025-02-30"_s, u"is no date"_s},
      {u"since:99999999999 weeks ago"_s, u"is no date"_s},
      {u"since:9999999 years ago"_s, u"is no date"_s},
      {u"on:0000"_s, u"is no date"_s},
      {u"sea since:"_s, u"A date is missing after \"since:\""_s},
      {u"-on:today"_s, u"cannot be excluded"_s},
      {u"tag:"_s, u"The name of a tag is missing"_s},
      {u"place:!"_s, u"The name of a place is missing"_s},
      {u"since:2025 before:2024"_s, u"There is no day"_s},
      {u"..."_s, u"at least one letter or digit"_s},
      {u"- # \""_s, u"at least one letter or digit"_s},
      {QString(5000, u'a'), u"too long"_s},
      {u"a "_s.repeated(100), u"too many words"_s},
  };
  for (const auto& [typed, expected] : cases) {
    QString problem;
    EXPECT_FALSE(JournalQuestion::parse(typed, today, &problem)) << typed.toStdString();
    EXPECT_TRUE(problem.contains(expected)) << problem.toStdString();
    EXPECT_TRUE(problem.endsWith(u'.') && !problem.contains(u'\n')) << problem.toStdString();
  }
}

}  // namespace quillo
