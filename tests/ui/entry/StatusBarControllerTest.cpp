// The status controller with a fake panel, and the entry window under it.

#include "controls/Coordinates.h"
#include "entry/EntryBackgroundView.h"
#include "entry/EntryWindowPlacement.h"
#include "entry/QLXAStatusBarController.h"
#include "platform/StatusItem.h"
#include "tests/ui/entry/EntryWindowFixture.h"

#include <QMenu>
#include <QScreen>
#include <QTimer>

namespace quillo {
namespace {

class FakeStatusItem : public StatusItem {
 public:
  struct State {
    QString image, toolTip;
    bool isTemplate{false};
    bool highlighted{false};
    double length{0};
    QMenu* menu{nullptr};
    QRectF rectangle{700, 2, 22, 22};
    std::function<void()> click, moved;
  };
  explicit FakeStatusItem(State& state) : m_state(state) {}
  void setImage(const QString& name, bool isTemplate) override {
    m_state.image = name;
    m_state.isTemplate = isTemplate;
  }
  void setHighlighted(bool highlighted) override { m_state.highlighted = highlighted; }
  void setToolTip(std::function<QString()> text) override { m_state.toolTip = text(); }
  void setMenu(QMenu* menu) override { m_state.menu = menu; }
  void setLength(double points) override { m_state.length = points; }
  [[nodiscard]] std::optional<QRectF> geometry() const override { return m_state.rectangle; }
  [[nodiscard]] QRectF anchor() const override { return m_state.rectangle; }
  void onPrimaryClick(std::function<void()> callback) override { m_state.click = std::move(callback); }
  void onGeometryChanged(std::function<void()> callback) override { m_state.moved = std::move(callback); }

