#include "quilloctl/Pager.h"

#include "foundation/FileDescriptor.h"
#include "foundation/FileModeMask.h"
#include "quilloctl/Terminal.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

// A Ctrl+C in a pager is the pager's, and would end us under it; one that was left tells by a failing write.
constexpr std::array signalsOfPager{SIGINT, SIGQUIT, SIGPIPE};

struct State {
  bool isHolding{false};
  QByteArray held;
  qint64 rows{0};
  std::optional<pid_t> process;
};
State state;

// Empty for none.
QStringList commandOfUser() {
  if (qEnvironmentVariableIsSet("PAGER")) return QProcess::splitCommand(qEnvironmentVariable("PAGER"));
  const QString less = QStandardPaths::findExecutable(u"less"_s);
  return less.isEmpty() ? QStringList() : QStringList{less, u"-FRX"_s};
}

// About how many rows the terminal needs for it.
qint64 rowsOf(const QByteArray& bytes, int columns) {
  qint64 rows = 0;
  qint64 width = 0;
  bool isInCode = false;
  for (const char c : bytes) {
    if (c == '\n') {
      rows += std::max<qint64>(1, (width + columns - 1) / columns);
      width = 0;
    } else if (c == '\x1b' || isInCode) {
      isInCode = c != 'm';
    } else if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U) {  // the first byte of a character
      ++width;
    }
  }
  return rows + (width > 0 ? 1 : 0);
}

// The pager, reading from `input`; nothing where it could not be started.
std::optional<pid_t> start(const QStringList& command, int input) {
  std::vector<QByteArray> words;
  for (const QString& word : command) words.push_back(QFile::encodeName(word));
  std::vector<char*> arguments;
  for (QByteArray& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t files;
  posix_spawnattr_t attributes;
  ::posix_spawn_file_actions_init(&files);
  ::posix_spawnattr_init(&attributes);
  ::posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  sigset_t defaults;
  ::sigemptyset(&defaults);
  for (const int number : signalsOfPager) ::sigaddset(&defaults, number);
  ::posix_spawnattr_setsigdefault(&attributes, &defaults);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  pid_t process = 0;
  const FileModeMask maskOfUser;
  const int failure = ::posix_spawnp(&process, arguments.front(), &files, &attributes, arguments.data(), environ);
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&files);
  return failure == 0 ? std::optional(process) : std::nullopt;
}

// Puts the pager in the standard output's place. Without one everything goes to the terminal as it is.
void launch() {
  const QStringList command = commandOfUser();
  std::array<int, 2> ends{};
  if (command.isEmpty() || ::pipe2(ends.data(), O_CLOEXEC) != 0) return;
  const FileDescriptor reading(ends[0]);
  const FileDescriptor writing(ends[1]);
  // For a less of the user's choice, which shows colours as codes otherwise.
  ::setenv("LESS", "FRX", /*overwrite=*/0);
  for (const int number : signalsOfPager) std::signal(number, SIG_IGN);
  state.process = start(command, reading.number());
  if (state.process)
    ::dup2(writing.number(), STDOUT_FILENO);
  else
    for (const int number : signalsOfPager) std::signal(number, SIG_DFL);
}

}  // namespace

void Pager::begin() {
  state.isHolding = outputIsTerminal() && terminalSize().rows > 1;
}

bool Pager::isInUse() {
  return state.isHolding || state.process;
}

QByteArray Pager::passOn(const QByteArray& bytes) {
  if (!state.isHolding) return bytes;
  const TerminalSize size = terminalSize();
  state.held += bytes;
  state.rows += rowsOf(bytes, size.columns);
  // The last row is the shell's.
  if (state.rows < size.rows) return {};
  state.isHolding = false;
  launch();
  return std::exchange(state.held, {});
}

QByteArray Pager::rest() {
  state.isHolding = false;
  return std::exchange(state.held, {});
}

void Pager::end() {
  if (!state.process) return;
  // The pager waits for the end of its input, of which this is the last descriptor.
  const FileDescriptor null(::open("/dev/null", O_WRONLY | O_CLOEXEC));
  if (!null.isOpen() || ::dup2(null.number(), STDOUT_FILENO) < 0) ::close(STDOUT_FILENO);
  while (::waitpid(*state.process, nullptr, 0) < 0 && errno == EINTR) {
  }
  state.process.reset();
}

}  // namespace quillo::ctl
