#include "app/logging/LogFileManager.h"
#include "app/logging/LoggingSetup.h"
#include "app/logging/RollingLogFile.h"
#include "foundation/Log.h"
#include "qlcore/QLLogFormatter.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSysInfo>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <pty.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>
#include <thread>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

// What appears on a terminal that is the standard error meanwhile. It has to fit into the terminal's buffer.
QStringList linesOnTerminal(const std::function<void()>& action) {
  int master = -1;
  int terminal = -1;
  if (::openpty(&master, &terminal, nullptr, nullptr, nullptr) != 0) return {};
  const int before = ::dup(STDERR_FILENO);
  ::dup2(terminal, STDERR_FILENO);
  action();
  ::dup2(before, STDERR_FILENO);
  ::close(before);
  // The kernel hands on what was written in pieces, and ends it once nobody has the terminal open.
  ::close(terminal);
  QByteArray shown;
  char piece[4096];
  for (ssize_t size = 0; (size = ::read(master, piece, sizeof piece)) > 0;) shown.append(piece, size);
  ::close(master);
  return QString::fromUtf8(shown).remove(u'\r').split(u'\n');
}

class LoggingSetupTest : public testing::Test {
 protected:
  ~LoggingSetupTest() override { closeLog(); }

  [[nodiscard]] QString directory() const { return m_home.path(u"Logs/Agent"_s); }
  void setUp(bool verbose = false, std::size_t queueLength = 2048) const {
    setUpLogging(QUrl::fromLocalFile(directory()), verbose, queueLength);
  }
  // The texts of all lines of the files, the oldest first; a line that is not in the layout fails the test.
  [[nodiscard]] QStringList texts() const {
    static const QRegularExpression layout(
        u"^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} [+-]\\d{4} (\\w+) +App \\[\\d+\\] (.*)$"_s);
    QStringList result;
    const QStringList paths = LogFileManager(directory()).sortedLogFilePaths();
    for (auto path = paths.rbegin(); path != paths.rend(); ++path) {
      QFile file(*path);
      EXPECT_TRUE(file.open(QIODevice::ReadOnly));
      QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
      EXPECT_EQ(lines.takeLast(), QString()) << "every line is ended";
      for (const QString& line : lines) {
        const auto match = layout.match(line);
        EXPECT_TRUE(match.hasMatch()) << line.toStdString();
        result << match.captured(2);
      }
    }
    return result;
  }

  TestHome m_home;
};

TEST_F(LoggingSetupTest, SessionBeginsWithItsThreeLines) {
  setUp();
  EXPECT_TRUE(flushLog());
  const QString path = LogFileManager(directory()).sortedLogFilePaths().value(0);
  EXPECT_EQ(texts(), (QStringList{u"**** NEW SESSION ****"_s, QLLogHeaderMessage(), u"Log file: "_s + path}));
  EXPECT_EQ(modeOf(path), 0600);
  EXPECT_EQ(modeOf(directory()), 0700);
  EXPECT_EQ(logDirectory(), directory());

  // The next session goes on in the same file.
  setUp();
  closeLog();
  EXPECT_EQ(texts().count(u"Log file: "_s + path), 2);
  EXPECT_EQ(logDirectory(), QString());
}

TEST_F(LoggingSetupTest, VerboseShowsEveryLevel) {
  const auto linesWritten = [this](bool verbose) {
    setUp(verbose);
    QLLogError(u"error"_s);
    QLLogWarn(u"warning"_s);
    QLLogInfo(u"100 %s %n {} \u00e9\ntwo"_s);
    QLLogDebug(u"debug"_s);
    QLLogVerbose(u"verbose"_s);
    closeLog();
    return texts();
  };
  const QStringList plain{u"error"_s, u"warning"_s, u"100 %s %n {} \u00e9\\ntwo"_s};
  EXPECT_EQ(linesWritten(false).mid(3), plain);
  EXPECT_EQ(linesWritten(true).mid(9), (plain + QStringList{u"debug"_s, u"verbose"_s}));
}

TEST_F(LoggingSetupTest, UnusableDirectoryLeavesTheTerminalButNothingGoesToAFile) {
  QFile inTheWay(m_home.path(u"Logs"_s));
  ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
  for (const QUrl& url : {QUrl::fromLocalFile(directory()), QUrl()}) {
    const QStringList lines = linesOnTerminal([&] {
      setUpLogging(url, /*verbose=*/false);
      closeLog();
    });
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines[0].endsWith(u"**** NEW SESSION ****"));
    EXPECT_TRUE(lines[2].endsWith(u"Log file: (null)"));
    testing::internal::CaptureStderr();
    setUpLogging(url, /*verbose=*/false);
    closeLog();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }
}

