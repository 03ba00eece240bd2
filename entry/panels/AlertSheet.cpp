#include "entry/panels/AlertSheet.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <utility>

namespace quillo {

// Not on the stack: the window that owns it may be destroyed while it is up.
static QMessageBox* boxFor(const Alert& alert, QWidget* window) {
  // A window that is not on the screen cannot carry a sheet.
  QWidget* parent = window && window->isVisible() ? window : nullptr;
  auto* box = new QMessageBox(parent);
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
  return box;
}

// The box lists its buttons in the order in which they were added, as they have one role.
static int answerOf(const QMessageBox& box) {
  const auto buttons = box.buttons();
  const auto clicked = buttons.indexOf(box.clickedButton());
  return static_cast<int>(clicked < 0 ? buttons.size() - 1 : clicked);
}

void AlertSheet::beginSheet(const Alert& alert, QWidget* window, std::function<void(int)> answered) {
  QMessageBox* box = boxFor(alert, window);
  box->setAttribute(Qt::WA_DeleteOnClose);
  QObject::connect(box, &QDialog::finished, box, [box, answered = std::move(answered)] { answered(answerOf(*box)); });
  box->open();
}

int AlertSheet::runAlert(const Alert& alert, QWidget* window) {
  const QPointer<QMessageBox> box = boxFor(alert, window);
  box->exec();
  if (!box) return static_cast<int>(alert.buttons.size()) - 1;
  const int answer = answerOf(*box);
  delete box;
  return answer;
}

}  // namespace quillo
