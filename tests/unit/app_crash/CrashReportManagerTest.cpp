#include "app/crash/CrashReportManager.h"
#include "app/logging/LogFileManager.h"
#include "foundation/FileContents.h"
#include "tests/support/TestHome.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

#include <signal.h>

#include <ostream>
#include <string_view>

using namespace quillo;
using namespace Qt::StringLiterals;
using namespace std::string_view_literals;

namespace {

enum class Sanitizer { None, Address, Thread };

#if defined(__SANITIZE_ADDRESS__)
constexpr Sanitizer sanitizer = Sanitizer::Address;
#elif defined(__SANITIZE_THREAD__)
constexpr Sanitizer sanitizer = Sanitizer::Thread;
#else
constexpr Sanitizer sanitizer = Sanitizer::None;
#endif

// The thread sanitizer lets a handler allocate nothing: only an exception, which is no signal yet, has its whole
// report.
bool sanitizerTakes(int signal, bool isException) {
  if (isException || sanitizer == Sanitizer::None) return false;
  return sanitizer == Sanitizer::Thread || signal != SIGFPE;
}

QString contentOf(const QString& path) {
  return QString::fromUtf8(contentsOfFile(path).value_or(""));
}

class CrashTest : public testing::Test {
 protected:
  // The signal that ended the program, or 0; -1 where it had to be ended.
  int run(const QString& manner) {
    QProcess process;
    process.start(QStringLiteral(QUILLO_CRASHER), {m_home.path(), manner});
    if (!process.waitForFinished(60'000)) return -1;
    m_output = process.readAllStandardOutput();
    return process.exitStatus() == QProcess::CrashExit ? process.exitCode() : 0;
  }

  [[nodiscard]] QDir reports() const { return QDir(m_home.path(u"Agent/CrashReports"_s)); }
  [[nodiscard]] QStringList names(const QString& pattern) const {
    return reports().entryList({pattern}, QDir::Files, QDir::Name);
  }
  [[nodiscard]] QString onlyReport() const {
    const QStringList found = names(u"*.crash"_s);
    return found.size() == 1 ? contentOf(reports().filePath(found[0])) : QString();
  }
  [[nodiscard]] QString log() const {
    return contentOf(LogFileManager(m_home.path(u"Agent"_s)).sortedLogFilePaths().value(0));
  }

  TestHome m_home;
  QByteArray m_output;
};

struct Crash {
  const char* manner;
  int signal;
  QString cause;
  QStringList reported;
  bool isComplete{true};  // report and log
};

void PrintTo(const Crash& crash, std::ostream* stream) {
  *stream << crash.manner;
}

class CrashReportTest : public CrashTest, public testing::WithParamInterface<Crash> {};

TEST_P(CrashReportTest, LeavesReportAndLogAndDiesOfItsSignal) {
  const Crash& crash = GetParam();
  if (sanitizerTakes(crash.signal, crash.manner == "exception"sv)) GTEST_SKIP() << "the sanitizer handles this signal";
  EXPECT_EQ(run(QString::fromLatin1(crash.manner)), crash.signal);
  const QString report = onlyReport();
  const QStringList always{u"Application: 0123456789abcdef"_s, u"Company: A Company"_s, u" 1.2.3 (Qt "_s,
                           u"Cause: "_s + crash.cause, crash.isComplete ? u"End of report"_s : u"Raw stack:"_s};
  for (const QString& part : always + crash.reported)
    EXPECT_TRUE(report.contains(part)) << part.toStdString() << report.toStdString();
  EXPECT_EQ(modeOf(reports().filePath(names(u"*.crash"_s).value(0))), 0600);
  EXPECT_TRUE(!crash.isComplete || log().endsWith(u"the last line\n"));
}

const QString exceptionCause = u"uncaught exception std::runtime_error: the text of the exception"_s;

INSTANTIATE_TEST_SUITE_P(
    Manners, CrashReportTest,
    testing::Values(Crash{"segfault", SIGSEGV, u"SIGSEGV"_s, {u"Address: 0x0\n"_s, u"crashBySegfault"_s}},
                    Crash{"abort", SIGABRT, u"SIGABRT"_s, {u"crashByAbort"_s, u"crasher.cpp:"_s}},
                    Crash{"arithmetic", SIGFPE, u"SIGFPE"_s, {u"crashByArithmetic"_s}},
                    Crash{"exception", SIGABRT, exceptionCause, {u"crashByException"_s}},
                    Crash{"overflow", SIGSEGV, u"SIGSEGV"_s, {u"crashByOverflow"_s}},
                    Crash{"logger", SIGSEGV, u"SIGSEGV"_s, {u"LogQueue"_s}},
                    Crash{"twice", SIGABRT, u"SIGABRT"_s, {}, false}, Crash{"hang", SIGABRT, u"SIGABRT"_s, {}, false}),
    [](const auto& parameter) { return std::string(parameter.param.manner); });

TEST_F(CrashTest, NextStartLogsReportOnceMarksItAndCallsDelegate) {
  ASSERT_EQ(run(u"exception"_s), SIGABRT);
  EXPECT_EQ(m_output, "window\n") << "called once although started twice";
  ASSERT_EQ(names(u"*.crash"_s).size(), 1);

  EXPECT_EQ(run(u"quit"_s), 0);
  EXPECT_EQ(m_output, "window\n");
  EXPECT_EQ(names(u"*.crash"_s).size(), 0);
  EXPECT_EQ(names(u"*.crash.handled"_s).size(), 1);
  EXPECT_EQ(log().count(u"Crash report pending: "), 1);

  EXPECT_EQ(run(u"quit"_s), 0);
  EXPECT_EQ(m_output, "window\n");
  EXPECT_EQ(log().count(u"Crash report pending: "), 1);
}

TEST_F(CrashTest, KeepsTheNewestHandledReports) {
  ASSERT_TRUE(QDir().mkpath(reports().path()));
  const QDateTime start(QDate(2014, 3, 10), QTime(21, 0), Qt::UTC);
  for (int index = 0; index < 14; ++index) {
    QFile file(reports().filePath(u"report-%1.crash"_s.arg(index, 2, 10, QChar(u'0'))));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.setFileTime(start.addDays(index), QFileDevice::FileModificationTime));
  }
  EXPECT_EQ(run(u"quit"_s), 0);
  const QStringList kept = names(u"*"_s);
  ASSERT_EQ(kept.size(), CrashReportManager::maximumNumberOfHandledReports);
  EXPECT_EQ(kept.first(), u"report-04.crash.handled"_s);
}

TEST_F(CrashTest, UnusableDirectoryStillCallsDelegate) {
  QFile inTheWay(m_home.path(u"Agent"_s));
  ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
  EXPECT_EQ(run(u"quit"_s), 0);
  EXPECT_EQ(m_output, "window\n");
}

}  // namespace
