#pragma once

#include "PTHotKey/PTKeyCombo.h"
#include "foundation/PropertyListValue.h"
#include "platform/HotKeys.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <optional>

namespace quillo {

// The record of one hot key: what finds it again, its combination, and whom a press calls. While it is registered, the
// registry keeps it; destroying it does not unregister it. Main thread only.
class PTHotKey {
 public:
  using Action = std::function<void(PTHotKey&)>;

  PTHotKey() : PTHotKey(std::nullopt, nullptr) {}
  PTHotKey(const std::optional<PropertyListValue>& identifier, const PTKeyCombo::Pointer& keyCombo);
  PTHotKey(const PTHotKey&) = delete;
  PTHotKey& operator=(const PTHotKey&) = delete;

  // The caller's key for finding the hot key again; anything that compares.
  [[nodiscard]] const std::optional<PropertyListValue>& identifier() const { return m_identifier; }
  void setIdentifier(const std::optional<PropertyListValue>& identifier) { m_identifier = identifier; }
  // For display; the registry does not use it.
  [[nodiscard]] const QString& name() const { return m_name; }
  void setName(const QString& name) { m_name = name; }
  // Never null: null becomes the clear combination. That of a registered hot key changes nothing until it is
  // registered again.
  [[nodiscard]] const PTKeyCombo::Pointer& keyCombo() const { return m_keyCombo; }
  void setKeyCombo(const PTKeyCombo::Pointer& keyCombo);
  // Not owned; a target that is gone, or none, is not called.
  [[nodiscard]] QObject* target() const { return m_target; }
  void setTarget(QObject* target) { m_target = target; }
  [[nodiscard]] const Action& action() const { return m_action; }
  void setAction(Action action) { m_action = std::move(action); }

  // The registry's: its number and the platform's claim while registered, else 0.
  [[nodiscard]] quint64 carbonHotKeyID() const { return m_carbonHotKeyID; }
  void setCarbonHotKeyID(quint64 id) { m_carbonHotKeyID = id; }
  [[nodiscard]] HotKeyRef carbonEventHotKeyRef() const { return m_carbonEventHotKeyRef; }
  void setCarbonEventHotKeyRef(HotKeyRef ref) { m_carbonEventHotKeyRef = ref; }

  // Calls the action for the target, with the hot key itself.
  void invoke();
  [[nodiscard]] QString description() const;

 private:
  std::optional<PropertyListValue> m_identifier;
  QString m_name;
  PTKeyCombo::Pointer m_keyCombo;
  QPointer<QObject> m_target;
  Action m_action;
  quint64 m_carbonHotKeyID{0};
  HotKeyRef m_carbonEventHotKeyRef{0};
};

}  // namespace quillo
