#include "app/QuilloctlTags.h"

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

TEST(QuilloctlTags, AreReadFromTheListAndFromNothingElse) {
  const struct {
    QByteArray answer;
    std::optional<QStringList> tags;
  } cases[] = {
      {R"([{"entries": 7, "tag": "work"}, {"entries": 1, "tag": "\u00fc"}])", QStringList{u"work"_s, u"\u00fc"_s}},
      {"[]", QStringList{}},
      {R"([{"tag": 5}, "work", {"entries": 3}, {"tag": ""}, [[]]])", QStringList{}},
      {R"({"tag": "work"})", std::nullopt},
      {R"([{"tag": "wo)", std::nullopt},
      {"Segmentation fault", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(QuilloctlTags::tagsOfAnswer(c.answer), c.tags) << c.answer.constData();
}

}  // namespace
}  // namespace quillo
