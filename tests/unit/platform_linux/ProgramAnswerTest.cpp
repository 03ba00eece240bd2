#include "platform/linux/ProgramAnswer.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TestHome.h"

#include <QFile>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

const ProgramAnswer::Limits limits{.bytes = 1000, .time = 10s};

TEST(ProgramAnswer, IsAllThatAProgramPrintedOrAReason) {
  const struct {
    QString program, script;
    ProgramAnswer::Limits limits;
    std::optional<QByteArray> output;
    QString reason;
  } cases[] = {
      {u"/bin/sh"_s, u"printf 'one '; printf two; echo three >&2"_s, limits, "one two", {}},
      {u"/bin/sh"_s, u"cat"_s, limits, "", {}},  // there is no input to wait for
      {u"/bin/sh"_s, u"echo text; exit 3"_s, limits, std::nullopt, u"/bin/sh: it failed (3)"_s},
      {u"/bin/sh"_s, u"kill -SEGV $$"_s, limits, std::nullopt, u"/bin/sh: it failed (11)"_s},
      {u"/bin/sh"_s, u"yes"_s, limits, std::nullopt, u"/bin/sh: it answers without an end"_s},
      {u"/bin/sh"_s, u"sleep 60"_s, {1000, 50ms}, std::nullopt, u"/bin/sh: it took longer than 0.05 seconds"_s},
      {u"/nonexistent/program"_s, {}, limits, std::nullopt, u"/nonexistent/program: it could not be started"_s},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.script.toStdString());
    int answers = 0;
    const ProgramAnswer answer(c.program, {u"-c"_s, c.script}, c.limits, [&](const auto& output, const auto& reason) {
      ++answers;
      EXPECT_EQ(output, c.output);
      EXPECT_EQ(reason, c.reason);
    });
    EXPECT_EQ(answers, 0);
    EXPECT_TRUE(runUntil([&] { return answers > 0; }));
    handlePendingEvents();
    EXPECT_EQ(answers, 1);
  }
}

TEST(ProgramAnswer, TheProgramEndsWithWhoeverAsked) {
  const TestHome home;
  QFile started(home.path(u"pid"_s));
  auto answer = std::make_unique<ProgramAnswer>(
      u"/bin/sh"_s,
      QStringList{u"-c"_s, u"echo $$ >\"$0.new\"; mv \"$0.new\" \"$0\"; exec sleep 60"_s, started.fileName()}, limits,
      [](const auto&, const auto&) { ADD_FAILURE() << "nobody asks any more"; });
  ASSERT_TRUE(runUntil([&] { return started.isOpen() || started.open(QIODevice::ReadOnly); }));
  const pid_t process = started.readAll().trimmed().toInt();
  ASSERT_EQ(::kill(process, 0), 0);
  answer.reset();
  EXPECT_TRUE(runUntil([&] { return ::kill(process, 0) != 0; }));
}

}  // namespace
}  // namespace quillo
