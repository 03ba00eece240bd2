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

}  // namespace quillo
