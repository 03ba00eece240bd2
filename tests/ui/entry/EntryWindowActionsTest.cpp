// The open and settings buttons, and the panel without a journal.

#include "controls/Button.h"
#include "entry/panels/OpenPanelSheet.h"
#include "tests/ui/entry/EntryWindowFixture.h"

#include <QFileDialog>
#include <QMenu>

#include <algorithm>

namespace quillo {
namespace {

using EntryWindowActionsTest = EntryWindowTest;

TEST_F(EntryWindowActionsTest, OpenHandsTheEntryOverOrLeavesEverythingAsItWas) {
  show();
  type("to be continued");
  workspace.accepts = false;
  click("openJournalButton");
  ASSERT_EQ(entries().size(), 1);
  const QString uuid = entries()[0]->uuid();
  EXPECT_EQ(workspace.opened, QStringList{u"quillo://edit?entryId="_s + uuid});
  EXPECT_TRUE(controller->window().isVisible());
  EXPECT_EQ(textView()->toPlainText(), u"to be continued"_s);

  workspace.accepts = true;
  click("openJournalButton");
  EXPECT_EQ(workspace.opened.value(1), workspace.opened.value(0));
  EXPECT_FALSE(controller->window().isVisible());
  EXPECT_EQ(textView()->toPlainText(), QString());
  EXPECT_EQ(entries().size(), 1);

  // An empty window makes an empty entry to open.
  show();
  click("openJournalButton");
  EXPECT_EQ(entries().size(), 2);
  EXPECT_NE(workspace.opened.value(2), workspace.opened.value(1));

  // What cannot be saved is not handed over.
  show();
  type("stays");
  breakJournal();
  alerts.expected = 1;
  click("openJournalButton");
  EXPECT_TRUE(controller->window().isVisible());
  EXPECT_EQ(textView()->toPlainText(), u"stays"_s);
  EXPECT_EQ(workspace.opened.size(), 3);
  alerts.expected = 1;
  controller->close();
}

TEST_F(EntryWindowActionsTest, TheSettingsButtonSpendsTheFirstItemOnItsTitle) {
  QMenu menu;
  menu.addAction(u"first"_s);
  controller->setContextualMenu(&menu);
  for (int round = 0; round < 2; ++round) {
    show();
    click("settingsButton");
    ASSERT_TRUE(menu.isVisible());
    // One blank item for this controller, however often the menu opens, and it is not shown.
    ASSERT_EQ(menu.actions().size(), 2);
    EXPECT_TRUE(menu.actions()[0]->text().isEmpty());
    EXPECT_FALSE(menu.actions()[0]->isVisible());
    const auto* frame = named<QWidget>("contextualMenuFrame");
    EXPECT_EQ(menu.pos(), frame->mapToGlobal(frame->rect().bottomLeft()));
    menu.close();
    controller->close();
  }
  // The next controller's blank item comes on top; the one before stays, as a blank line.
  newController();
  controller->setContextualMenu(&menu);
  show();
  click("settingsButton");
  ASSERT_EQ(menu.actions().size(), 3);
  EXPECT_FALSE(menu.actions()[0]->isVisible());
  EXPECT_TRUE(menu.actions()[1]->isVisible() && menu.actions()[1]->text().isEmpty());
  menu.close();
}

TEST_F(EntryWindowActionsTest, ReconnectingShowsTheEditorAgainAndTheDraftThatWaitedForIt) {
  EntryDraft(draftPath).write({u"come "_s, {}, {}});
  const QString path = journalURL.toLocalFile();
  ASSERT_TRUE(QDir().rename(path, path + u".away"_s));
  show();
  EXPECT_FALSE(textView()->isVisible());
  EXPECT_EQ(textView()->toPlainText(), QString());
  click("reconnectButton");
  EXPECT_EQ(openPanel.title, u"Choose Quillo Journal Location"_s);
  EXPECT_EQ(openPanel.directory, path);
  // Chosen too early: the panel stays.
  openPanel.choose(path);
  EXPECT_FALSE(textView()->isVisible());
  ASSERT_TRUE(QDir().rename(path + u".away"_s, path));
  openPanel.choose(home.path());
  EXPECT_TRUE(textView()->isVisible());
  EXPECT_FALSE(named<QWidget>("reconnectView")->isVisible());
  EXPECT_EQ(config.configuredJournalFileURL(), journalURL);
  type("back");
  controller->close();
  EXPECT_EQ(entries().value(0)->string(), u"come back"_s);
}

TEST_F(EntryWindowActionsTest, WithNoJournalOneIsMadeOrChosenOnTheSpot) {
  const QString documents = home.path(u"Documents"_s);
  const QUrl first = QUrl::fromLocalFile(documents + u"/Journal.quillojournal"_s);
  const QUrl second = QUrl::fromLocalFile(documents + u"/Journal 2.quillojournal"_s);
  const auto occupy = [&] {
    ASSERT_TRUE(QDir(first.toLocalFile()).removeRecursively());
    ASSERT_TRUE(QFile(first.toLocalFile()).open(QIODevice::WriteOnly));
  };
  const struct {
    const char* name;
    std::function<void()> before;
    const char* button;
    QString title;
    QUrl journal;
  } cases[] = {{"none", {}, "createJournalButton", u"Create Journal"_s, first},
               {"there is one", {}, "createJournalButton", u"Use Journal"_s, first},
               {"something else is there", occupy, "createJournalButton", u"Create Journal"_s, second},
               {"chosen", {}, "chooseJournalButton", u"Use Journal"_s, journalURL}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    if (c.before) c.before();
    config.setConfiguredJournalFileURL(std::nullopt);
    show();
    EXPECT_FALSE(named<QWidget>("reconnectButton")->isVisible());
    EXPECT_EQ(named<Button>("createJournalButton")->title(), c.title);
    click(c.button);
    if (c.journal == journalURL) {
      EXPECT_EQ(openPanel.directory, documents);
      alerts.expected = 1;
      openPanel.choose(documents);  // no journal
      EXPECT_EQ(config.configuredJournalFileURL(), std::nullopt);
      openPanel.choose(journalURL.toLocalFile());
    }
    // Saved for the other programs, and the keyboard is in the editor.
    const auto saved = PersistentPropertyList::withPropertyListURL(config.groupProperties()->propertyListURL());
    EXPECT_EQ(saved->URLForKey(Key::journalPackageURL), c.journal);
    ASSERT_TRUE(textView()->isVisible());
    QTest::keyClicks(controller->window().focusWidget(), QLatin1StringView(c.name));
    click("saveButton");
    const auto written = QLJournalIndex(QLJournalPackageFile::openPackage(c.journal, false, nullptr)).entries();
    EXPECT_TRUE(std::any_of(written.begin(), written.end(),
                            [&](const auto& entry) { return entry->string() == QLatin1StringView(c.name); }));
  }

  // The main application asks for all of it; where that is not to be had, this is told.
  config.setConfiguredJournalFileURL(std::nullopt);
  show();
  click("setUpButton");
  EXPECT_EQ(workspace.opened, QStringList{u"quillo://setup"_s});
  EXPECT_FALSE(controller->window().isVisible());
  workspace.accepts = false;
  alerts.expected = 1;
  show();
  click("setUpButton");
  EXPECT_TRUE(controller->window().isVisible());
  controller->close();

  // Where none can be made, the reason is told and the panel stays.
  config.setConfiguredJournalFileURL(std::nullopt);
  ASSERT_TRUE(QDir(documents).removeRecursively());
  ASSERT_TRUE(QFile(documents).open(QIODevice::WriteOnly));
  show();
  alerts.expected = 1;
  click("createJournalButton");
  EXPECT_TRUE(alerts.seen.back().message.contains(documents)) << alerts.seen.back().message.toStdString();
  EXPECT_TRUE(named<QWidget>("reconnectView")->isVisible());
}

TEST_F(EntryWindowActionsTest, ThePanelBeginsAtTheJournalOrNearestToIt) {
  show();
  const QString there = home.path(u"there"_s);
  ASSERT_TRUE(QDir().mkpath(there + u"/J"_s));
  const struct {
    QString path, begins;
  } cases[] = {{there + u"/J"_s, there + u"/J"_s}, {there + u"/gone"_s, there}, {there + u"/drive/gone/J"_s, there}};
  OpenPanelSheet sheet;
  for (const auto& c : cases) {
    QString chosen;
    // A second one is not opened beside it.
    for (int i = 0; i < 2; ++i)
      sheet.beginSheet(u"Choose"_s, c.path, &controller->window(), [&](const QString& path) { chosen = path; });
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto panels = controller->window().findChildren<QFileDialog*>();
    ASSERT_EQ(panels.size(), 1);
    EXPECT_EQ(panels[0]->windowTitle(), u"Choose"_s);
    EXPECT_EQ(panels[0]->directory().path(), c.begins) << c.path.toStdString();
    EXPECT_TRUE(controller->window().hasAttachedSheet());
    panels[0]->selectFile(there);
    QTest::keyClick(panels[0], Qt::Key_Return);
    EXPECT_EQ(chosen, there);
  }
  // Closed under it, by the icon, the window takes it along.
  sheet.beginSheet(u"Choose"_s, there, &controller->window(), [](const QString&) { ADD_FAILURE(); });
  controller->close();
  EXPECT_FALSE(controller->window().hasAttachedSheet());
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_FALSE(controller->window().findChild<QFileDialog*>());
}

}  // namespace
}  // namespace quillo