 private:
  State& m_state;
};

class StatusBarControllerTest : public EntryWindowTest {
 protected:
  StatusBarControllerTest() {
    menu.addAction(u"x"_s);
    status.setContextualMenu(&menu);
    status.setStatusItem(std::make_unique<FakeStatusItem>(item));
    status.setEntryWindowController(controller);
  }
  void connectValidation() {
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [this] { menu.actions().value(0)->setText(u"validated"_s); });
  }
  // Written by another process.
  void setShared(const QString& key, bool value) {
    const QString path = config.groupPrefsDirectoryURL().toLocalFile() + u"/quillo.plist"_s;
    PersistentPropertyList::withPropertyListURL(QUrl::fromLocalFile(path), nullptr)->setBoolForKey(value, key);
  }
  FakeStatusItem::State item;
  QMenu menu;
  QLXAStatusBarController status{notices};
};

TEST_F(StatusBarControllerTest, ClicksToggleAndEveryWayOfClosingResets) {
  const std::function<void()> waysToClose[] = {
      [this] { item.click(); },        [this] { click("closeButton"); },     [this] { click("saveButton"); },
      [this] { controller->close(); }, [this] { status.hideEntryWindow(); }, [this] { controller->window().close(); }};
  for (const auto& close : waysToClose) {
    item.click();
    EXPECT_TRUE(controller->window().isVisible());
    EXPECT_TRUE(status.isShowingEntryWindow() && item.highlighted);
    close();
    EXPECT_FALSE(controller->window().isVisible());
    EXPECT_FALSE(status.isShowingEntryWindow() || item.highlighted);
    EXPECT_EQ(status.currentMode(), EntryWindowModeStandard);
  }
}

TEST_F(StatusBarControllerTest, AReminderTurnsTheIconRedUnlessTheWindowIsShown) {
  EXPECT_EQ(item.menu, status.contextualMenu());
  EXPECT_EQ(item.length, 22);
  EXPECT_EQ(item.image, u"menubar-black"_s);
  EXPECT_TRUE(item.isTemplate);
  status.showEntryWindowInMode(EntryWindowModeReminder);
  EXPECT_EQ(item.image, u"menubar-red"_s);
  EXPECT_FALSE(item.isTemplate);
  EXPECT_TRUE(named<QWidget>("reminderIcon")->isVisible());
  status.showEntryWindowInMode(EntryWindowModeStandard);
  EXPECT_EQ(status.currentMode(), EntryWindowModeReminder);
  controller->close();
  EXPECT_EQ(item.image, u"menubar-black"_s);
  item.click();
  status.showEntryWindowInMode(EntryWindowModeReminder);
  EXPECT_EQ(item.image, u"menubar-black"_s);
}

TEST_F(StatusBarControllerTest, TheMenuClosesTheWindowAndHighlights) {
  item.click();
  item.menu->popup(QPoint(10, 10));
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_TRUE(status.isShowingContextualMenu() && item.highlighted);
  item.menu->close();
  EXPECT_FALSE(status.isShowingContextualMenu() || item.highlighted);
}

TEST_F(StatusBarControllerTest, AClickWhosePressWasTakenForOneElsewhereTogglesOnce) {
  // A panel that draws the icon itself: its window is another program's.
  QCursor::setPos(QPoint(705, 10));
  item.click();
  outsideClicks.click();
  EXPECT_FALSE(controller->window().isVisible());
  item.click();
  EXPECT_FALSE(controller->window().isVisible());
  // Elsewhere, or later, it is a click of its own.
  QCursor::setPos(QPoint(720, 20));
  item.click();
  EXPECT_TRUE(controller->window().isVisible());
}

TEST_F(StatusBarControllerTest, TheHighlightIsAppliedAgainATurnLater) {
  item.click();
  item.highlighted = false;
  QCoreApplication::processEvents();
  EXPECT_TRUE(item.highlighted);
}

TEST_F(StatusBarControllerTest, TheWindowHangsUnderTheItemAndFollowsIt) {
  item.click();
  const double height = QGuiApplication::primaryScreen()->geometry().height();
  EXPECT_EQ(controller->window().frame(), QRectF(711 - 164, height - 24 - 263, 328, 268));
  item.rectangle.moveLeft(600);
  item.moved();
  EXPECT_EQ(controller->window().frame().x(), 611 - 164);
  // Not while it is hidden.
  item.click();
  item.rectangle.moveLeft(500);
  item.moved();
  EXPECT_EQ(controller->window().frame().x(), 611 - 164);
}

TEST_F(StatusBarControllerTest, AtTheBottomTheWindowStandsAboveTheItem) {
  const auto* background = named<EntryBackgroundView>("backgroundView");
  const auto* button = named<QWidget>("saveButton");
  AgentEntryWindow& window = controller->window();
  const auto onScreen = [](const QWidget* w) { return QRectF(w->mapToGlobal(QPoint()), QSizeF(w->size())); };
  item.click();
  const double below = onScreen(button).y() - onScreen(background).y();
  const QRectF rectangle = item.rectangle;

  const double height = QGuiApplication::primaryScreen()->geometry().height();
  item.rectangle.moveBottom(height - 3);
  item.moved();
  EXPECT_EQ(window.frame(), QRectF(711 - 164, 3 + 22 - 5, 328, 268));
  EXPECT_EQ(onScreen(background), flipped(window.frame(), height));
  EXPECT_EQ(onScreen(button).y() - onScreen(background).y(), below - EntryBackgroundView::arrowHeight);
  EXPECT_TRUE(background->outline().contains(QPointF(164, 266)));
  EXPECT_FALSE(background->outline().contains(QPointF(40, 266)));
  EXPECT_TRUE(background->outline().contains(QPointF(40, 1)));

  item.rectangle = rectangle;
  item.moved();
  EXPECT_EQ(onScreen(background), flipped(window.frame(), height));
  EXPECT_EQ(onScreen(button).y() - onScreen(background).y(), below);
  EXPECT_FALSE(background->outline().contains(QPointF(40, 1)));
}

TEST_F(StatusBarControllerTest, OnTheScreenTheWindowStopsAtTheEdgeAndTheArrowGoesOnToTheItem) {
  const QRectF screen = flipped(QGuiApplication::primaryScreen()->geometry(), mainScreenHeight());
  const auto* background = named<EntryBackgroundView>("backgroundView");
  AgentEntryWindow& window = controller->window();
  isComposited = false;
  item.rectangle.moveRight(screen.right());
  item.click();
  EXPECT_GT(window.frame().right(), screen.right());
  item.click();

  // As another process changes it, from one opening to the next.
  setShared(Key::keepEntryWindowOnScreen, true);
  item.click();
  EXPECT_EQ(window.frame().right(), screen.right());
  EXPECT_EQ(QRectF(background->mapToGlobal(QPoint()), QSizeF(background->size())),
            flipped(window.frame(), mainScreenHeight()));
  EXPECT_TRUE(background->outline().contains(QPointF(328 - EntryBackgroundView::arrowMargin, 2)));
  EXPECT_TRUE(window.mask().contains(QPoint(328 - 20, 4)));
  EXPECT_FALSE(window.mask().contains(QPoint(164, 4)));
  // The panel makes room for another icon while the window is shown.
  item.rectangle.moveLeft(item.rectangle.left() - 26);
  item.moved();
  EXPECT_EQ(window.frame().right(), screen.right());
  EXPECT_TRUE(window.mask().contains(QPoint(328 - 37, 4)));
  EXPECT_FALSE(window.mask().contains(QPoint(328 - 20, 4)));
  item.click();

  setShared(Key::keepEntryWindowOnScreen, false);
  item.click();
  EXPECT_EQ(window.frame().center().x(), item.rectangle.center().x());
  EXPECT_TRUE(window.mask().contains(QPoint(164, 4)));
}

TEST_F(StatusBarControllerTest, AMenuThatThePanelDrawsEndsWithAChoiceOrAClick) {
  // Shown and closed by another process: the menu here is never visible.
  Q_EMIT item.menu->aboutToShow();
  EXPECT_TRUE(status.isShowingContextualMenu() && item.highlighted);
  item.menu->actions()[0]->trigger();
  EXPECT_FALSE(status.isShowingContextualMenu() || item.highlighted);
  Q_EMIT item.menu->aboutToShow();
  item.click();
  EXPECT_FALSE(status.isShowingContextualMenu());
  EXPECT_TRUE(status.isShowingEntryWindow() && item.highlighted);
}

TEST_F(StatusBarControllerTest, AReplacedControllerClosesTheWindowBefore) {
  item.click();
  type("half a thought");
  const auto before = controller;
  newController();
  status.setEntryWindowController(controller);
  EXPECT_FALSE(before->window().isVisible());
  EXPECT_FALSE(status.isShowingEntryWindow());
  EXPECT_EQ(entries().size(), 1);
  item.click();
  EXPECT_TRUE(controller->window().isVisible());
}

TEST_F(StatusBarControllerTest, WhatHappensWhileAnAlertIsUpLeavesEverythingInStep) {
  // The icon clicked twice: the window was to be hidden, then shown again. It is closing, and stays closed.
  item.click();
  type("kept");
  breakJournal();
  alerts.expected = 2;
  alerts.isHeld = true;
  click("closeButton");
  item.click();
  item.click();
  controller->window().close();
  EXPECT_TRUE(controller->window().isVisible());
  alerts.dismiss();
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_FALSE(status.isShowingEntryWindow() || item.highlighted);
  // Nothing of the second click is left: a monitor would take the next click on the icon for one elsewhere.
  EXPECT_FALSE(outsideClicks.click);

  // The window replaced, by the last who hold it.
  item.click();
  click("closeButton");
  auto before = std::exchange(controller, nullptr);
  before->closeForReplacement();
  EXPECT_FALSE(before->window().isVisible());
  EXPECT_FALSE(status.isShowingEntryWindow() || item.highlighted);
  newController();
  controller->takeOverUnsavedText(*before);
  status.setEntryWindowController(controller);
  before.reset();
  EXPECT_EQ(textView()->toPlainText(), u"kept"_s);
  alerts.dismiss();
  controller->saveForTermination();
}

TEST_F(StatusBarControllerTest, TheMenuShownIsACopyThatIsValidatedLikeTheOriginal) {
  connectValidation();
  item.menu->popup(QPoint(10, 10));
  EXPECT_EQ(item.menu->actions().value(0)->text(), u"validated"_s);
  item.menu->close();
  // What is added to the original later is not in the copy.
  menu.addAction(u"later"_s);
  EXPECT_EQ(item.menu->actions().size(), 1);
  status.setContextualMenu(&menu);
  EXPECT_EQ(item.menu, &menu);
}

TEST(EntryWindowPlacement, CentresUnderTheButtonWithoutClamping) {
  const struct {
    QRectF button;
    QPointF origin;
  } cases[] = {
      {{500, 778, 22, 22}, {347, 515}},
      {{0, 0, 0, 0}, {-164, -263}},
      {{1270, 778, 22, 22}, {1117, 515}},
  };
  for (const auto& c : cases) EXPECT_EQ(entryWindowOrigin(c.button, QSizeF(328, 268)), c.origin);
  const QRectF screen(0, 0, 1280, 800);
  const struct {
    const char* name;
    QRectF button;
    bool above;
  } sides[] = {
      {"no button", {}, false},
      {"panel at the top", {500, 778, 22, 22}, false},
      {"panel at the bottom", {500, 3, 22, 22}, true},
      {"panel at a side, room below", {3, 263, 22, 22}, false},
      {"panel at a side, no room below", {3, 262, 22, 22}, true},
  };
  for (const auto& c : sides) EXPECT_EQ(entryWindowBelongsAbove(c.button, QSizeF(328, 268), screen), c.above) << c.name;
  // On a screen too low for either, the upper half still hangs the window under the button.
  EXPECT_FALSE(entryWindowBelongsAbove({500, 180, 22, 22}, QSizeF(328, 268), QRectF(0, 0, 320, 240)));
  EXPECT_EQ(entryWindowOriginAbove({500, 3, 22, 22}, QSizeF(328, 268)), QPointF(347, 20));
  EXPECT_EQ(flipped(QRectF(13, 66, 302, 146), 268), QRectF(13, 56, 302, 146));
  EXPECT_EQ(flipped(flipped(QRectF(1, 2, 3, 4), 100), 100), QRectF(1, 2, 3, 4));
}

// Where the icon may be on a screen: in the corners and in the middle of the edges, as panels have it.
std::vector<QRectF> iconPlaces(const QRectF& screen) {
  constexpr double size = 22;
  std::vector<QRectF> places;
  for (const double across : {0.0, 0.5, 1.0})
    for (const double up : {0.0, 0.5, 1.0})
      if (across != 0.5 || up != 0.5)
        places.emplace_back(screen.x() + across * (screen.width() - size), screen.y() + up * (screen.height() - size),
                            size, size);
  return places;
}

TEST(EntryWindowPlacement, KeptOnTheScreenNothingIsOffItAndTheArrowIsAtTheIcon) {
  const QSizeF size = AgentEntryWindow::frameSize;
  // In points from the bottom left of the main screen. A screen of more pixels a point is a smaller one.
  const struct {
    const char* name;
    QRectF screen;
  } screens[] = {
      {"alone", {0, 0, 1280, 800}},
      {"alone, one and a half pixels a point", {0, 0, 853, 533}},
      {"alone, two pixels a point", {0, 0, 640, 400}},
      {"at the left of the main one, lower", {-1920, -280, 1920, 1080}},
      {"at its right, two pixels a point", {1280, 260, 960, 540}},
      {"above it", {0, 800, 1280, 1024}},
      {"below it, one and a half pixels a point", {100, -720, 1280, 720}},
  };
  for (const auto& [name, screen] : screens) {
    for (const QRectF& icon : iconPlaces(screen)) {
      SCOPED_TRACE(testing::Message() << name << ", icon at " << icon.x() << ' ' << icon.y());
      const bool above = entryWindowBelongsAbove(icon, size, screen);
      const QPointF asked = above ? entryWindowOriginAbove(icon, size) : entryWindowOrigin(icon, size);
      const QRectF window(entryWindowOriginOnScreen(asked, size, screen), size);
      EXPECT_TRUE(screen.contains(window));
      // The arrow's tip, with the corners kept clear, is under the icon, and at its middle away from the edges.
      const double margin = EntryBackgroundView::arrowMargin;
      const double tip = std::clamp(icon.center().x(), window.left() + margin, window.right() - margin);
      EXPECT_GT(tip, icon.left());
      EXPECT_LT(tip, icon.right());
      if (icon.left() > screen.left() && icon.right() < screen.right()) {
        EXPECT_EQ(tip, icon.center().x());
      }
      // It still reaches over the icon by as much as ever, but for one half way up a screen with room at neither side.
      if (icon.top() == screen.top() || icon.bottom() == screen.bottom() || screen.height() > 2 * size.height() + 22) {
        EXPECT_EQ(above ? icon.bottom() - window.top() : window.bottom() - icon.top(), entryWindowOverlap);
      }
    }
  }
  // What is too large for its screen shows its left and its top.
  EXPECT_EQ(entryWindowOriginOnScreen({5, 5}, size, QRectF(10, 20, 300, 200)), QPointF(10, 220 - 268));
}

}  // namespace
}  // namespace quillo