TEST_F(LoggingSetupTest, ThreadsLoseNothing) {
  constexpr int threadCount = 8;
  constexpr int lineCount = 500;
  setUp(/*verbose=*/false, threadCount * lineCount + 16);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < threadCount; ++thread) {
    threads.emplace_back([thread] {
      for (int line = 0; line < lineCount; ++line) QLLogInfo(u"%1 %2"_s.arg(thread).arg(line));
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(flushLog(std::chrono::seconds(60)));

  std::vector<int> next(threadCount, 0);
  for (const QString& text : texts().mid(3)) {
    const QStringList words = text.split(u' ');
    ASSERT_EQ(words.size(), 2) << text.toStdString();
    EXPECT_EQ(words[1].toInt(), next[static_cast<std::size_t>(words[0].toInt())]++) << "a thread's lines keep order";
  }
  for (const int count : next) EXPECT_EQ(count, lineCount);
}

TEST_F(LoggingSetupTest, FullQueueLosesTheOldestAndSaysHowMany) {
  setUp(/*verbose=*/false, /*queueLength=*/1);
  constexpr int lineCount = 5000;
  for (int line = 0; line < lineCount; ++line) QLLogInfo(u"line %1"_s.arg(line));
  closeLog();
  static const QRegularExpression note(u"^(\\d+) log lines were lost"_s);
  int lost = 0;
  QStringList written;
  for (const QString& text : texts()) {
    if (const auto match = note.match(text); match.hasMatch()) {
      lost += match.captured(1).toInt();
    } else {
      written << text;
    }
  }
  EXPECT_EQ(written.size() + lost, lineCount + 3);
  EXPECT_GT(lost, 0);
  EXPECT_TRUE(written.contains(u"line %1"_s.arg(lineCount - 1)));
}

TEST_F(LoggingSetupTest, RemovedLogFileIsMadeAgain) {
  setUp();
  ASSERT_TRUE(flushLog());
  ASSERT_TRUE(QDir(directory()).removeRecursively());
  QLLogInfo(u"afterwards"_s);
  EXPECT_TRUE(flushLog());
  EXPECT_EQ(texts(), QStringList{u"afterwards"_s});
}

TEST_F(LoggingSetupTest, ALinkInPlaceOfALogFileIsNotFollowed) {
  const LogFileManager files(directory());
  files.createDirectory();
  QFile outside(m_home.path(u"outside"_s));
  ASSERT_TRUE(outside.open(QIODevice::WriteOnly));
  ASSERT_TRUE(QFile::link(outside.fileName(), directory() + u"/quillo-agent-000007.log"_s));
  ASSERT_TRUE(QFile::link(m_home.path(u"nowhere"_s), directory() + u"/quillo-agent-000008.log"_s));
  setUp();
  EXPECT_TRUE(flushLog());
  EXPECT_EQ(QFileInfo(outside).size(), 0);
  EXPECT_FALSE(QFileInfo::exists(m_home.path(u"nowhere"_s)));
  EXPECT_EQ(modeOf(directory() + u"/quillo-agent-000009.log"_s), 0600);
}

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

TEST(QLLogHeaderMessage, TellsProgramAndMachineWithoutPrivateThings) {
  const QString header = QLLogHeaderMessage();
  EXPECT_TRUE(header.contains(QLatin1StringView(qVersion())));
  EXPECT_TRUE(header.contains(QSysInfo::currentCpuArchitecture()));
  EXPECT_FALSE(header.contains(u" /"_s)) << "a path";
  EXPECT_FALSE(header.contains(u'\n'));
  EXPECT_FALSE(header.contains(QSysInfo::machineHostName()));
}

class RollingLogFileTest : public testing::Test {
 protected:
  void make(const QString& name, qint64 size) const {
    QFile file(m_home.path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(size));
  }
  [[nodiscard]] QStringList names() const {
    QStringList result;
    for (const QString& path : m_manager.sortedLogFilePaths()) result << QFileInfo(path).fileName();
    return result;
  }

  TestHome m_home;
  LogFileManager m_manager{m_home.path()};
};

TEST_F(RollingLogFileTest, NewestComesFirstAndStrangersDoNotCount) {
  for (const auto& name : {u"quillo-agent-000009.log"_s, u"quillo-agent-1000000.log"_s, u"quillo-agent-999999.log"_s,
                           u"quillo-agent-.log"_s, u"quillo-agent-00000x.log"_s, u"quillo-agent-000000.log"_s,
                           u"quillo-agent-9999999999999999999999.log"_s, u"other.log"_s}) {
    make(name, 0);
  }
  EXPECT_EQ(names(),
            (QStringList{u"quillo-agent-1000000.log"_s, u"quillo-agent-999999.log"_s, u"quillo-agent-000009.log"_s}));
}

TEST_F(RollingLogFileTest, FullFileIsFollowedByANewOneAndTheOldestGo) {
  make(u"quillo-agent-000006.log"_s, LogFileManager::maximumFileSize);
  const std::string line = std::string(1023, 'x') + '\n';
  RollingLogFile file(m_manager);
  for (int count = 0; count < 6 * 1024 + 1; ++count) file.append(line);
  EXPECT_EQ(names(),
            (QStringList{u"quillo-agent-000013.log"_s, u"quillo-agent-000012.log"_s, u"quillo-agent-000011.log"_s,
                         u"quillo-agent-000010.log"_s, u"quillo-agent-000009.log"_s}));
  EXPECT_EQ(QFileInfo(m_home.path(names().value(0))).size(), 1024);
  EXPECT_EQ(QFileInfo(m_home.path(names().value(1))).size(), LogFileManager::maximumFileSize);
}

TEST_F(RollingLogFileTest, TwoWritersShareOneFile) {
  RollingLogFile first(m_manager);
  RollingLogFile second(m_manager);
  first.append("1\n");
  second.append("2\n");
  first.append("3\n");
  ASSERT_EQ(names().size(), 1);
  QFile file(m_home.path(names().first()));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), "1\n2\n3\n");
}

// A limit on file sizes stands in for the full disk: the write takes what fits and then fails.
TEST_F(RollingLogFileTest, TornLineIsEndedBeforeTheNext) {
  struct rlimit before {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handlerBefore = std::signal(SIGXFSZ, SIG_IGN);
  RollingLogFile log(m_manager);
  struct rlimit small = before;
  small.rlim_cur = 8;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  log.append("first\n");
  log.append("torn line\n");
  log.append("lost\n");
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, handlerBefore);
  log.append("last\n");
  QFile file(m_home.path(names().value(0)));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), "first\nto\nlast\n");
}

}  // namespace
