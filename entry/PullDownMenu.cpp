#include "entry/PullDownMenu.h"

namespace quillo {

PullDownMenu::PullDownMenu(QMenu& menu) : m_menu(&menu) {
  auto* title = new QAction(&menu);
  menu.insertAction(menu.actions().value(0), title);
}

void PullDownMenu::performClick(const QWidget& frame) {
  if (!m_menu || m_menu->isEmpty()) return;
  QAction* title = m_menu->actions().first();
  title->setVisible(false);
  QObject::connect(
      m_menu, &QMenu::aboutToHide, title, [title] { title->setVisible(true); }, Qt::SingleShotConnection);
  m_menu->popup(frame.mapToGlobal(frame.rect().bottomLeft()));
}

}  // namespace quillo
