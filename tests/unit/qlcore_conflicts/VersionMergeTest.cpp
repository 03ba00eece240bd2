#include "qlcore/EntryFields.h"
#include "qlcore/conflicts/VersionMerge.h"

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

TEST(VersionMerge, HasTheChangesOfBoth) {
  using Fields = PropertyListDictionary;
  const PropertyListArray a{u"a"_s};
  const PropertyListArray ab{u"a"_s, u"b"_s};
  const PropertyListArray ac{u"a"_s, u"c"_s};
  const PropertyListArray abc{u"a"_s, u"b"_s, u"c"_s};
  struct Case {
    const char* about;
    Fields base, ours, theirs, merged;
  };
  const QList<Case> cases{
      {"nothing", {}, {}, {}, {}},
      {"ours", {{u"text"_s, u"x"_s}}, {{u"text"_s, u"x y"_s}}, {{u"text"_s, u"x"_s}}, {{u"text"_s, u"x y"_s}}},
      {"theirs", {{u"text"_s, u"x"_s}}, {{u"text"_s, u"x"_s}}, {{u"text"_s, u"x y"_s}}, {{u"text"_s, u"x y"_s}}},
      {"both",
       {{u"text"_s, u"x y"_s}},
       {{u"text"_s, u"a x y"_s}},
       {{u"text"_s, u"x y b"_s}},
       {{u"text"_s, u"a x y b"_s}}},
      {"what one took out",
       {{u"text"_s, u"x y z"_s}},
       {{u"text"_s, u"x z"_s}},
       {{u"text"_s, u"x y z w"_s}},
       {{u"text"_s, u"x z w"_s}}},
      {"a clash",
       {{u"text"_s, u"x red"_s}},
       {{u"text"_s, u"x blue"_s}},
       {{u"text"_s, u"x green"_s}},
       {{u"text"_s, u"x blue\nx green"_s}}},
      {"nothing before", {}, {{u"text"_s, u"x"_s}}, {{u"text"_s, u"y"_s}}, {{u"text"_s, u"x\ny"_s}}},
      {"tags of both", {{u"tags"_s, a}}, {{u"tags"_s, ab}}, {{u"tags"_s, ac}}, {{u"tags"_s, abc}}},
      {"tags taken out", {{u"tags"_s, ab}}, {{u"tags"_s, a}}, {{u"tags"_s, ab}}, {{u"tags"_s, a}}},
      {"a field taken out", {{u"weather"_s, 1}}, {}, {{u"weather"_s, 1}}, {}},
      {"a field that both changed", {{u"mood"_s, 1}}, {{u"mood"_s, 2}}, {{u"mood"_s, 3}}, {{u"mood"_s, 2}}},
      {"the later save",
       {{u"modificationDate"_s, Date(1)}},
       {{u"modificationDate"_s, Date(2)}},
       {{u"modificationDate"_s, Date(3)}},
       {{u"modificationDate"_s, Date(3)}}},
  };
  for (const auto& [about, base, ours, theirs, merged] : cases)
    EXPECT_EQ(VersionMerge::ofThree(base, ours, theirs), merged) << about;
}

}  // namespace quillo
