#include "app/logging/RollingLogFile.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>
#include <string>

using namespace quillo;
using namespace Qt::StringLiterals;

namespace {

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
