#include "app/Messages.h"
#include "foundation/FileContents.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

TEST(Messages, TheNextOneIsTheRandomNumbersRemainder) {
  TestHome home;
  const QString path = home.path(u"QuoteMessages.plist"_s);
  const Bundle bundle(home.path(), {});
  EXPECT_EQ(Messages(bundle).messagesArray(), QStringList{});
  ASSERT_TRUE(writeFileInPlace(path, "{a = b;}"));
  EXPECT_EQ(Messages(bundle).messagesArray(), QStringList{});

  ASSERT_TRUE(writeFileInPlace(path, "(zero, one, two)"));
  quint32 number = 0;
  Messages messages(bundle, [&number] { return number; });
  EXPECT_TRUE(messages.currentMessage().isNull());
  const struct {
    quint32 number;
    QString message;
  } rows[] = {{0, u"zero"_s}, {2, u"two"_s}, {3, u"zero"_s}, {4294967295U, u"zero"_s}, {4294967294U, u"two"_s}};
  for (const auto& row : rows) {
    number = row.number;
    EXPECT_EQ(messages.nextMessage(), row.message) << row.number;
    EXPECT_EQ(messages.currentMessage(), row.message);
  }
  ASSERT_TRUE(writeFileInPlace(path, "(only)"));
  messages.resetMessagesArray();
  EXPECT_EQ(messages.nextMessage(), u"only"_s);
  EXPECT_EQ(Messages(bundle).nextMessage(), u"only"_s);
}

}  // namespace
}  // namespace quillo
