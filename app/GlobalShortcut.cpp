#include "app/GlobalShortcut.h"

#include "config/Keys.h"
#include "config/PersistentPropertyList.h"
#include "foundation/Log.h"

namespace quillo {

using namespace Qt::StringLiterals;

// Kept exactly as it stands.
static constexpr QLatin1StringView hotKeyIdentifier{"SRTest"};

GlobalShortcut::GlobalShortcut(PTHotKeyCenter& center, QObject& target, PTHotKey::Action action, Reporter report)
    : m_center(center), m_target(target), m_action(std::move(action)), m_report(std::move(report)) {
  m_center.setStateObserver([this](PTHotKey& hotKey, HotKeyState state, const QString& reason) {
    if (&hotKey != m_hotKey.get() || state == HotKeyState::Pending) return;
    if (state == HotKeyState::Active)
      m_report({});
    else
      failed(reason);
  });
}

GlobalShortcut::~GlobalShortcut() {
  m_center.setStateObserver(nullptr);
  if (m_hotKey) m_center.unregisterHotKey(m_hotKey);
}

void GlobalShortcut::reset(const PersistentPropertyList* list) {
  if (m_hotKey) m_center.unregisterHotKey(m_hotKey);
  m_hotKey.reset();
  m_report({});
  const auto setting = list ? list->dictionaryForKey(Key::menuEntryGlobalShortcut) : std::nullopt;
  if (!setting) return;

  const quint32 modifiers = setting->value(u"modifierFlags"_s, 0).unsignedIntValue();
  const qint32 keyCode = setting->value(u"keyCode"_s, 0).intValue();
  m_hotKey = std::make_shared<PTHotKey>(QString(hotKeyIdentifier), PTKeyCombo::keyComboWithKeyCode(keyCode, modifiers));
  m_hotKey->setTarget(&m_target);
  m_hotKey->setAction(m_action);
  if (!m_center.registerHotKey(m_hotKey)) failed(hotKeyStatusText(m_center.lastStatus()));
}

void GlobalShortcut::failed(const QString& reason) {
  const QString problem =
      u"The shortcut %1 is not available: %2"_s.arg(m_hotKey->keyCombo()->description(), reason.simplified());
  QLLogWarn(problem);
  m_report(problem);
}

}  // namespace quillo
