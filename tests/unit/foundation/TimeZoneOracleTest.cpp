#include "foundation/TimeZone.h"

#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <sstream>

namespace quillo {

using namespace Qt::StringLiterals;

// Another reader of the same zone files, with the same rule for readings in gaps and in repeated hours.
TEST(TimeZone, AgreesWithAnotherReaderOfTheZoneFiles) {
  const QString python = QStandardPaths::findExecutable(u"python3"_s);
  if (python.isEmpty()) GTEST_SKIP() << "no python3";
  QProcess oracle;
  oracle.start(python, {QStringLiteral(QUILLO_TEST_DATA "/calendar_oracle.py")});
  ASSERT_TRUE(oracle.waitForFinished(60'000));
  ASSERT_EQ(oracle.exitCode(), 0) << oracle.readAllStandardError().toStdString();

  std::istringstream lines(oracle.readAllStandardOutput().toStdString());
  std::string kind, name;
  qint64 given = 0, expected = 0;
  int checked = 0;
  int wrong = 0;
  while (lines >> kind >> name >> given >> expected) {
    const auto zone = TimeZone::timeZoneWithName(QString::fromStdString(name));
    ASSERT_TRUE(zone) << name;
    const qint64 answer = kind == "offset" ? zone->secondsFromUTC(given) : zone->instantOfReading(given);
    ++checked;
    if (answer == expected) continue;
    ADD_FAILURE() << kind << ' ' << name << ' ' << given << ": " << answer << ", expected " << expected;
    if (++wrong > 20) break;
  }
  EXPECT_GT(checked, 20'000);
}

}  // namespace quillo
