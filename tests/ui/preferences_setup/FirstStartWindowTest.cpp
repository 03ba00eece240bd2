// The first start by mouse and keyboard: what it proposes, what it writes, and that it writes nothing before its end.

#include "PTHotKey/PTKeyCodeTranslator.h"
#include "PTHotKey/ShortcutText.h"
#include "app/switches/AgentManager.h"
#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "platform/HelperProcesses.h"
#include "preferences/controls/ChoiceCard.h"
#include "preferences/setup/FirstStartWindow.h"
#include "qlcore/QLJournalPackageFile.h"
#include "tests/support/FakeKeyboardLayouts.h"
#include "tests/support/FakePanels.h"
#include "tests/support/TestHome.h"
#include "tests/ui/preferences/FormPicture.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

class FirstStartWindowTest : public testing::Test {
 protected:
  FirstStartWindowTest() {
    PTKeyCodeTranslator::setKeyboardLayouts(&layouts);
    makeWindow();
  }
  ~FirstStartWindowTest() override {
    window.reset();
    PTKeyCodeTranslator::setKeyboardLayouts(nullptr);
  }

  void makeWindow() {
    window = std::make_unique<FirstStartWindow>(
        FirstStartWindowServices{.proposed = FirstStart::suggested(config),
                                 .shortcut = {.keyCode = [](const QKeyEvent& event) -> std::optional<qint64> {
                                   return event.key() == Qt::Key_K ? std::optional<qint64>(40) : std::nullopt;
                                 }},
                                 .openPanel = openPanel,
                                 .apply =
                                     [this](const FirstStart& choice, Error* error) {
                                       applied.push_back(choice);
                                       return applies || fail(error, cocoaError(512, u"The disk is full."_s));
                                     },
                                 .startAgent =
                                     [this](const FirstStart&, QString* reason) {
                                       *reason = u"it ended at once"_s;
                                       return starts;
                                     },
                                 .finished =
                                     [this](const FirstStart& choice) {
                                       ++timesFinished;
                                       bringsEntriesIn = choice.bringsEntriesIn;
                                     }});
    window->showWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
  }
  template <typename Widget = QPushButton>
  Widget* named(const char* name) {
    auto* widget = window->findChild<Widget*>(QLatin1StringView(name));
    EXPECT_TRUE(widget) << name;
    return widget;
  }
  void press(const char* button) { QTest::mouseClick(named(button), Qt::LeftButton); }
  QString title() { return named<QLabel>("stepTitle")->text(); }
  QString shown(const char* label) { return named<QLabel>(label)->text(); }
  // Every part that can have the keyboard has a name, and nothing is cut off.
  void expectAllIsShown(const QString& picture) {
    QCoreApplication::processEvents();
    savePicture(*window, picture);
    for (QWidget* part : window->findChildren<QWidget*>()) {
      const bool isText = qobject_cast<QLabel*>(part) != nullptr;
      if (!part->isVisible() || qobject_cast<QLineEdit*>(part)) continue;
      if (part->focusPolicy() == Qt::NoFocus && !isText) continue;
      SCOPED_TRACE(part->objectName().toStdString() + " in " + picture.toStdString());
      if (!isText) {
        EXPECT_FALSE(QAccessible::queryAccessibleInterface(part)->text(QAccessible::Name).isEmpty());
        EXPECT_GE(part->width(), part->minimumSizeHint().width());
      }
      EXPECT_GE(part->height(), isText ? part->heightForWidth(part->width()) : part->minimumSizeHint().height());
      EXPECT_TRUE(window->rect().contains(QRect(part->mapTo(window.get(), QPoint()), part->size())));
    }
  }

  TestHome home;
  UserDefaults defaults{home.path(u".config"_s), u"test"_s};
  QuilloConfig config{UserDirectories::current(), defaults, [](const char*) { return QString(); }};
  FakeKeyboardLayouts layouts;
  FakeOpenPanel openPanel;
  std::vector<FirstStart> applied;
  bool applies{true};
  bool starts{true};
  int timesFinished{0};
  bool bringsEntriesIn{false};
  std::unique_ptr<FirstStartWindow> window;
};

TEST_F(FirstStartWindowTest, WithTheKeyboardAloneWhatIsProposedIsTaken) {
  for (const auto* expected :
       {"Where shall your journal live?", "When shall Quillo remind you?", "A key from anywhere"}) {
    EXPECT_EQ(title(), QLatin1StringView(expected));
    EXPECT_TRUE(applied.empty());
    ASSERT_TRUE(QApplication::focusWidget());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  }
  ASSERT_EQ(applied.size(), 1);
  EXPECT_EQ(applied[0].chosenJournal().toLocalFile(), home.path(u"Documents/Journal.quillojournal"_s));
  EXPECT_EQ(applied[0].reminders.inWords(), u"Every day at 21:00."_s);
  EXPECT_EQ(wordsForKeyCombo(*applied[0].shortcut), u"Super+Shift+J"_s);
  EXPECT_EQ(applied[0].agent, FirstStart::Agent::StartsAtLogin);
  EXPECT_EQ(timesFinished, 1);
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(QDir(home.path(u"Documents"_s)).exists());
}

