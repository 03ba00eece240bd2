#pragma once

#include <QMenu>
#include <QPointer>

namespace quillo {

// Shows a menu the way a pull-down button does, which spends the menu's first item on its own title.
class PullDownMenu {
 public:
  // Gives the menu, which is not owned, a blank first item for the title. It stays in the menu, so whoever makes a
  // second pull-down for the same menu finds it as a blank line below; the agent makes one only.
  explicit PullDownMenu(QMenu& menu);

  // Opens the menu below `frame`.
  void performClick(const QWidget& frame);

 private:
  QPointer<QMenu> m_menu;
};

}  // namespace quillo
