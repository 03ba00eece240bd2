#include "preferences/model/PreferenceStore.h"

#include "config/Keys.h"
#include "foundation/UserDefaults.h"

#include <QSet>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

QString notSaved(const std::optional<Error>& error) {
  return u"Not saved: "_s + (error ? error->localizedDescription : u"the reason is unknown"_s);
}

}  // namespace

PreferenceStore::PreferenceStore(PreferenceStoreServices services) : m_services(std::move(services)) {
  QSet<QString> notices;
  for (const Setting& setting : settingsTable())
    if (!setting.notice.isEmpty()) notices.insert(setting.notice);
  for (const QString& notice : std::as_const(notices))
    m_observations.push_back(m_services.distributedCenter.observe(notice, [this](const Notification&) { reread(); }));
  // By this window, by a text's menu, or by the agent, which tells nobody of it.
  m_observations.push_back(m_services.localCenter.observe(Notice::spellingAndGrammarSettingsDidChange,
                                                          [this](const Notification&) { Q_EMIT changed(); }));
}

void PreferenceStore::reread() {
  if (PersistentPropertyList* shared = list()) shared->synchronize();
  bool ownChanged = false;
  for (UserDefaults* domain : std::as_const(m_services.ownSettings)) ownChanged = domain->synchronize() || ownChanged;
  if (ownChanged)
    m_services.localCenter.postNotification(Notice::spellingAndGrammarSettingsDidChange);
  else
    Q_EMIT changed();
}

std::optional<PropertyListValue> PreferenceStore::storedValue(const QString& key) const {
  const Setting* setting = settingForKey(key);
  if (!setting || setting->store == SettingStore::Environment) return std::nullopt;
  if (setting->store == SettingStore::OwnDefaults) {
    for (const UserDefaults* domain : m_services.ownSettings)
      if (const auto found = domain->persistentDomain().find(key); found != domain->persistentDomain().cend())
        return *found;
    return std::nullopt;
  }
  const PersistentPropertyList* shared = list();
  if (auto stored = shared ? shared->valueForKey(key) : std::nullopt; stored && !stored->isNull()) return stored;
  return std::nullopt;
}

std::optional<PropertyListValue> PreferenceStore::value(const QString& key) const {
  if (auto stored = storedValue(key)) return stored;
  const Setting* setting = settingForKey(key);
  if (setting && setting->store == SettingStore::Environment && setting->type == SettingType::Bool)
    return PropertyListValue(m_services.config.shouldAllowWebInspector());
  return setting ? setting->defaultValue() : std::nullopt;
}

bool PreferenceStore::isOn(const QString& key) const {
  const auto found = value(key);
  return found && found->boolValue();
}

QString PreferenceStore::text(const QString& key) const {
  const auto found = value(key);
  return found && found->isString() ? found->string() : QString();
}

bool PreferenceStore::isEditable(const Setting& setting) {
  return setting.store != SettingStore::Environment;
}

bool PreferenceStore::set(const QString& key, const std::optional<PropertyListValue>& value, QString* reason) {
  return set(std::vector<SettingChange>{{key, value}}, reason);
}

bool PreferenceStore::set(const std::vector<SettingChange>& changes, QString* reason) {
  QStringList notices;
  bool isSaved = true;
  for (const SettingChange& change : changes) {
    if (!saveSilently(change, reason)) {
      isSaved = false;
      continue;
    }
    if (const Setting* setting = settingForKey(change.key))
      for (const QString& notice : setting->noticesAfterChange())
        if (!notices.contains(notice)) notices << notice;
  }
  for (const QString& notice : std::as_const(notices)) tell(notice);
  if (!isSaved) Q_EMIT changed();
  return isSaved;
}

void PreferenceStore::tell(const QString& notice) {
  m_services.distributedCenter.postNotification(notice);
}

bool PreferenceStore::saveSilently(const SettingChange& change, QString* reason) {
  const Setting* setting = settingForKey(change.key);
  if (setting && setting->store == SettingStore::OwnDefaults) return saveOwn(change, reason);
  const auto before = storedValue(change.key);
  PersistentPropertyList* shared = list();
  if (shared) shared->setValueForKey(change.value, change.key);
  const QString problem = whyUnsaved();
  if (problem.isEmpty()) return true;
  *reason = problem;
  // The list would go on with it, and save it some day without a word to anybody.
  if (shared) shared->setValueForKey(before, change.key);
  return false;
}

QString PreferenceStore::whyUnsaved() const {
  Error error;
  const PersistentPropertyList* shared = m_services.config.groupProperties(&error);
  if (!shared) return notSaved(error);
  return shared->dirtyProperties().isEmpty() ? QString() : notSaved(shared->lastError());
}

bool PreferenceStore::saveOwn(const SettingChange& change, QString* reason) {
  bool isSaved = true;
  for (UserDefaults* domain : std::as_const(m_services.ownSettings)) {
    const auto found = domain->persistentDomain().find(change.key);
    const auto before = found == domain->persistentDomain().cend() ? std::nullopt : std::optional(*found);
    domain->setObjectForKey(change.value, change.key);
    if (!domain->lastError()) continue;
    *reason = notSaved(domain->lastError());
    domain->setObjectForKey(before, change.key);
    isSaved = false;
  }
  // The text views of this program take over what was set for it just now.
  m_services.localCenter.postNotification(Notice::spellingAndGrammarSettingsDidChange);
  return isSaved;
}

}  // namespace quillo
