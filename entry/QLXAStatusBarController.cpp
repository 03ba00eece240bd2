#include "entry/QLXAStatusBarController.h"

#include "config/Keys.h"
#include "controls/Coordinates.h"
#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/EntryWindowPlacement.h"
#include "entry/WindowConvertPoint.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "platform/StatusItem.h"

#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QTimer>

#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

// Fixed; the item is made with a width of the panel's choice.
static constexpr double statusItemLength = 22;

// The screen that holds the rectangle's middle, else the main one; both from the bottom left.
static QRectF screenAround(const QRectF& rect) {
  const QScreen* main = QGuiApplication::primaryScreen();
  if (!main) return {};
  const QScreen* holding = QGuiApplication::screenAt(flipped(rect, mainScreenHeight()).center().toPoint());
  return flipped((holding ? holding : main)->geometry(), mainScreenHeight());
}

// Sizes in points are rounded where a point is one and a half pixels: the last one may be half off the screen.
static QRectF wholePointsOf(const QRectF& screen) {
  const double scale = qGuiApp->devicePixelRatio();
  return scale == std::floor(scale) ? screen : screen.adjusted(0, 1, -1, 0);
}

QLXAStatusBarController::QLXAStatusBarController(NotificationCenter& localCenter)
    : m_localCenter(localCenter),
      m_image(u"menubar-black"_s),
      m_alternateImage(u"menubar-white"_s),
      m_reminderImage(u"menubar-red"_s),
      m_toolTip([] { return u"Quillo"_s; }) {
  setCurrentMode(EntryWindowModeStandard);
}

QLXAStatusBarController::~QLXAStatusBarController() = default;

std::optional<QRectF> QLXAStatusBarController::window() const {
  if (!m_statusItem) return std::nullopt;
  return flipped(m_statusItem->anchor(), mainScreenHeight());
}

QRectF QLXAStatusBarController::button() const {
  const auto frame = window();
  return frame ? QRectF(QPointF(), frame->size()) : QRectF();
}

void QLXAStatusBarController::setContextualMenu(QMenu* menu) {
  std::unique_ptr<QMenu> copy;
  if (menu) {
    copy = std::make_unique<QMenu>();
    copy->addActions(menu->actions());
    connect(copy.get(), &QMenu::aboutToShow, menu, [menu] { Q_EMIT menu->aboutToShow(); });
    connect(copy.get(), &QMenu::aboutToShow, this, &QLXAStatusBarController::menuWillOpen);
    connect(copy.get(), &QMenu::aboutToHide, this, &QLXAStatusBarController::menuDidClose);
    // A panel that draws the menu itself may not tell that it closed it.
    connect(copy.get(), &QMenu::triggered, this, [this] {
      if (m_isShowingContextualMenu) menuDidClose();
    });
  }
  if (m_statusItem) m_statusItem->setMenu(menu);
  m_contextualMenu = std::move(copy);
}

void QLXAStatusBarController::setStatusItem(std::unique_ptr<StatusItem> item) {
  m_statusItem = std::move(item);
  if (!m_statusItem) return;
  m_statusItem->setMenu(m_contextualMenu.get());
  m_statusItem->setLength(statusItemLength);
  m_statusItem->setToolTip(m_toolTip);
  m_statusItem->onPrimaryClick([this] {
    // The click's press has closed the window already: that was the toggle.
    if (!m_entryWindowController || !m_entryWindowController->wasJustDismissedHere()) doxLeftMouseDown();
  });
  m_statusItem->onGeometryChanged(
      [this] { m_localCenter.postNotification(Notice::windowDidMove, m_statusItem.get()); });
  updateButtonWithCorrectImage();
}

void QLXAStatusBarController::setEntryWindowController(std::shared_ptr<AgentEntryWindowController> controller) {
  if (m_entryWindowController) m_entryWindowController->close();
  // Where an alert holds that window up, its closing will no longer be heard.
  hideEntryWindow();
  m_opaqueWindowCloseObserver.reset();
  m_entryWindowController = std::move(controller);
  if (!m_entryWindowController) return;
  m_opaqueWindowCloseObserver = m_localCenter.observe(
      Notice::windowWillClose, [this](const Notification&) { hideEntryWindow(); }, m_entryWindowController.get());
}

void QLXAStatusBarController::setToolTip(std::function<QString()> text) {
  m_toolTip = std::move(text);
  if (m_statusItem) m_statusItem->setToolTip(m_toolTip);
}

void QLXAStatusBarController::updateToolTip() {
  QTimer::singleShot(0, this, [this] {
    if (m_statusItem) m_statusItem->setToolTip(m_toolTip);
  });
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
    m_statusItem->setImage(m_reminderImage, /*isTemplate=*/false);
  else
    m_statusItem->setImage(m_image, /*isTemplate=*/true);
}

void QLXAStatusBarController::positionEntryWindow() {
  if (!m_entryWindowController) return;
  // Without an item, all of these are zero.
  const QPointF corner = WindowConvertPoint::convertPointToScreen(window(), button().topLeft());
  const QRectF onScreen(corner, button().size());
  AgentEntryWindow& entryWindow = m_entryWindowController->window();
  const QSizeF size = entryWindow.frame().size();

  const QRectF screen = screenAround(onScreen);
  const bool above = entryWindowBelongsAbove(onScreen, size, screen);
  QPointF origin = above ? entryWindowOriginAbove(onScreen, size) : entryWindowOrigin(onScreen, size);
  if (m_entryWindowController->keepsWindowOnScreen())
    origin = entryWindowOriginOnScreen(origin, size, wholePointsOf(screen));
  entryWindow.setPlace(origin, above ? Qt::BottomEdge : Qt::TopEdge, onScreen.center().x());
}

void QLXAStatusBarController::showEntryWindowInMode(EntryWindowMode mode) {
  if (m_isShowingEntryWindow || !m_entryWindowController) return;
  QLLogDebug(mode == EntryWindowModeReminder ? u"The entry window opens for a reminder"_s
                                             : u"The entry window opens"_s);
  setIsHighlighted(true);
  setIsShowingEntryWindow(true);
  setCurrentMode(mode);
  positionEntryWindow();
  // A standard window takes the keyboard as it is shown; a reminder's leaves it where it is.
  m_entryWindowController->showWindowInMode(mode);
  if (!m_statusItem || !m_isShowingEntryWindow) return;
  // Panels rearrange their icons: the window follows while it is shown.
  m_statusItemObservation = m_localCenter.observe(
      Notice::windowDidMove, [this](const Notification&) { positionEntryWindow(); }, m_statusItem.get());
}

void QLXAStatusBarController::hideEntryWindow() {
  if (!m_isShowingEntryWindow) return;
  QLLogDebug(u"The entry window closes"_s);
  setIsHighlighted(false);
  setIsShowingEntryWindow(false);
  setCurrentMode(EntryWindowModeStandard);
  // A no-op when it is the closing window that called.
  m_entryWindowController->close();
  m_statusItemObservation.reset();
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
  // Only a menu of the panel's own can still count as shown when the icon is clicked, and it is gone by now.
  if (m_isShowingContextualMenu) menuDidClose();
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