TEST_F(FirstStartWindowTest, StepsAreSkippedAndGoneBackTo) {
  press("skip");
  press("primary");
  press("back");
  named<QSpinBox>("reminderCount")->setValue(3);
  press("skip");
  EXPECT_EQ(shown("summaryJournal"), u"No journal yet."_s);
  EXPECT_EQ(shown("summaryReminders"), u"No reminders."_s);
  press("back");
  EXPECT_EQ(named<QSpinBox>("reminderCount")->value(), 3);
  press("back");
  EXPECT_TRUE(named("back")->isHidden());
  press("primary");
  press("primary");
  EXPECT_TRUE(shown("summaryJournal").contains(u"~/Documents/Journal.quillojournal"_s));
  EXPECT_EQ(shown("summaryReminders"), u"Reminders: every 3 days at 21:00."_s);
  QTest::mouseClick(named("shortcut"), Qt::LeftButton);
  QTest::keyClick(named("shortcut"), Qt::Key_K, Qt::ControlModifier | Qt::AltModifier);
  QTest::mouseClick(named<QCheckBox>("startsAtLogin"), Qt::LeftButton);
  EXPECT_TRUE(applied.empty());
  press("primary");
  ASSERT_EQ(applied.size(), 1);
  EXPECT_EQ(wordsForKeyCombo(*applied[0].shortcut), u"Alt+Ctrl+K"_s);
  EXPECT_EQ(applied[0].agent, FirstStart::Agent::StartsNow);
  // The last step skipped, too: nothing but what the first two said.
  makeWindow();
  press("primary");
  press("skip");
  press("skip");
  ASSERT_EQ(applied.size(), 2);
  EXPECT_TRUE(applied[1].shortcut->isClearCombo());
  EXPECT_FALSE(applied[1].reminders.isOn);
  EXPECT_EQ(applied[1].agent, FirstStart::Agent::StartsNow);
}

TEST_F(FirstStartWindowTest, AJournalIsChosenAndCheckedOnTheSpot) {
  QDir().mkpath(home.path(u"Folder"_s));
  const QUrl old = QUrl::fromLocalFile(home.path(u"Old.quillojournal"_s));
  ASSERT_TRUE(QLJournalPackageFile::openPackage(old, /*create=*/true, nullptr));
  press("changeFolder");
  openPanel.choose(home.path(u"Folder"_s));
  EXPECT_EQ(named<ChoiceCard>("newJournal")->explanation(), u"Folder / Journal.quillojournal"_s);
  // Where there is a journal already, that one is meant.
  openPanel.choose(old.toLocalFile());
  EXPECT_TRUE(named<ChoiceCard>("existingJournal")->isChecked());
  EXPECT_EQ(named<ChoiceCard>("existingJournal")->explanation(), u"Old.quillojournal"_s);

  // The card alone says which; going on asks for it, and goes on with it.
  makeWindow();
  named<ChoiceCard>("existingJournal")->click();
  openPanel.choose = {};
  press("primary");
  ASSERT_TRUE(openPanel.choose);
  openPanel.choose(home.path(u"Folder"_s));
  EXPECT_TRUE(shown("journalProblem").contains(u"not a journal"_s)) << shown("journalProblem").toStdString();
  EXPECT_EQ(title(), u"Where shall your journal live?"_s);
  openPanel.choose(old.toLocalFile());
  EXPECT_EQ(title(), u"When shall Quillo remind you?"_s);
  EXPECT_EQ(window->result().chosenJournal(), old);

  // Somebody else puts something there meanwhile.
  makeWindow();
  ASSERT_TRUE(QDir().mkpath(home.path(u"Documents/Journal.quillojournal"_s)));
  press("primary");
  EXPECT_TRUE(shown("journalProblem").contains(u"something already"_s));
  EXPECT_TRUE(applied.empty());
}

