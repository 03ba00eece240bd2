// The entry window and the status controller with real key and mouse events, a real journal on disk and a fake panel.

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "controls/Coordinates.h"
#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/AlertSheet.h"
#include "entry/Alerts.h"
#include "entry/EntryWindowPlacement.h"
#include "entry/QLXAStatusBarController.h"
#include "foundation/Error.h"
#include "platform/StatusItem.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"
#include "tests/support/TestHome.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using testing::ElementsAre;

// Records what it is asked; a question that no test expects fails it.
class ScriptedAlerts : public Alerts {
 public:
  int runAlert(const Alert& alert, QWidget*) override {
    seen.push_back(alert);
    if (expected-- <= 0) ADD_FAILURE() << "unexpected alert: " << alert.message.toStdString();
    if (const auto meanwhile = std::exchange(whileShown, {})) meanwhile();
    return static_cast<int>(alert.buttons.size()) - 1;
  }
  std::vector<Alert> seen;
  int expected{0};
  std::function<void()> whileShown;  // once: what the user does before answering
};

class FakeStatusItem : public StatusItem {
 public:
  struct State {
    QString image;
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
  void setToolTip(const QString&) override {}
  void setMenu(QMenu* menu) override { m_state.menu = menu; }
  void setLength(double points) override { m_state.length = points; }
  [[nodiscard]] std::optional<QRectF> geometry() const override { return m_state.rectangle; }
  [[nodiscard]] QRectF anchor() const override { return m_state.rectangle; }
  void onPrimaryClick(std::function<void()> callback) override { m_state.click = std::move(callback); }
  void onGeometryChanged(std::function<void()> callback) override { m_state.moved = std::move(callback); }

 private:
  State& m_state;
};

class EntryWindowTest : public testing::Test {
 protected:
  EntryWindowTest() {
    journalURL = QUrl::fromLocalFile(home.path(u"J.quillojournal"_s));
    QLJournalPackageFile::setDefaultPackageURLProvider([this] { return config.configuredJournalFileURL(); });
    Error error;
    EXPECT_TRUE(QLJournalPackageFile::openPackage(journalURL, true, &error)) << error.description().toStdString();
    config.setConfiguredJournalFileURL(journalURL);
    newController();
  }
  ~EntryWindowTest() override { QLJournalPackageFile::setDefaultPackageURLProvider({}); }

  void newController() { controller = std::make_shared<AgentEntryWindowController>(config, alerts); }
  template <typename Widget>
  Widget* named(const char* name) {
    auto* widget = controller->window().findChild<Widget*>(QLatin1StringView(name));
    EXPECT_TRUE(widget) << name;
    return widget;
  }
  QPlainTextEdit* textView() { return named<QPlainTextEdit>("textView"); }
  void show() {
    controller->showWindowInMode(EntryWindowModeStandard);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&controller->window()));
  }
  void type(const char* text) { QTest::keyClicks(textView(), QLatin1StringView(text)); }
  void click(const char* name) { QTest::mouseClick(named<QWidget>(name), Qt::LeftButton); }
  void breakJournal() { ASSERT_TRUE(QFile::remove(journalURL.toLocalFile() + u"/Journal.plist"_s)); }
  QList<std::shared_ptr<QLJournalEntryFile>> entries() {
    Error error;
    return QLJournalIndex(QLJournalPackageFile::openPackage(journalURL, false, &error)).entries();
  }

  TestHome home;
  UserDefaults defaults{home.path(u"config"_s), Identifier::agent};
  QuilloConfig config{UserDirectories::current(), defaults, [](const char*) { return QString(); }};
  QUrl journalURL;
  ScriptedAlerts alerts;
  std::shared_ptr<AgentEntryWindowController> controller;
};

