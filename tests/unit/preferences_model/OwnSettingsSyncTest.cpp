#include "config/Keys.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"
#include "preferences/model/OwnSettingsSync.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

#include <optional>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

class OwnSettingsSyncTest : public testing::Test {
 protected:
  void begin() {
    m_sync.emplace(own, agents, local, distributed);
    m_heard.push_back(
        local.observe(Notice::spellingAndGrammarSettingsDidChange, [this](const Notification&) { ++taken; }));
    m_heard.push_back(distributed.observe(Notice::settingsDidChange, [this](const Notification&) { ++given; }));
  }
  // As the running agent does.
  UserDefaults agent() const { return UserDefaults(folder, Identifier::agent); }
  UserDefaults nextStart() const { return UserDefaults(folder, Identifier::mainApplication); }

  TestHome home;
  QString folder{home.path(u"config/quillo"_s)};
  UserDefaults own{folder, Identifier::mainApplication};
  UserDefaults agents{folder, Identifier::agent};
  NotificationCenter local;
  NotificationCenter distributed;
  int taken{0};
  int given{0};

 private:
  std::optional<OwnSettingsSync> m_sync;
  std::vector<std::unique_ptr<Registration>> m_heard;
};

TEST_F(OwnSettingsSyncTest, ASwitchOfTheAgentsComesHereAndOneOfOursGoesThere) {
  begin();
  // The folder comes with it.
  agent().setBoolForKey(false, Key::editorSpellCheckEnabled);
  EXPECT_TRUE(runUntil([&] { return taken == 1; }));
  EXPECT_FALSE(nextStart().boolForKey(Key::editorSpellCheckEnabled));
  EXPECT_EQ(own.objectForKey(Key::editorSpellCheckEnabled), PropertyListValue(false));
  EXPECT_EQ(given, 0);

  own.setBoolForKey(true, Key::editorGrammarCheckEnabled);
  EXPECT_TRUE(runUntil([&] { return given == 1; }));
  EXPECT_TRUE(agent().boolForKey(Key::editorGrammarCheckEnabled));

  // Whoever is the last to change it has the say, in both directions, and about its removal.
  own.setBoolForKey(true, Key::editorSpellCheckEnabled);
  EXPECT_TRUE(runUntil([&] { return agent().boolForKey(Key::editorSpellCheckEnabled); }));
  agent().removeObjectForKey(Key::editorSpellCheckEnabled);
  EXPECT_TRUE(runUntil([&] { return !own.objectForKey(Key::editorSpellCheckEnabled); }));
}

TEST_F(OwnSettingsSyncTest, WhatChangedWhileThisProgramDidNotRunIsTakenOverAtItsStart) {
  own.setBoolForKey(true, Key::editorSpellCheckEnabled);
  own.setBoolForKey(true, Key::markdownEnabled);
  own.setObjectForKey(PropertyListValue(u"kept"_s), u"Geometry"_s);
  agent().setBoolForKey(false, Key::editorSpellCheckEnabled);
  agent().setObjectForKey(PropertyListValue(u"its own"_s), u"JournalFileBookmarkData"_s);
  begin();
  EXPECT_FALSE(nextStart().boolForKey(Key::editorSpellCheckEnabled));
  EXPECT_TRUE(agent().boolForKey(Key::markdownEnabled)) << "the agent never had it";
  // What is no setting of both stays where it is.
  EXPECT_EQ(agent().objectForKey(u"Geometry"_s), std::nullopt);
  EXPECT_EQ(nextStart().objectForKey(u"JournalFileBookmarkData"_s), std::nullopt);
}

}  // namespace
}  // namespace quillo
