#include "app/Messages.h"
#include "foundation/FileContents.h"
#include "tests/support/TestHome.h"

#include <QFile>
#include <QSet>

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

const Bundle shipped(u":/quillo"_s, {});

TEST(Messages, TheQuotationsAreManyShortAndWellSet) {
  const QStringList messages = Messages(shipped).messagesArray();
  EXPECT_GE(messages.size(), 120);
  EXPECT_EQ(QSet<QString>(messages.begin(), messages.end()).size(), messages.size());
  const QString typographic = u"“”‘’—…"_s;
  for (const QString& message : messages) {
    SCOPED_TRACE(message.toStdString());
    EXPECT_LE(message.size(), 140);
    // “Text.” — Author
    const qsizetype end = message.indexOf(u"” — "_s);
    EXPECT_TRUE(message.startsWith(u'“') && end > 2 && message.size() > end + 6);
    EXPECT_FALSE(message.contains(u'"') || message.contains(u'\'') || message.contains(u"  "_s));
    for (const QChar c : message.left(end + 4)) EXPECT_TRUE((c >= u' ' && c <= u'~') || typographic.contains(c));
    for (const QChar c : message.mid(end + 4)) EXPECT_TRUE(c.isLetterOrNumber() || c == u' ' || c == u'.');
  }
}

TEST(Messages, EachQuotationHasItsSource) {
  QFile file(QStringLiteral(QUILLO_RESOURCES "/QuoteMessages.sources.txt"));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  QStringList sources;
  for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts))
    if (!line.startsWith(u'#')) sources << line;
  const QStringList messages = Messages(shipped).messagesArray();
  ASSERT_EQ(sources.size(), messages.size());
  for (qsizetype i = 0; i < messages.size(); ++i) {
    const QStringList parts = sources[i].split(u" | "_s);
    ASSERT_EQ(parts.size(), 3) << sources[i].toStdString();
    EXPECT_TRUE(messages[i].startsWith(u'“' + parts[0])) << sources[i].toStdString();
    EXPECT_TRUE(messages[i].endsWith(u"— "_s + parts[1])) << sources[i].toStdString();
  }
}

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
