#pragma once

#include "platform/Sounds.h"

#include <QObject>

#include <memory>

class QSoundEffect;

namespace quillo {

// Plays wave files of the main bundle's folder "sounds". The first sound opens the sound system; until then nothing of
// it is touched, and between sounds no player is kept. A sound that comes while the one before still rings takes its
// place.
class SoundEffects final : public QObject, public Sounds {
  Q_OBJECT

 public:
  SoundEffects();
  ~SoundEffects() override;

  bool playSoundNamed(const QString& name) override;

 private:
  void silence();

  std::unique_ptr<QSoundEffect> m_effect;
};

}  // namespace quillo