TEST_F(FirstStartWindowTest, EntriesOfAnotherProgramComeIntoANewJournal) {
  makeWindow();
  named<ChoiceCard>("newJournal")->setFocus();
  for (int i = 0; i < 2; ++i) QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
  EXPECT_TRUE(named<ChoiceCard>("bringEntriesIn")->isChecked());
  expectAllIsShown(u"journal-brought-in"_s);
  EXPECT_EQ(window->result().chosenJournal(), window->result().newJournal);
  for (int step = 0; step < 3; ++step) press("primary");
  EXPECT_TRUE(bringsEntriesIn);
  // Not where the journal is another, or none, after all.
  for (const char* other : {"existingJournal", "skip"}) {
    makeWindow();
    named<ChoiceCard>("bringEntriesIn")->click();
    QTest::mouseClick(named<QAbstractButton>(other), Qt::LeftButton);
    EXPECT_FALSE(window->result().bringsEntriesIn) << other;
  }
}

TEST_F(FirstStartWindowTest, WhatFailsIsSaidAndNothingChosenIsLost) {
  const QSize sizeBefore = window->size();
  for (int step = 0; step < 2; ++step) press("primary");
  applies = false;
  press("primary");
  EXPECT_EQ(shown("problem"), u"The disk is full."_s);
  expectAllIsShown(u"first-start-3-problem"_s);
  EXPECT_EQ(window->size(), sizeBefore) << "what is said finds its room";
  EXPECT_TRUE(window->isVisible() && named("primary")->isEnabled());
  EXPECT_EQ(timesFinished, 0);
  applies = true;
  starts = false;
  press("primary");
  EXPECT_EQ(shown("problem"), u"All of it is saved, but the quill did not come: it ended at once."_s);
  EXPECT_EQ(timesFinished, 1);
  // It is not written once more.
  press("primary");
  EXPECT_EQ(applied.size(), 2);
  EXPECT_FALSE(window->isVisible());
  // Closed before the end, nothing is.
  makeWindow();
  press("primary");
  QTest::keyClick(window.get(), Qt::Key_Escape);
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(applied.size(), 2);
}

TEST_F(FirstStartWindowTest, IsReadOutAndLooksWell) {
  for (const bool isDark : {false, true}) {
    QApplication::setPalette(desktopPalette(isDark));
    makeWindow();
    for (int step = 0; step < 3; ++step) {
      EXPECT_EQ(QAccessible::queryAccessibleInterface(window.get())->text(QAccessible::Description), title());
      expectAllIsShown(u"first-start-%1-%2"_s.arg(step + 1).arg(isDark ? u"dark"_s : u"light"_s));
      if (step < 2) press("primary");
    }
  }
  QApplication::setPalette(QPalette());

  // Where the most is to be said.
  makeWindow();
  press("primary");
  const QSize sizeBefore = window->size();
  named<QComboBox>("reminderUnit")->setCurrentIndex(1);
  for (const char* way : {"reminderWindow", "reminderNotification"}) named<QCheckBox>(way)->setChecked(false);
  expectAllIsShown(u"first-start-2-most"_s);
  EXPECT_EQ(window->size(), sizeBefore);
}

// What the choices become in the settings, and as files.
TEST_F(FirstStartWindowTest, ChoicesAreWrittenAndTold) {
  struct NoHelper : HelperProcesses {
    bool start(QString*) override { return true; }
    bool waitForAnswer(QString*) override { return true; }
    bool end(QString*) override { return true; }
  } agent;
  QStringList posted;
  const FirstStartServices services{.config = config,
                                    .post = [&posted](const QString& name) { posted << name; },
                                    .agentManager = &AgentManager::sharedManager,
                                    .loginItemServices = {},
                                    .agent = agent};
  FirstStart start = FirstStart::suggested(config);
  Error error;
  ASSERT_TRUE(start.apply(services, &error)) << error.description().toStdString();
  const PersistentPropertyList& list = *config.groupProperties();
  EXPECT_EQ(config.configuredJournalFileURL(), start.newJournal);
  EXPECT_TRUE(list.boolForKey(Key::keepEntryWindowOnScreen) && list.boolForKey(Key::escapeClosesEntryWindow));
  EXPECT_TRUE(list.boolForKey(Key::remindersEnabled) && list.boolForKey(Key::remindersOpenMenuBar));
  for (const auto notice : {Notice::journalPackagePathDidChange, Notice::reminderSettingsDidChange,
                            Notice::remindersManagerValuesDidChange, Notice::menuBarEntryShortcutDidChange})
    EXPECT_TRUE(posted.contains(notice)) << notice.data();

  // A second time it proposes what is there, and makes nothing over it.
  const FirstStart again = FirstStart::suggested(config);
  EXPECT_EQ(again.chosenJournal(), start.newJournal);
  EXPECT_EQ(again.journal, FirstStart::Journal::Existing);
  EXPECT_NE(again.newJournal, start.newJournal);
  EXPECT_FALSE(start.apply(services, &error));
  EXPECT_TRUE(error.localizedDescription.contains(u"something already"_s));
}

}  // namespace
}  // namespace quillo
