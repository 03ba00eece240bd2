#include "foundation/StringMap.h"

#include <QMap>

#include <gtest/gtest.h>

#include <random>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

using Map = StringMap<int>;

void expectSame(const Map& map, const QMap<QString, int>& model) {
  EXPECT_EQ(map.keys(), model.keys());
  EXPECT_TRUE(std::equal(map.begin(), map.end(), model.begin(), model.end()));
  EXPECT_EQ(map.size(), model.size());
}

// Whatever is done to both, it holds what Qt's map holds, in the same order; and copies made before stay as they were.
TEST(StringMap, HoldsWhatAMapHolds) {
  std::mt19937 random(1);
  Map map;
  QMap<QString, int> model;
  const auto key = [&random] {
    // Of one to three characters, of which some are beyond those of one unit, and some are the beginning of others.
    QString text;
    for (auto length = random() % 3 + 1; length > 0; --length)
      text += QStringList{u"a"_s, u"Z"_s, u"\u00fc"_s, u"\U0001f642"_s, u"\uff5e"_s}[random() % 5];
    return text;
  };
  for (int round = 0; round < 2000; ++round) {
    const Map before = map;
    const QMap<QString, int> modelBefore = model;
    const QString one = key();
    switch (random() % 6) {
      case 0:
        map.insert(one, round);
        model.insert(one, round);
        break;
      case 1:
        map[one] += round;
        model[one] += round;
        break;
      case 2:
        EXPECT_EQ(map.remove(one), model.remove(one) > 0);
        break;
      case 3: {
        const auto isGone = [round](const QString& each, int value) { return (each.size() + value) % 7 == round % 7; };
        EXPECT_EQ(map.removeIf(isGone), model.removeIf([&](std::pair<const QString&, int&> item) {
          return isGone(item.first, item.second);
        }));
        break;
      }
      case 4: {
        const Map other{{one, 1}, {key(), 2}, {key(), 3}};
        map.insert(other);
        for (auto it = other.begin(); it != other.end(); ++it) model.insert(it.key(), it.value());
        break;
      }
      default: {
        Map::Entries entries;
        for (auto it = model.keyValueBegin(); it != model.keyValueEnd(); ++it) entries.append({it->first, it->second});
        std::shuffle(entries.begin(), entries.end(), random);
        entries.prepend({one, -1});
        if (!model.contains(one)) model.insert(one, -1);
        map = Map::fromEntries(entries);
        break;
      }
    }
    expectSame(map, model);
    expectSame(before, modelBefore);
    EXPECT_EQ(map == before, model == modelBefore);
    EXPECT_EQ(map.contains(one), model.contains(one));
    EXPECT_EQ(map.value(one, -7), model.value(one, -7));
    EXPECT_EQ(map.find(one) == map.end(), model.find(one) == model.end());
  }
}

TEST(StringMap, OfEqualKeysTheLastCounts) {
  EXPECT_EQ((Map{{u"b"_s, 1}, {u"a"_s, 2}, {u"b"_s, 3}, {u"a"_s, 4}, {u"b"_s, 5}}), (Map{{u"a"_s, 4}, {u"b"_s, 5}}));
}

}  // namespace
}  // namespace quillo
