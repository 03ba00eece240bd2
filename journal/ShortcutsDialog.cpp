#include "journal/ShortcutsDialog.h"

#include "controls/Fonts.h"
#include "journal/JournalCommands.h"

#include <QDialogButtonBox>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace quillo {

using namespace Qt::StringLiterals;

ShortcutsDialog::ShortcutsDialog(const JournalCommands& commands, QWidget* parent) : QDialog(parent) {
  setWindowTitle(u"Keyboard Shortcuts"_s);
  auto* text = new QTextBrowser(this);
  text->setFont(textFont(14));
  text->setHtml(commands.shortcutList());
  text->setFrameStyle(QFrame::NoFrame);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addWidget(text);
  column->addWidget(buttons);
  resize(480, 620);
}

}  // namespace quillo
