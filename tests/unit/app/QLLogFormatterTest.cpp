#include "qlcore/QLLogFormatter.h"
#include "tests/support/TestHome.h"

#include <QSysInfo>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

LogRecord record(const QString& text, LogFlag flag = LogFlag::Info, int context = logContextApp) {
  return {text, flag, context, QDateTime(QDate(2014, 3, 10), QTime(21, 0, 5, 7), QTimeZone(5400)), 4711};
}

TEST(QLLogFormatter, LaysOutOneLine) {
  // Known before any set-up: the program names its context while it is loaded.
  QLLogFormatter::registerName(u"Other"_s, 301);
  const auto formatter = QLLogFormatter::defaultFormatter();
  formatter->setLogLevel(logLevelAll);
  const struct {
    LogRecord record;
    QString line;
  } cases[] = {
      {record(u"Text"_s), u"2014-03-10 21:00:05.007 +0130 info    App [4711] Text"_s},
      {record(u""_s, LogFlag::Error), u"2014-03-10 21:00:05.007 +0130 error   App [4711] "_s},
      {record(u"%s %n \u00e9\U0001F600"_s, LogFlag::Warning, 301),
       u"2014-03-10 21:00:05.007 +0130 warning Other [4711] %s %n \u00e9\U0001F600"_s},
      {record(u"a\nb\r\nc\td"_s, LogFlag::Debug, 7),
       u"2014-03-10 21:00:05.007 +0130 debug   7 [4711] a\\nb\\r\\nc\td"_s},
      {record(u"\x1b[31m\u2028\u0085"_s, LogFlag::Verbose),
       u"2014-03-10 21:00:05.007 +0130 verbose App [4711] \\u001b[31m\\u2028\\u0085"_s},
  };
  for (const auto& [given, line] : cases) EXPECT_EQ(formatter->formatLogMessage(given), line);

  LogRecord western = record(u"Text"_s);
  western.time = QDateTime(QDate(2014, 3, 10), QTime(1, 2, 3), QTimeZone(-12600));
  EXPECT_EQ(formatter->formatLogMessage(western), u"2014-03-10 01:02:03.000 -0330 info    App [4711] Text"_s);
}

TEST(QLLogFormatter, ItsLevelDecidesWhatIsShown) {
  const auto formatter = QLLogFormatter::defaultFormatter();
  const auto shown = [&] {
    int bits = 0;
    for (const LogFlag flag : {LogFlag::Error, LogFlag::Warning, LogFlag::Info, LogFlag::Debug, LogFlag::Verbose}) {
      if (formatter->formatLogMessage(record(u"x"_s, flag))) bits |= static_cast<int>(flag);
    }
    return bits;
  };
  EXPECT_EQ(shown(), 7);
  for (const int level : {0, 1, 24, 31}) {
    formatter->setLogLevel(level);
    EXPECT_EQ(shown(), level);
  }
  EXPECT_EQ(QLLogFormatter::defaultFormatter()->logLevel(), 7) << "a formatter's level is its own";
}

TEST(QLLogHeaderMessage, TellsProgramAndMachineWithoutPrivateThings) {
  const QString header = QLLogHeaderMessage();
  EXPECT_TRUE(header.contains(QLatin1StringView(qVersion())));
  EXPECT_TRUE(header.contains(QSysInfo::currentCpuArchitecture()));
  EXPECT_FALSE(header.contains(u" /"_s)) << "a path";
  EXPECT_FALSE(header.contains(u'\n'));
  EXPECT_FALSE(header.contains(QSysInfo::machineHostName()));
}

}  // namespace
