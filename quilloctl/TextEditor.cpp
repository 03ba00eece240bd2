#include "quilloctl/TextEditor.h"

#include "config/Keys.h"
#include "foundation/DetachedProcess.h"
#include "foundation/FileContents.h"
#include "foundation/FileModeMask.h"
#include "platform/RunningApplications.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUuid>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

namespace {

// Editors that people give as their $VISUAL although they draw in a terminal.
bool drawsInTerminal(const QString& program) {
  static const QStringList known{u"vi"_s,    u"vim"_s,   u"nvim"_s, u"vim.basic"_s, u"vim.tiny"_s, u"nano"_s,
                                 u"pico"_s,  u"joe"_s,   u"jed"_s,  u"ne"_s,        u"mg"_s,       u"micro"_s,
                                 u"hx"_s,    u"helix"_s, u"kak"_s,  u"mcedit"_s,    u"ed"_s,       u"sensible-editor"_s,
                                 u"editor"_s};
  return known.contains(QFileInfo(program).fileName());
}

// Nobody opens an editor, looks and leaves in less.
constexpr std::chrono::milliseconds fastestPerson{800};

// In a terminal a Ctrl+C is for the editor; it would end us as well, and the text would be left behind. So it is with
// the end of the terminal, which ends the editor.
class IgnoredInterrupts {
 public:
  IgnoredInterrupts()
      : m_interrupt(std::signal(SIGINT, SIG_IGN)),
        m_quit(std::signal(SIGQUIT, SIG_IGN)),
        m_hangUp(std::signal(SIGHUP, SIG_IGN)) {}
  ~IgnoredInterrupts() {
    std::signal(SIGINT, m_interrupt);
    std::signal(SIGQUIT, m_quit);
    std::signal(SIGHUP, m_hangUp);
  }
  IgnoredInterrupts(const IgnoredInterrupts&) = delete;
  IgnoredInterrupts& operator=(const IgnoredInterrupts&) = delete;

 private:
  sighandler_t m_interrupt;
  sighandler_t m_quit;
  sighandler_t m_hangUp;
};

// Says it; by a notification, too, where nobody reads what we print.
std::nullopt_t notSaved(Context& context, const QString& reason) {
  if (outputIsDiscarded()) context.session().notify(u"Your text was not saved"_s, reason);
  failed(reason);
  return std::nullopt;
}

}  // namespace

EditorChoice editorOfUser(const QProcessEnvironment& environment) {
  const QStringList visual = QProcess::splitCommand(environment.value(u"VISUAL"_s));
  if (!visual.isEmpty()) return {visual, drawsInTerminal(visual.first())};
  const QStringList editor = QProcess::splitCommand(environment.value(u"EDITOR"_s));
  if (!editor.isEmpty()) return {editor, true};
  return {{u"sensible-editor"_s}, true};
}

bool standsInTerminal() {
  return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1;
}

bool outputIsDiscarded() {
  struct stat output {};
  struct stat null {};
  return ::fstat(STDOUT_FILENO, &output) != 0 ||
         (::stat("/dev/null", &null) == 0 && output.st_rdev == null.st_rdev && S_ISCHR(output.st_mode));
}

int runInTerminalWindow(const QStringList& arguments) {
  const QString terminal = QStandardPaths::findExecutable(u"x-terminal-emulator"_s);
  if (terminal.isEmpty()) return failed(u"there is no x-terminal-emulator to open a window with"_s);
  QString reason;
  if (startDetached(terminal, QStringList{u"-e"_s, QCoreApplication::applicationFilePath()} + arguments, {}, &reason))
    return Done;
  return failed(terminal + u" could not be started: "_s + reason);
}

std::optional<Draft> Draft::withText(const Context& context, const QString& text) {
  const QString directory = context.directories.state + u"/quillo/drafts"_s;
  const QString path =
      directory + u"/entry-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces).left(8) + u".txt"_s;
  Error error;
  if (!QDir().mkpath(directory) || !writeFileInPlace(path, text.toUtf8(), &error)) {
    failed(u"the text could not be written for the editor: "_s + error.localizedDescription);
    return std::nullopt;
  }
  return Draft(path, text);
}

std::optional<QString> Draft::edit(Context& context, const EditorChoice& editor) const {
  QProcess process;
  process.setProgram(editor.command.first());
  process.setArguments(editor.command.mid(1) + QStringList{m_path});
  process.setProcessChannelMode(QProcess::ForwardedChannels);
  process.setInputChannelMode(QProcess::ForwardedInputChannel);
  process.setChildProcessModifier([] {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGQUIT, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
  });
  const IgnoredInterrupts ignored;
  context.session().runningApplications.registerSelf(Identifier::mainApplication, [&process] { process.terminate(); });
  QEventLoop loop;
  QObject::connect(&process, &QProcess::finished, &loop, [&loop] { loop.quit(); });
  QObject::connect(&process, &QProcess::errorOccurred, &loop, [&loop](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) loop.quit();
  });
  QElapsedTimer sinceStart;
  sinceStart.start();
  {
    const FileModeMask maskOfUser;
    process.start();
  }
  if (process.state() != QProcess::NotRunning) loop.exec();
  context.session().runningApplications.registerSelf(Identifier::mainApplication, [] {});

  if (process.error() == QProcess::FailedToStart) {
    discard();
    return notSaved(context, u"the editor %1 could not be started"_s.arg(process.program()));
  }
  return textAfterEditor(context, process, std::chrono::milliseconds(sinceStart.elapsed()));
}

std::optional<QString> Draft::textAfterEditor(Context& context, const QProcess& process,
                                              std::chrono::milliseconds duration) const {
  Error error;
  const auto bytes = contentsOfFile(m_path, &error);
  if (!bytes) return notSaved(context, error.localizedDescription);
  const bool isUnchanged = *bytes == m_text.toUtf8();
  const bool isWorthKeeping = !isUnchanged && !bytes->trimmed().isEmpty();
  if (!isWorthKeeping) discard();

  // One that was asked to end has done so; what it left counts.
  if (process.exitStatus() == QProcess::NormalExit && process.exitCode() != 0) {
    const QString reason = u"the editor ended with %1; nothing was saved"_s.arg(process.exitCode());
    return notSaved(context, isWorthKeeping ? withPath(reason) : reason);
  }
  // It has handed the file to another process, where it may be open still, and whose saving makes the file anew.
  if (isUnchanged && duration < fastestPerson)
    return notSaved(context,
                    u"the editor %1 did not wait for you to write, it may have an option for that; what is "
                    "written all the same goes to %2 and into no entry"_s.arg(process.program(), m_path));
  QString reason;
  const auto text = textFromUtf8(*bytes, u"the text"_s, &reason);
  return text ? text : notSaved(context, withPath(reason));
}

QString Draft::withPath(const QString& reason) const {
  return reason + u"; the text is in "_s + m_path;
}

int Draft::kept(Context& context, const QString& reason) const {
  static_cast<void>(notSaved(context, withPath(reason)));
  return Failed;
}

void Draft::discard() const {
  QFile::remove(m_path);
}

}  // namespace quillo::ctl
