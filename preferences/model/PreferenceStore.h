#pragma once

#include "config/QuilloConfig.h"
#include "config/Settings.h"
#include "foundation/NotificationCenter.h"
#include "platform/Registration.h"

#include <QList>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace quillo {

class UserDefaults;

struct PreferenceStoreServices {
  QuilloConfig& config;
  NotificationCenter& distributedCenter;
  NotificationCenter& localCenter;
  // The domains that hold settings of SettingStore::OwnDefaults: this program's own first, then the agent's. A setting
  // is written to all of them, so that what a person sees as one is one.
  QList<UserDefaults*> ownSettings;
};

// One setting with its new value; nothing takes it back to its default.
struct SettingChange {
  QString key;
  std::optional<PropertyListValue> value;
};

// All settings for a window that shows them: wherever each is kept, saved at once, and told to the other programs.
// Main thread only.
class PreferenceStore : public QObject {
  Q_OBJECT

 public:
  // The services must outlive the object.
  explicit PreferenceStore(PreferenceStoreServices services);

  [[nodiscard]] QuilloConfig& config() const { return m_services.config; }
  // Null while the shared list cannot be read.
  [[nodiscard]] PersistentPropertyList* list() const { return m_services.config.groupProperties(); }

  // What is stored; of a program's own setting what the first domain has that has it.
  [[nodiscard]] std::optional<PropertyListValue> storedValue(const QString& key) const;
  // The same, or the default.
  [[nodiscard]] std::optional<PropertyListValue> value(const QString& key) const;
  [[nodiscard]] bool isOn(const QString& key) const;
  // Empty for nothing, and for what is no text.
  [[nodiscard]] QString text(const QString& key) const;

  // Whether a person can change it here; what the environment says cannot be.
  [[nodiscard]] static bool isEditable(const Setting& setting);

  // Saves and tells everybody. False, with the reason in one sentence, where it could not be saved; then the setting is
  // as it was.
  bool set(const QString& key, const std::optional<PropertyListValue>& value, QString* reason);
  // Several that belong together: each notice goes out once, after the last of them.
  bool set(const std::vector<SettingChange>& changes, QString* reason);
  // Why something that was set in the shared list is not on disk; empty where all is.
  [[nodiscard]] QString whyUnsaved() const;
  // For what somebody else tells about.
  bool saveSilently(const SettingChange& change, QString* reason);
  // Posts a notice to every program.
  void tell(const QString& notice);

  // Reads everything again.
  void reread();

 Q_SIGNALS:
  // Something may read differently, whoever changed it.
  void changed();

 private:
  bool saveOwn(const SettingChange& change, QString* reason);

  PreferenceStoreServices m_services;
  std::vector<std::unique_ptr<Registration>> m_observations;
};

}  // namespace quillo
