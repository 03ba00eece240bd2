#include "qlcore/TextMerge.h"
#include "tests/support/TestHome.h"

#include <QRandomGenerator>
#include <QStringList>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

TEST(TextMerge, TakesTheChangesOfBoth) {
  const struct {
    const char* about;
    QString base, theirs, ours, merged;
    bool hasClash{false};
  } cases[] = {
      {"nothing", u""_s, u""_s, u""_s, u""_s},
      {"one side", u"a b"_s, u"a b"_s, u"a b c"_s, u"a b c"_s},
      {"the other", u"a b"_s, u"a"_s, u"a b"_s, u"a"_s},
      {"alike", u"a b"_s, u"a c"_s, u"a c"_s, u"a c"_s},
      {"two paragraphs", u"one\ntwo\nthree\n"_s, u"one!\ntwo\nthree\n"_s, u"one\ntwo\nthree!\n"_s,
       u"one!\ntwo\nthree!\n"_s},
      {"neighbours", u"one\ntwo"_s, u"one!\ntwo"_s, u"one\ntwo!"_s, u"one!\ntwo!"_s},
      {"one paragraph", u"The river was cold."_s, u"The old river was cold."_s, u"The river was cold today."_s,
       u"The old river was cold today."_s},
      {"both append", u"Morning."_s, u"Morning.\nNoon."_s, u"Morning.\nNight."_s, u"Morning.\nNoon.\nNight."_s},
      {"both begin", u""_s, u"theirs"_s, u"ours"_s, u"theirs ours"_s},
      {"taken out here, gone on there", u"one\ntwo\nthree"_s, u"one\nthree"_s, u"one\ntwo\nthree\nfour"_s,
       u"one\nthree\nfour"_s},
      {"clash", u"by the sea\nend"_s, u"by the river\nend"_s, u"by the lake\nend"_s,
       u"by the river\nby the lake\nend"_s, true},
      {"clash at the end", u"by the sea"_s, u"by the river"_s, u"by the lake"_s, u"by the river\nby the lake"_s, true},
      {"deleted here, changed there", u"keep\nthe sea\n"_s, u"keep\n"_s, u"keep\nthe lake\n"_s, u"keep\nthe lake\n"_s,
       true},
  };
  for (const auto& [about, base, theirs, ours, merged, hasClash] : cases)
    EXPECT_EQ(mergeTexts(base, theirs, ours), (MergedText{merged, hasClash}))
        << about << ": " << mergeTexts(base, theirs, ours).text.toStdString();
}

// Words that only one of the two put in are there, once each, whatever else both did.
TEST(TextMerge, LosesNoWordOfEither) {
  QRandomGenerator random(7);
  int fresh = 0;
  const auto edited = [&](QStringList words, QStringList& added) {
    for (int change = random.bounded(6); change > 0; --change) {
      const auto at = random.bounded(words.size() + 1);
      if (random.bounded(3) > 0 || at == words.size()) {
        added << u"w%1"_s.arg(++fresh);
        words.insert(at, added.last());
      } else {
        added.removeAll(words.takeAt(at));
      }
    }
    return words;
  };
  const auto text = [&](const QStringList& words) {
    QString joined;
    for (const QString& word : words) joined += word + (word.endsWith(u'3') ? u'\n' : u' ');
    return joined;
  };
  int clashes = 0;
  for (int round = 0; round < 3000; ++round) {
    QStringList base;
    for (int i = random.bounded(20); i > 0; --i) base << u"b%1"_s.arg(random.bounded(12));
    QStringList theirs;
    QStringList ours;
    const QString a = text(edited(base, theirs));
    const QString b = text(edited(base, ours));
    const MergedText merged = mergeTexts(text(base), a, b);
    clashes += merged.hasClash ? 1 : 0;
    const QStringList words = merged.text.simplified().split(u' ');
    for (const QString& word : theirs + ours)
      ASSERT_EQ(words.count(word), 1) << word.toStdString() << "\n"
                                      << text(base).toStdString() << "\n"
                                      << a.toStdString() << "\n"
                                      << b.toStdString() << "\n"
                                      << merged.text.toStdString();
  }
  EXPECT_GT(clashes, 100);
}

TEST(TextMerge, IsBoundedForTextsWithoutAnythingInCommon) {
  QRandomGenerator random(3);
  QString texts[3];
  for (QString& text : texts)
    for (int i = 0; i < 200'000; ++i) text += u"%1 "_s.arg(random.bounded(1'000'000));
  const MergedText merged = mergeTexts(texts[0], texts[1], texts[2]);
  EXPECT_TRUE(merged.hasClash);
  EXPECT_EQ(merged.text, texts[1] + u'\n' + texts[2]);
}

TEST(TextMerge, UnitesVersionsOfUnknownOrigin) {
  struct Case {
    const char* about;
    QString first, second, united;
    bool hasClash;
  };
  const QList<Case> cases{
      {"the same", u"a b\n"_s, u"a b\n"_s, u"a b\n"_s, false},
      {"nothing and something", u""_s, u"a b"_s, u"a b"_s, false},
      {"one went on", u"Sea.\n"_s, u"Sea.\nSand.\n"_s, u"Sea.\nSand.\n"_s, false},
      {"one has more in a paragraph", u"At the sea.\nEnd\n"_s, u"At the wide sea.\nEnd\n"_s,
       u"At the wide sea.\nEnd\n"_s, false},
      {"paragraphs in other places", u"One.\nA.\nB.\n"_s, u"A.\nB.\nTwo.\n"_s, u"One.\nA.\nB.\nTwo.\n"_s, false},
      {"other words", u"A red house\nEnd\n"_s, u"A blue house\nEnd\n"_s, u"A red house\nA blue house\nEnd\n"_s, true},
      {"nothing in common", u"One"_s, u"Two"_s, u"One\nTwo"_s, true},
  };
  for (const auto& [about, first, second, united, hasClash] : cases)
    EXPECT_EQ(unitedTexts(first, second), (MergedText{united, hasClash}))
        << about << ": " << unitedTexts(first, second).text.toStdString();
}

// All words of each, in its order.
TEST(TextMerge, UnitedTextsHaveAllWordsOfBoth) {
  QRandomGenerator random(23);
  const auto text = [&random] {
    QString words;
    for (int i = random.bounded(30); i > 0; --i)
      words += u"w%1"_s.arg(random.bounded(8)) + (random.bounded(4) == 0 ? u'\n' : u' ');
    return words;
  };
  const auto isIn = [](const QString& part, const QString& whole) {
    const QStringList words = whole.split(u' ', Qt::SkipEmptyParts);
    qsizetype at = 0;
    for (const QString& word : part.split(u' ', Qt::SkipEmptyParts)) {
      at = words.indexOf(word, at) + 1;
      if (at == 0) return false;
    }
    return true;
  };
  for (int round = 0; round < 3000; ++round) {
    const QString first = text();
    const QString second = text();
    const QString united = unitedTexts(first, second).text.replace(u'\n', u' ');
    for (QString one : {first, second})
      ASSERT_TRUE(isIn(one.replace(u'\n', u' '), united)) << first.toStdString() << "\n--\n"
                                                          << second.toStdString() << "\n--\n"
                                                          << united.toStdString();
  }
}

}  // namespace quillo
