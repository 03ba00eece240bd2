#include "PTHotKey/PTHotKey.h"

namespace quillo {

using namespace Qt::StringLiterals;

PTHotKey::PTHotKey(const std::optional<PropertyListValue>& identifier, const PTKeyCombo::Pointer& keyCombo) {
  setIdentifier(identifier);
  setKeyCombo(keyCombo);
}

void PTHotKey::setKeyCombo(const PTKeyCombo::Pointer& keyCombo) {
  m_keyCombo = keyCombo ? keyCombo : PTKeyCombo::clearKeyCombo();
}

void PTHotKey::invoke() {
  if (!m_target) return;
  // A copy, as the action may set another.
  if (const Action action = m_action) action(*this);
}

QString PTHotKey::description() const {
  const QString identifier = m_identifier ? m_identifier->description() : u"(null)"_s;
  return u"<PTHotKey: %1, %2>"_s.arg(identifier, m_keyCombo->description());
}

}  // namespace quillo
