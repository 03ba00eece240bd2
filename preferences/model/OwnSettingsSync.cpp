#include "preferences/model/OwnSettingsSync.h"

#include "config/Keys.h"
#include "foundation/NotificationCenter.h"
#include "foundation/UserDefaults.h"

#include <QDir>
#include <QFileInfo>

#include <array>

namespace quillo {

namespace {

constexpr std::array keysOfBoth{
    Key::editorSpellCheckEnabled, Key::editorGrammarCheckEnabled, Key::editorCorrectSpellingEnabled,
    Key::markdownEnabled,         Key::locationNMEASource,        Key::weatherServiceURL,
    Key::grammarServerURL};

using Value = std::optional<PropertyListValue>;

Value stored(const PropertyListDictionary& values, const QString& key) {
  const auto found = values.find(key);
  return found == values.cend() ? std::nullopt : Value(*found);
}

}  // namespace

OwnSettingsSync::OwnSettingsSync(UserDefaults& own, UserDefaults& agents, NotificationCenter& localCenter,
                                 NotificationCenter& distributedCenter)
    : m_own(own), m_agents(agents), m_localCenter(localCenter), m_distributedCenter(distributedCenter) {
  // Nothing is known yet: what the agent has is the newer, as whatever this program changes goes to the agent at once.
  reconcile();
  connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
    watchFolder();
    reconcile();
  });
  watchFolder();
}

// The folder comes with the first setting; until then one above it tells of that.
void OwnSettingsSync::watchFolder() {
  QString folder = QFileInfo(m_agents.path()).absolutePath();
  while (!QFileInfo(folder).isDir() && !QDir(folder).isRoot()) folder = QFileInfo(folder).path();
  const QStringList before = m_watcher.directories();
  if (before == QStringList{folder}) return;
  if (!before.isEmpty()) m_watcher.removePaths(before);
  m_watcher.addPath(folder);
}

void OwnSettingsSync::reconcile() {
  m_own.synchronize();
  m_agents.synchronize();
  bool isTaken = false;
  bool isGiven = false;
  for (const QLatin1StringView key : keysOfBoth) {
    const Value own = stored(m_own.persistentDomain(), key);
    const Value agents = stored(m_agents.persistentDomain(), key);
    if (own == agents) continue;
    const bool agentChanged = agents != stored(m_known, key);
    if (agentChanged)
      m_own.setObjectForKey(agents, key);
    else
      m_agents.setObjectForKey(own, key);
    (agentChanged ? isTaken : isGiven) = true;
  }
  m_known = m_own.persistentDomain();
  if (isTaken) m_localCenter.postNotification(Notice::spellingAndGrammarSettingsDidChange);
  if (isGiven) m_distributedCenter.postNotification(Notice::settingsDidChange);
}

}  // namespace quillo
