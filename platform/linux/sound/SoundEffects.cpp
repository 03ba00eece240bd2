#include "platform/linux/sound/SoundEffects.h"

#include "foundation/Log.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QUrl>

namespace quillo {

using namespace Qt::StringLiterals;

// Compiled-in files are found by an URL of their own kind.
static QUrl urlOfResource(const QString& path) {
  return path.startsWith(u':') ? QUrl(u"qrc"_s + path) : QUrl::fromLocalFile(path);
}

// Where the module is: beside the program in a build, below the same prefix in an installation.
static QString modulePath() {
  const QString directory = QCoreApplication::applicationDirPath();
  const QString beside = directory + u"/quillo-sound.so"_s;
  return QFileInfo::exists(beside) ? beside : directory + u"/../lib/quillo-agent/modules/quillo-sound.so"_s;
}

SoundEffects::~SoundEffects() {
  // It is not unloaded: threads of the sound system may still be in it.
  if (!m_module.isLoaded()) return;
  if (const auto stop = reinterpret_cast<void (*)()>(m_module.resolve("quilloStopSound"))) stop();
}

bool SoundEffects::load() {
  if (m_triedToLoad) return m_module.isLoaded();
  m_triedToLoad = true;
  m_module.setFileName(modulePath());
  if (m_module.load()) return true;
  QLLogInfo(u"Sounds cannot be played: %1"_s.arg(m_module.errorString()));
  return false;
}

bool SoundEffects::playSoundNamed(const QString& name) {
  const auto path = m_bundle.pathForResource(u"sounds/"_s + name, u"wav"_s);
  if (!path) return false;
  if (!load()) return true;
  if (const auto play = reinterpret_cast<void (*)(const QUrl&)>(m_module.resolve("quilloPlaySound")))
    play(urlOfResource(*path));
  return true;
}

}  // namespace quillo
