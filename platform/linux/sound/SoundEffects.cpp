#include "platform/linux/sound/SoundEffects.h"

#include <QUrl>

namespace quillo {

using namespace Qt::StringLiterals;

// Compiled-in files are found by an URL of their own kind.
static QUrl urlOfResource(const QString& path) {
  return path.startsWith(u':') ? QUrl(u"qrc"_s + path) : QUrl::fromLocalFile(path);
}

SoundEffects::~SoundEffects() {
  // It is not unloaded: threads of the sound system may still be in it.
  if (!m_module.isLoaded()) return;
  if (auto* const stop = m_module.function<void()>("quilloStopSound")) stop();
}

bool SoundEffects::playSoundNamed(const QString& name) {
  const auto path = m_bundle.pathForResource(u"sounds/"_s + name, u"wav"_s);
  if (!path) return false;
  if (auto* const play = m_module.function<void(const QUrl&)>("quilloPlaySound")) play(urlOfResource(*path));
  return true;
}

}  // namespace quillo
