#pragma once

#include "platform/Sounds.h"

#include <QLibrary>

namespace quillo {

// Plays wave files of the main bundle's folder "sounds". The first sound loads the multimedia library and opens the
// sound system; until then nothing of it is touched. A sound that comes while the one before still rings takes its
// place.
class SoundEffects final : public Sounds {
 public:
  SoundEffects() = default;
  ~SoundEffects() override;

  bool playSoundNamed(const QString& name) override;

 private:
  bool load();

  QLibrary m_module;
  bool m_triedToLoad{false};
};

}  // namespace quillo