TEST_F(EntryWindowTest, ClosingKeepsTheTextAndTheEntryUntilItIsSaved) {
  show();
  type("one #tag");
  click("closeButton");
  EXPECT_FALSE(controller->window().isVisible());
  ASSERT_EQ(entries().size(), 1);
  const QString uuid = entries()[0]->uuid();

  show();
  EXPECT_EQ(textView()->toPlainText(), u"one #tag"_s);
  QTest::keyClick(textView(), Qt::Key_End);
  type(" two");
  controller->close();
  ASSERT_EQ(entries().size(), 1);
  EXPECT_EQ(entries()[0]->string(), u"one #tag two"_s);
  EXPECT_EQ(entries()[0]->tags(), QStringList{u"tag"_s});

  show();
  click("saveButton");
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_EQ(textView()->toPlainText(), QString());
  EXPECT_EQ(controller->activeEntry(), nullptr);
  ASSERT_EQ(entries().size(), 1);
  EXPECT_EQ(entries()[0]->uuid(), uuid);

  show();
  type("another");
  QTest::keyClick(textView(), Qt::Key_Return, Qt::ControlModifier);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !controller->window().isVisible(); }, 2000));
  EXPECT_EQ(entries().size(), 2);
}

TEST_F(EntryWindowTest, AnEmptiedEntryIsDeletedAndTheNextTextIsANewOne) {
  show();
  click("saveButton");
  EXPECT_TRUE(entries().isEmpty());
  show();
  type("soon gone");
  controller->close();
  const QString first = entries().value(0)->uuid();
  show();
  textView()->selectAll();
  QTest::keyClick(textView(), Qt::Key_Delete);
  controller->close();
  EXPECT_TRUE(entries().isEmpty());
  EXPECT_EQ(controller->activeEntry(), nullptr);
  show();
  type("next");
  controller->close();
  ASSERT_EQ(entries().size(), 1);
  EXPECT_NE(entries()[0]->uuid(), first);
}

TEST_F(EntryWindowTest, OnlyTheValueTwoKeepsHashtagsOutOfTheTags) {
  const struct {
    std::optional<PropertyListValue> setting;
    QStringList tags;
  } cases[] = {{std::nullopt, {u"a"_s}}, {0, {u"a"_s}}, {1, {u"a"_s}}, {2, {}}, {u"2"_s, {}}, {3, {u"a"_s}}};
  for (const auto& c : cases) {
    config.groupProperties()->setValueForKey(c.setting, Key::shouldAddHashtags);
    show();
    type("x #a");
    controller->close();
    EXPECT_EQ(entries().value(0)->tags(), c.tags);
    textView()->clear();
    show();
    controller->close();
  }
}

TEST_F(EntryWindowTest, AFailedSaveIsReportedTwiceAndLosesNothing) {
  show();
  type("kept");
  // The journal turns into one of a newer version under the open window.
  PropertyListDictionary content{{u"formatVersion"_s, 99}};
  QFile file(journalURL.toLocalFile() + u"/Journal.plist"_s);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(*PropertyListSerialization::dataWithPropertyList(content, PropertyListFormat::XML));
  file.close();
  alerts.expected = 2;
  click("saveButton");
  ASSERT_EQ(alerts.seen.size(), 2U);
  EXPECT_TRUE(alerts.seen[0].message.contains(journalURL.toLocalFile()));
  EXPECT_TRUE(alerts.seen[0].message.contains(u"newer"_s));
  EXPECT_EQ(alerts.seen[0].buttons, QStringList{u"OK"_s});
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_EQ(textView()->toPlainText(), u"kept"_s);
  EXPECT_TRUE(controller->activeEntry());
}

TEST_F(EntryWindowTest, WithNoJournalTheAlertSaysWhereToConfigureOne) {
  show();
  type("kept");
  ASSERT_TRUE(QDir(journalURL.toLocalFile()).removeRecursively());
  alerts.expected = 1;
  controller->close();
  ASSERT_EQ(alerts.seen.size(), 1U);
  EXPECT_EQ(alerts.seen[0].message, u"Quillo Journal file not found"_s);
  EXPECT_EQ(alerts.seen[0].informativeText, u"Configure the location in the application preferences."_s);
  EXPECT_EQ(alerts.seen[0].buttons, (QStringList{u"Show Preferences"_s, u"Cancel"_s}));
  EXPECT_EQ(textView()->toPlainText(), u"kept"_s);

  // The next opening tells why, and offers no editor.
  controller->showWindowInMode(EntryWindowModeStandard);
  EXPECT_TRUE(named<QWidget>("reconnectView")->isVisible());
  EXPECT_FALSE(named<QWidget>("entryContainerView")->isVisible());
  EXPECT_EQ(named<QLabel>("reconnectReason")->text(), u"There is nothing at its place:"_s);
  EXPECT_EQ(named<QLabel>("reconnectPath")->text().remove(QChar(0x200b)), journalURL.toLocalFile());
  alerts.expected = 1;
  controller->close();
}

