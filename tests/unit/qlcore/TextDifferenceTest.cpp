#include "qlcore/TextDifference.h"

#include <QRandomGenerator>
#include <QStringList>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

QStringList partsOf(const QString& text, const QList<TextRange>& ranges) {
  QStringList parts;
  for (const TextRange& range : ranges) parts << text.sliced(range.location, range.length);
  return parts;
}

QString without(const QString& text, const QList<TextRange>& ranges) {
  QString rest = text;
  for (auto range = ranges.crbegin(); range != ranges.crend(); ++range) rest.remove(range->location, range->length);
  return rest.remove(u' ');
}

}  // namespace

TEST(TextDifferenceTest, FindsTheWordsThatOnlyOneHas) {
  struct Case {
    QString first, second;
    QStringList inFirst, inSecond;
  };
  const QList<Case> cases{{u""_s, u""_s, {}, {}},
                          {u"the same"_s, u"the same"_s, {}, {}},
                          {u""_s, u"all new"_s, {}, {u"all new"_s}},
                          {u"tea and cake"_s, u"coffee and cake"_s, {u"tea"_s}, {u"coffee"_s}},
                          {u"one\ntwo\nthree"_s, u"one\nthree"_s, {u"two\n"_s}, {}},
                          {u"late again, alone"_s, u"very early, alone"_s, {u"late again"_s}, {u"very early"_s}},
                          {u"a\u0308rger 😀"_s, u"a\u0308rger 😁"_s, {u"😀"_s}, {u"😁"_s}},
                          {u"first\n\nlast a"_s, u"fourth\n\nlast b"_s, {u"first"_s, u"a"_s}, {u"fourth"_s, u"b"_s}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.first.toStdString());
    const auto found = TextDifference::differentWords(c.first, c.second);
    EXPECT_EQ(partsOf(c.first, found.first), c.inFirst);
    EXPECT_EQ(partsOf(c.second, found.second), c.inSecond);
  }
}

// Whatever the texts are, ranges are inside of them and apart, and what is not marked is the same in both.
TEST(TextDifferenceTest, WhatIsNotMarkedIsTheSame) {
  QRandomGenerator random(7);
  const QStringList words{u"a"_s, u"b"_s, u" "_s, u"\n"_s, u"."_s, u"😀"_s};
  const auto text = [&] {
    QString made;
    for (int i = random.bounded(40); i > 0; --i) made += words[random.bounded(words.size())];
    return made;
  };
  for (int turn = 0; turn < 2000; ++turn) {
    const QString first = text();
    const QString second = text();
    const auto found = TextDifference::differentWords(first, second);
    for (const auto& [of, ranges] : {std::pair(first, found.first), std::pair(second, found.second)}) {
      qsizetype end = -1;
      for (const TextRange& range : ranges) {
        EXPECT_GT(range.location, end);
        EXPECT_GT(range.length, 0);
        end = range.end();
      }
      EXPECT_LE(end, of.size());
    }
    EXPECT_EQ(without(first, found.first), without(second, found.second));
  }
}

}  // namespace quillo
