#pragma once

#include "foundation/Bundle.h"
#include "foundation/LoadableModule.h"
#include "platform/Sounds.h"

#include <utility>

namespace quillo {

// Plays wave files of the bundle's folder "sounds". The first sound loads the multimedia library and opens the
// sound system; until then nothing of it is touched. A sound that comes while the one before still rings takes its
// place.
class SoundEffects final : public Sounds {
 public:
  explicit SoundEffects(Bundle bundle) : m_bundle(std::move(bundle)) {}
  ~SoundEffects() override;

  bool playSoundNamed(const QString& name) override;

 private:
  Bundle m_bundle;
  LoadableModule m_module{QStringLiteral("quillo-sound")};
};

}  // namespace quillo
