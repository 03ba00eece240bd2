#include "platform/linux/sound/SoundEffects.h"

#include "foundation/Bundle.h"

#include <QSoundEffect>
#include <QUrl>

namespace quillo {

using namespace Qt::StringLiterals;

// Compiled-in files are found by an URL of their own kind.
static QUrl urlOfResource(const QString& path) {
  return path.startsWith(u':') ? QUrl(u"qrc"_s + path) : QUrl::fromLocalFile(path);
}

SoundEffects::SoundEffects() = default;
SoundEffects::~SoundEffects() = default;

bool SoundEffects::playSoundNamed(const QString& name) {
  const auto path = Bundle::mainBundle().pathForResource(u"sounds/"_s + name, u"wav"_s);
  if (!path) return false;
  silence();
  m_effect = std::make_unique<QSoundEffect>();
  const auto end = [this] {
    if (m_effect && (!m_effect->isPlaying() || m_effect->status() == QSoundEffect::Error)) silence();
  };
  // Later, as the effect is in the middle of telling.
  connect(m_effect.get(), &QSoundEffect::playingChanged, this, end, Qt::QueuedConnection);
  connect(
      m_effect.get(), &QSoundEffect::statusChanged, this,
      [this, end] {
        if (m_effect && m_effect->status() == QSoundEffect::Error) end();
      },
      Qt::QueuedConnection);
  m_effect->setSource(urlOfResource(*path));
  // Begins as soon as the file is decoded.
  m_effect->play();
  return true;
}

void SoundEffects::silence() {
  if (m_effect) m_effect->disconnect(this);
  m_effect.reset();
}

}  // namespace quillo
