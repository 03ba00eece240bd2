#pragma once

#include "quilloctl/Command.h"

#include <QProcessEnvironment>
#include <QStringList>

#include <chrono>
#include <optional>

class QProcess;

namespace quillo::ctl {

// The user's editor: $VISUAL, else $EDITOR, else what Debian calls the sensible one.
struct EditorChoice {
  QStringList command;  // without the file
  // Draws in a terminal: all but $VISUAL do, and that one too where it is known to.
  bool needsTerminal{true};
};
[[nodiscard]] EditorChoice editorOfUser(const QProcessEnvironment& environment);

// Whether a person reads what we print and types what we read.
[[nodiscard]] bool standsInTerminal();
// Whether what we print goes nowhere, as of a program that the desktop starts.
[[nodiscard]] bool outputIsDiscarded();

// Starts quilloctl with these arguments in a terminal window of its own and does not wait for it. Answers an exit code,
// with the reason said where there is no terminal to be had.
int runInTerminalWindow(const QStringList& arguments);

// A text on its way through the editor: in a file of its own, readable by the user alone, that stays where something
// goes wrong.
class Draft {
 public:
  // In the user's state directory; nothing, with the reason said, when it cannot be written.
  [[nodiscard]] static std::optional<Draft> withText(const Context& context, const QString& text);

  // Runs the editor on the file and waits until it has ended, answering what the file then holds; nothing, with the
  // reason said, when the editor failed or was gone at once and is open elsewhere, as it seems. A file that is blank or
  // as it was is gone then. While it waits this process is known as the main application, and a request to end is
  // passed on to the editor.
  std::optional<QString> edit(Context& context, const EditorChoice& editor) const;

  // Answers Failed, saying why and where the text is; by a notification, too, where nobody reads what we print.
  [[nodiscard]] int kept(Context& context, const QString& reason) const;
  void discard() const;

 private:
  Draft(QString path, QString text) : m_path(std::move(path)), m_text(std::move(text)) {}
  std::optional<QString> textAfterEditor(Context& context, const QProcess& process,
                                         std::chrono::milliseconds duration) const;
  [[nodiscard]] QString withPath(const QString& reason) const;

  QString m_path;
  QString m_text;  // what it began with
};

}  // namespace quillo::ctl
