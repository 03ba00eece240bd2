// The hot key that the settings name, as the delegate keeps it.

#include "AppDelegateFixture.h"

namespace quillo {
namespace {

class GlobalShortcutTest : public AppDelegateTest {
 protected:
  // As the other application writes it.
  void setShortcut(const PropertyListValue& value) {
    list().setObjectForKey(value, Key::menuEntryGlobalShortcut);
    distributedCenter.postNotification(Notice::menuBarEntryShortcutDidChange);
  }
};

TEST_F(GlobalShortcutTest, TheHotKeyTogglesAndFollowsTheSetting) {
  list().setObjectForKey(PropertyListDictionary{{u"keyCode"_s, 38}, {u"modifierFlags"_s, 768}},
                         Key::menuEntryGlobalShortcut);
  delegate->showMainApplicationWindow();
  const auto* status = delegate->statusController();
  hotKeys.press(38, 768);
  EXPECT_TRUE(status->isShowingEntryWindow());
  EXPECT_EQ(status->currentMode(), EntryWindowModeStandard);
  hotKeys.press(38, 768);
  EXPECT_FALSE(status->isShowingEntryWindow());

  const struct {
    PropertyListValue setting;
    std::optional<FakeHotKeys::Claim> claim;  // but for the number
    bool hasHotKey;
  } cases[] = {
      {PropertyListDictionary{{u"keyCode"_s, 40}, {u"modifierFlags"_s, u"256"_s}}, {{40, 256, {}}}, true},
      {PropertyListDictionary{{u"keyCode"_s, 40}, {u"modifierFlags"_s, -1}}, {{40, 0xFFFFFFFF, {}}}, true},
      {PropertyListDictionary{{u"modifierFlags"_s, 256}}, {{0, 256, {}}}, true},
      // The other form of a combination names its modifiers differently.
      {PropertyListDictionary{{u"keyCode"_s, 40}, {u"modifiers"_s, 256}}, {}, true},
      {PropertyListDictionary{{u"keyCode"_s, -1}, {u"modifierFlags"_s, 256}}, {}, true},
      {u"no dictionary"_s, {}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.setting.description().toStdString());
    setShortcut(c.setting);
    ASSERT_EQ(hotKeys.claims.size(), c.claim ? 1U : 0U);
    EXPECT_EQ(delegate->globalHotKey() != nullptr, c.hasHotKey);
    if (!c.claim) continue;
    EXPECT_EQ(hotKeys.claims.begin()->second.keyCode, c.claim->keyCode);
    EXPECT_EQ(hotKeys.claims.begin()->second.modifiers, c.claim->modifiers);
    EXPECT_EQ(delegate->globalHotKey()->identifier(), PropertyListValue(u"SRTest"_s));
  }
}

TEST_F(GlobalShortcutTest, AShortcutThatIsRefusedIsSaidAndKept) {
  const PropertyListDictionary shortcut{{u"keyCode"_s, 36}, {u"modifierFlags"_s, 768}};
  delegate->showMainApplicationWindow();
  LogCapture log;
  hotKeys.refusal = HotKeyStatus::alreadyClaimed;
  setShortcut(shortcut);
  const QString problem = u"The shortcut ⌘⇧↩ is not available: another program has claimed it"_s;
  EXPECT_TRUE(log.takeLines().endsWith(problem));
  EXPECT_TRUE(SilentStatusItem::toolTip().endsWith(u'\n' + problem));
  EXPECT_NE(delegate->globalHotKey(), nullptr);

  // Accepted at first, and refused when the user was asked.
  hotKeys.refusal = HotKeyStatus::done;
  setShortcut(PropertyListDictionary{{u"keyCode"_s, 36}, {u"modifierFlags"_s, 256}});
  EXPECT_FALSE(SilentStatusItem::toolTip().contains(u'\n'));
  hotKeys.stateObserver(hotKeys.lastRef, HotKeyState::Refused, u"it was declined"_s);
  EXPECT_TRUE(log.takeLines().endsWith(u"The shortcut ⌘↩ is not available: it was declined"_s));
  EXPECT_TRUE(SilentStatusItem::toolTip().endsWith(u"declined"_s));
  hotKeys.stateObserver(hotKeys.lastRef, HotKeyState::Active, {});
  EXPECT_FALSE(SilentStatusItem::toolTip().contains(u'\n'));
}

}  // namespace
}  // namespace quillo
