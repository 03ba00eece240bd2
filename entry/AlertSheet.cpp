#include "entry/AlertSheet.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace quillo {

int AlertSheet::runAlert(const Alert& alert, QWidget* window) {
  // A window that is not on the screen cannot carry a sheet.
  QWidget* parent = window && window->isVisible() ? window : nullptr;
  // Not on the stack: the window that owns it may be destroyed while it is up.
  const QPointer<QMessageBox> box = new QMessageBox(parent);
  box->setObjectName(QStringLiteral("alert"));
  box->setWindowTitle(QStringLiteral("Quillo"));
  box->setIcon(QMessageBox::Warning);
  // Paths and reasons are no markup.
  box->setTextFormat(Qt::PlainText);
  box->setText(alert.message);
  box->setInformativeText(alert.informativeText);
  box->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
  // Above the entry window, which itself stays on top.
  box->setWindowFlag(Qt::WindowStaysOnTopHint);
  QList<QPushButton*> buttons;
  for (const QString& title : alert.buttons) buttons << box->addButton(title, QMessageBox::AcceptRole);
  if (!buttons.isEmpty()) {
    box->setDefaultButton(buttons.first());
    box->setEscapeButton(buttons.last());
  }
  box->exec();

  const int dismissed = static_cast<int>(alert.buttons.size()) - 1;
  if (!box) return dismissed;
  int answer = dismissed;
  for (int i = 0; i < buttons.size(); ++i)
    if (box->clickedButton() == buttons[i]) answer = i;
  delete box;
  return answer;
}

}  // namespace quillo