TEST_F(EntryWindowTest, NoKeyDismissesTheWindowAndTheKeyboardReachesEverything) {
  show();
  type("x");
  for (const auto key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}) QTest::keyClick(textView(), key);
  EXPECT_TRUE(controller->window().isVisible());
  QStringList order;
  for (int i = 0; i < 3; ++i) {
    QWidget* focused = QApplication::focusWidget();
    ASSERT_TRUE(focused);
    order << focused->objectName();
    EXPECT_FALSE(focused->accessibleName().isEmpty()) << focused->objectName().toStdString();
    EXPECT_FALSE(focused->toolTip().isEmpty()) << focused->objectName().toStdString();
    QTest::keyClick(focused, Qt::Key_Tab);
  }
  EXPECT_EQ(order, (QStringList{u"textView"_s, u"saveButton"_s, u"closeButton"_s}));
}

TEST_F(EntryWindowTest, TextIsPlainAndNothingCanBeDropped) {
  show();
  auto* rich = new QMimeData;
  rich->setHtml(u"<b>bold</b> text"_s);
  rich->setText(u"bold text"_s);
  QGuiApplication::clipboard()->setMimeData(rich);
  QTest::keyClick(textView(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(textView()->toPlainText(), u"bold text"_s);
  EXPECT_FALSE(textView()->document()->toHtml().contains(u"font-weight:700"_s));
  EXPECT_FALSE(textView()->acceptDrops() || textView()->viewport()->acceptDrops());
}

TEST_F(EntryWindowTest, EveryCharacterReachesTheEntryAndFormattedTextLosesItsFormat) {
  show();
  const QString text = u"a\u00a0b\t\u2028c \U0001F4DD\n"_s;
  QGuiApplication::clipboard()->setText(text);
  QTest::keyClick(textView(), Qt::Key_V, Qt::ControlModifier);
  QTest::keyClick(textView(), Qt::Key_Return, Qt::ShiftModifier);
  auto* markupOnly = new QMimeData;
  markupOnly->setHtml(u"<b>bold</b> &amp; text"_s);
  QGuiApplication::clipboard()->setMimeData(markupOnly);
  QTest::keyClick(textView(), Qt::Key_V, Qt::ControlModifier);
  controller->close();
  EXPECT_EQ(entries().value(0)->string(), u"a\u00a0b\t\nc \U0001F4DD\n\nbold & text"_s);
}

TEST_F(EntryWindowTest, TheNumberPadsEnterSavesToo) {
  show();
  type("x");
  QTest::keyClick(textView(), Qt::Key_Enter, Qt::ControlModifier | Qt::KeypadModifier);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !controller->window().isVisible(); }, 2000));
  EXPECT_EQ(controller->activeEntry(), nullptr);
}

TEST_F(EntryWindowTest, AtTheEndOfTheProcessTextIsSavedAndNobodyIsAsked) {
  show();
  type("last words");
  EXPECT_TRUE(controller->saveForTermination());
  EXPECT_EQ(entries().value(0)->string(), u"last words"_s);
  breakJournal();
  type("!");
  const LogCapture log;
  EXPECT_FALSE(controller->saveForTermination());
  ASSERT_FALSE(log.lines().isEmpty());
  EXPECT_TRUE(log.lines().last().contains(journalURL.toLocalFile()));
}

TEST_F(EntryWindowTest, UnsavedTextMovesToTheNextWindowAndItsJournal) {
  show();
  type("homeless");
  breakJournal();
  alerts.expected = 1;
  controller->close();

  journalURL = QUrl::fromLocalFile(home.path(u"Other.quillojournal"_s));
  ASSERT_TRUE(QLJournalPackageFile::openPackage(journalURL, true, nullptr));
  config.setConfiguredJournalFileURL(journalURL);
  const auto before = controller;
  newController();
  controller->takeOverUnsavedText(*before);
  show();
  EXPECT_EQ(textView()->toPlainText(), u"homeless"_s);
  controller->close();
  EXPECT_EQ(entries().value(0)->string(), u"homeless"_s);

  // Text that is safe in the journal stays behind.
  const auto saved = controller;
  newController();
  controller->takeOverUnsavedText(*saved);
  EXPECT_EQ(textView()->toPlainText(), QString());
}

