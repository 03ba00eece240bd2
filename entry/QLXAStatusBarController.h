#pragma once

#include "entry/EntryWindowMode.h"
#include "platform/Registration.h"

#include <QObject>
#include <QRectF>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QMenu;

namespace quillo {

class AgentEntryWindowController;
class NotificationCenter;
class StatusItem;

// The agent's presence in the panel: which icon the status item shows, what a click does, and the entry window under
// it. Keeps its flags in step with the window and the menu: every way of closing the window ends in hideEntryWindow().
// Main thread only.
class QLXAStatusBarController : public QObject {
  Q_OBJECT

 public:
  // The centre is the one in which the entry window tells that it closes; it must outlive the controller.
  explicit QLXAStatusBarController(NotificationCenter& localCenter);
  ~QLXAStatusBarController() override;

  // Keeps a copy of the menu with the same items; whoever validates the items when the given menu is about to show is
  // told when the copy is. The menu must outlive its use. It goes first, then the item: an item that is there already
  // shows the menu given, not the copy, and its clicks are not sorted; the delegate keeps that order.
  void setContextualMenu(QMenu* menu);
  void setStatusItem(std::unique_ptr<StatusItem> item);
  // Closes the window of the one before.
  void setEntryWindowController(std::shared_ptr<AgentEntryWindowController> controller);
  // Asked when it is about to be shown, and by updateToolTip(); the program's name without it.
  void setToolTip(std::function<QString()> text);
  // Once this turn of the event loop is over: for panels that ask nobody when they show a tip.
  void updateToolTip();

  [[nodiscard]] StatusItem* statusItem() const { return m_statusItem.get(); }
  // The copy; null before there is one.
  [[nodiscard]] QMenu* contextualMenu() const { return m_contextualMenu.get(); }
  // The bounds of the item's button within window(); empty where there is none. The panel's window is another
  // process's: what is known of it here is the part that shows the item, so the button fills it.
  [[nodiscard]] QRectF button() const;
  // The frame of the panel's window that holds the button, in screen points from the bottom left.
  [[nodiscard]] std::optional<QRectF> window() const;
  [[nodiscard]] EntryWindowMode currentMode() const { return m_currentMode; }
  [[nodiscard]] bool isHighlighted() const { return m_isHighlighted; }
  [[nodiscard]] bool isShowingEntryWindow() const { return m_isShowingEntryWindow; }
  [[nodiscard]] bool isShowingContextualMenu() const { return m_isShowingContextualMenu; }

  // Nothing when the window is already shown: its mode stays, too.
  void showEntryWindowInMode(EntryWindowMode mode);
  void hideEntryWindow();
  // Whether nothing hangs on the window that wants to be answered first.
  [[nodiscard]] bool shouldHideEntryWindow() const;
  // As a secondary click does; nothing while the menu is shown.
  void showContextualMenu();
  // Puts the window under the status item, or above it where it stands at the bottom of the screen.
  void positionEntryWindow();

  // Each refreshes the icon.
  void setCurrentMode(EntryWindowMode mode);
  void setIsHighlighted(bool highlighted);
  void setIsShowingEntryWindow(bool showing);
  void setIsShowingContextualMenu(bool showing);

  // What a left click does: shows the window or hides it. The panel tells clicks apart, so the menu opens on others
  // only.
  void doxLeftMouseDown();
  void menuWillOpen();
  void menuDidClose();

 private:
  void updateButtonWithCorrectImage();

  NotificationCenter& m_localCenter;
  // The pictures of the item. The black one is a template and takes the colour that reads on the panel, so no state
  // shows the white one; it is declared with the others all the same.
  QString m_image;
  [[maybe_unused]] QString m_alternateImage;
  QString m_reminderImage;
  std::function<QString()> m_toolTip;
  // Goes after the item, which points at it.
  std::unique_ptr<QMenu> m_contextualMenu;
  std::unique_ptr<StatusItem> m_statusItem;
  std::shared_ptr<AgentEntryWindowController> m_entryWindowController;
  std::unique_ptr<Registration> m_opaqueWindowCloseObserver;
  std::unique_ptr<Registration> m_statusItemObservation;  // while the window is shown
  EntryWindowMode m_currentMode{EntryWindowModeStandard};
  bool m_isHighlighted{false};
  bool m_isShowingEntryWindow{false};
  bool m_isShowingContextualMenu{false};
};

}  // namespace quillo
