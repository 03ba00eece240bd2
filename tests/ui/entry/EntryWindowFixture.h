#pragma once

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "entry/AgentEntryWindow.h"
#include "entry/AgentEntryWindowController.h"
#include "entry/Alerts.h"
#include "entry/EntryDraft.h"
#include "entry/OpenPanel.h"
#include "foundation/Error.h"
#include "platform/OutsideClicks.h"
#include "platform/Workspace.h"
#include "qlcore/QLJournalEntryFile.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QPlainTextEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace quillo {

using namespace Qt::StringLiterals;

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

// Keeps what to do once the user has chosen.
struct FakeOpenPanel : OpenPanel {
  void beginSheet(const QString& panelTitle, const QString& startsAt, QWidget*, std::function<void()> then) override {
    title = panelTitle;
    directory = startsAt;
    choose = std::move(then);
  }
  QString title, directory;
  std::function<void()> choose;
};

struct FakeWorkspace : Workspace {
  bool openURL(const QUrl& url) override {
    opened << url.toString();
    return accepts;
  }
  std::optional<QUrl> urlForApplication(const QString&) const override { return std::nullopt; }
  bool launchApplication(const QString&) override { return false; }
  QStringList opened;
  bool accepts{true};
};

struct FakeOutsideClicks : OutsideClicks {
  std::unique_ptr<Registration> addGlobalMonitor(std::function<void()> handler) override {
    if (!isThere) return nullptr;
    click = std::move(handler);
    return std::make_unique<Registration>([this] { click = {}; });
  }
  std::function<void()> click;
  bool isThere{true};
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

  void newController() {
    controller = std::make_shared<AgentEntryWindowController>(
        AgentEntryWindowServices{config, alerts, openPanel, draft, &workspace, &outsideClicks}, alarm);
  }
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
  FakeOpenPanel openPanel;
  EntryDraft draft{home.path(u"cache/UnsavedEntry.plist"_s)};
  FakeWorkspace workspace;
  FakeOutsideClicks outsideClicks;
  ReminderAlarm* alarm{nullptr};
  std::shared_ptr<AgentEntryWindowController> controller;
};

}  // namespace quillo
