#pragma once

#include "PTHotKey/PTHotKeyCenter.h"

#include <QString>

#include <functional>
#include <memory>

class QObject;

namespace quillo {

class PersistentPropertyList;

// The one system-wide hot key, as the shared settings have it. Main thread only.
class GlobalShortcut {
 public:
  // Told of a shortcut that does not work, in one sentence; empty once it does, or there is none.
  using Reporter = std::function<void(const QString& problem)>;

  // `action` is called for `target`. Both references must outlive the object.
  GlobalShortcut(PTHotKeyCenter& center, QObject& target, PTHotKey::Action action, Reporter report);
  // Unregisters the hot key.
  ~GlobalShortcut();
  GlobalShortcut(const GlobalShortcut&) = delete;
  GlobalShortcut& operator=(const GlobalShortcut&) = delete;

  // Drops the hot key, and registers the one that is in `list` now; none where there is no setting or no list.
  void reset(const PersistentPropertyList* list);

  // Kept whether or not the system accepted it; null where the settings have none.
  [[nodiscard]] const std::shared_ptr<PTHotKey>& hotKey() const { return m_hotKey; }

 private:
  void failed(const QString& reason);

  PTHotKeyCenter& m_center;
  QObject& m_target;
  const PTHotKey::Action m_action;
  const Reporter m_report;
  std::shared_ptr<PTHotKey> m_hotKey;
};

}  // namespace quillo
