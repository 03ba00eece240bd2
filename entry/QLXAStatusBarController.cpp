#include "entry/QLXAStatusBarController.h"

#include "config/Keys.h"
#include "controls/Coordinates.h"
#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/EntryWindowPlacement.h"
#include "platform/StatusItem.h"

#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QTimer>

namespace quillo {

using namespace Qt::StringLiterals;

// Fixed; the item is made with a width of the panel's choice.
static constexpr double statusItemLength = 22;

QLXAStatusBarController::QLXAStatusBarController() {
  setCurrentMode(EntryWindowModeStandard);
}

QLXAStatusBarController::~QLXAStatusBarController() {
  NotificationCenter::localCenter().removeObserver(this);
}

void QLXAStatusBarController::setContextualMenu(QMenu* menu) {
  std::unique_ptr<QMenu> copy;
  if (menu) {
    copy = std::make_unique<QMenu>();
    copy->addActions(menu->actions());
    connect(copy.get(), &QMenu::aboutToShow, menu, [menu] { Q_EMIT menu->aboutToShow(); });
    connect(copy.get(), &QMenu::aboutToShow, this, &QLXAStatusBarController::menuWillOpen);
    connect(copy.get(), &QMenu::aboutToHide, this, &QLXAStatusBarController::menuDidClose);
  }
  if (m_statusItem) m_statusItem->setMenu(menu);
  m_contextualMenu = std::move(copy);
}

void QLXAStatusBarController::setStatusItem(std::unique_ptr<StatusItem> item) {
  m_statusItem = std::move(item);
  if (!m_statusItem) return;
  m_statusItem->setMenu(m_contextualMenu.get());
  m_statusItem->setLength(statusItemLength);
  m_statusItem->setToolTip(u"Quillo"_s);
  m_statusItem->onPrimaryClick([this] { doxLeftMouseDown(); });
  m_statusItem->onGeometryChanged([this] {
    if (m_isShowingEntryWindow) positionEntryWindow();
  });
  updateButtonWithCorrectImage();
}

void QLXAStatusBarController::setEntryWindowController(std::shared_ptr<AgentEntryWindowController> controller) {
  if (m_entryWindowController) m_entryWindowController->close();
  // Where that window is still waiting for an alert, its closing will no longer be heard.
  hideEntryWindow();
  NotificationCenter::localCenter().removeObserver(this, Notice::windowWillClose);
  m_entryWindowController = std::move(controller);
  if (!m_entryWindowController) return;
  NotificationCenter::localCenter().addObserver(
      this, Notice::windowWillClose, [this](const Notification&) { hideEntryWindow(); },
      &m_entryWindowController->window());
}

void QLXAStatusBarController::setCurrentMode(EntryWindowMode mode) {
  m_currentMode = mode;
  updateButtonWithCorrectImage();
}

void QLXAStatusBarController::setIsHighlighted(bool highlighted) {
  m_isHighlighted = highlighted;
  updateButtonWithCorrectImage();
  // Once more a turn of the event loop later, with what is then true: a panel may have reset it while it handled the
  // click.
  QTimer::singleShot(0, this, [this] {
    if (m_statusItem) m_statusItem->setHighlighted(m_isHighlighted);
  });
}

void QLXAStatusBarController::setIsShowingEntryWindow(bool showing) {
  m_isShowingEntryWindow = showing;
  updateButtonWithCorrectImage();
}

void QLXAStatusBarController::setIsShowingContextualMenu(bool showing) {
  m_isShowingContextualMenu = showing;
  updateButtonWithCorrectImage();
}

void QLXAStatusBarController::updateButtonWithCorrectImage() {
  if (!m_statusItem) return;
  m_statusItem->setHighlighted(m_isHighlighted);
  if (m_currentMode == EntryWindowModeReminder)
    m_statusItem->setImage(u"menubar-red"_s, /*isTemplate=*/false);
  else
    m_statusItem->setImage(u"menubar-black"_s, /*isTemplate=*/true);
}

void QLXAStatusBarController::positionEntryWindow() {
  if (!m_entryWindowController) return;
  const QScreen* screen = QGuiApplication::primaryScreen();
  const QRectF anchor = m_statusItem ? m_statusItem->anchor() : QRectF();
  const QRectF button = m_statusItem && screen ? flipped(anchor, screen->geometry().height()) : QRectF();
  AgentEntryWindow& window = m_entryWindowController->window();
  window.setFrameOrigin(entryWindowOrigin(button, window.frame().size()));
  window.setArrowScreenX(button.center().x());
}

void QLXAStatusBarController::showEntryWindowInMode(EntryWindowMode mode) {
  if (m_isShowingEntryWindow || !m_entryWindowController) return;
  setIsHighlighted(true);
  setIsShowingEntryWindow(true);
  setCurrentMode(mode);
  positionEntryWindow();
  // A standard window takes the keyboard as it is shown; a reminder's leaves it where it is.
  m_entryWindowController->showWindowInMode(mode);
}

void QLXAStatusBarController::hideEntryWindow() {
  if (!m_isShowingEntryWindow) return;
  setIsHighlighted(false);
  setIsShowingEntryWindow(false);
  setCurrentMode(EntryWindowModeStandard);
  // A no-op when it is the closing window that called.
  m_entryWindowController->close();
}

bool QLXAStatusBarController::shouldHideEntryWindow() const {
  return !m_entryWindowController || !m_entryWindowController->window().hasAttachedSheet();
}

void QLXAStatusBarController::showContextualMenu() {
  if (m_isShowingContextualMenu || !m_contextualMenu) return;
  setIsShowingContextualMenu(true);
  m_contextualMenu->popup(m_statusItem ? m_statusItem->anchor().bottomLeft().toPoint() : QPoint());
}

void QLXAStatusBarController::doxLeftMouseDown() {
  if (m_isShowingEntryWindow)
    hideEntryWindow();
  else
    showEntryWindowInMode(EntryWindowModeStandard);
  setIsHighlighted(m_isHighlighted);
}

void QLXAStatusBarController::menuWillOpen() {
  if (m_isShowingEntryWindow) hideEntryWindow();
  setIsShowingContextualMenu(true);
  setIsHighlighted(true);
}

void QLXAStatusBarController::menuDidClose() {
  setIsShowingContextualMenu(false);
  if (!m_isShowingEntryWindow) setIsHighlighted(false);
}

}  // namespace quillo