TEST_F(EntryWindowTest, WithoutACompositorTheWindowIsCutToItsOutline) {
  show();
  AgentEntryWindow& window = controller->window();
  EXPECT_TRUE(window.mask().isEmpty());
  const QRectF frame = window.frame();
  controller->close();
  window.setCompositorCheck([] { return false; });
  show();
  EXPECT_EQ(window.size(), AgentEntryWindow::frameSize.toSize());
  EXPECT_EQ(window.frame(), frame);
  EXPECT_FALSE(window.mask().contains(QPoint(0, 10)));  // a rounded corner
  EXPECT_FALSE(window.mask().contains(QPoint(60, 4)));  // beside the arrow
  EXPECT_TRUE(window.mask().contains(QPoint(164, 4)));
  EXPECT_TRUE(window.mask().contains(QPoint(2, 150)));
}

TEST_F(EntryWindowTest, AnAlertHangsOnTheWindowAndShowsTextAsItIs) {
  show();
  AlertSheet sheet;
  const Alert question{u"<b>not bold</b>"_s, u"Really?"_s, {u"Do"_s, u"Do && Not"_s}};
  const struct {
    Qt::Key key;
    int answer;
  } cases[] = {{Qt::Key_Return, 0}, {Qt::Key_Escape, 1}};
  for (const auto& c : cases) {
    QTimer::singleShot(0, [&] {
      auto* box = controller->window().findChild<QMessageBox*>();
      ASSERT_TRUE(box);
      EXPECT_TRUE(controller->window().hasAttachedSheet());
      EXPECT_EQ(box->windowModality(), Qt::WindowModal);
      EXPECT_EQ(box->textFormat(), Qt::PlainText);
      QTest::keyClick(box, c.key);
    });
    EXPECT_EQ(sheet.runAlert(question, &controller->window()), c.answer);
    EXPECT_FALSE(controller->window().hasAttachedSheet());
  }
}

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
  FakeStatusItem::State item;
  QMenu menu;
  QLXAStatusBarController status;
};

TEST_F(StatusBarControllerTest, TheItemIsSetUp) {
  EXPECT_EQ(item.menu, status.contextualMenu());
  EXPECT_EQ(item.length, 22);
  EXPECT_EQ(item.image, u"menubar-black"_s);
  EXPECT_TRUE(item.isTemplate);
}

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
  status.showEntryWindowInMode(EntryWindowModeReminder);
  EXPECT_EQ(item.image, u"menubar-red"_s);
  EXPECT_FALSE(item.isTemplate);
  EXPECT_EQ(controller->currentMode(), EntryWindowModeReminder);
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
  alerts.expected = 1;
  alerts.whileShown = [this] {
    item.click();
    item.click();
  };
  click("closeButton");
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_FALSE(status.isShowingEntryWindow() || item.highlighted);

  // The window replaced, by the last who hold it.
  item.click();
  alerts.expected = 2;
  alerts.whileShown = [this] {
    const auto before = controller;
    newController();
    controller->takeOverUnsavedText(*before);
    status.setEntryWindowController(controller);
  };
  const std::weak_ptr<AgentEntryWindowController> before = controller;
  click("closeButton");
  EXPECT_FALSE(status.isShowingEntryWindow() || item.highlighted);
  EXPECT_EQ(textView()->toPlainText(), u"kept"_s);
  EXPECT_TRUE(QTest::qWaitFor([&] { return before.expired(); }, 2000));
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
  EXPECT_EQ(flipped(QRectF(13, 66, 302, 146), 268), QRectF(13, 56, 302, 146));
  EXPECT_EQ(flipped(flipped(QRectF(1, 2, 3, 4), 100), 100), QRectF(1, 2, 3, 4));
}

}  // namespace
}  // namespace quillo
