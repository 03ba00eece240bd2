// The half of the sounds that needs the multimedia library; a module that SoundEffects loads.

#include <QSoundEffect>
#include <QUrl>

#include <memory>

namespace quillo {

namespace {

std::unique_ptr<QSoundEffect>& effect() {
  static std::unique_ptr<QSoundEffect> current;
  return current;
}

// Later, as the effect is in the middle of telling.
void stopLater() {
  if (QSoundEffect* done = effect().release()) {
    done->disconnect();
    done->deleteLater();
  }
}

}  // namespace

// Ends the sound that is heard. To be called before the application object goes.
extern "C" Q_DECL_EXPORT void quilloStopSound() {
  effect().reset();
}

// Plays the wave file once, in place of the sound before. No player is kept between sounds.
extern "C" Q_DECL_EXPORT void quilloPlaySound(const QUrl& source) {
  quilloStopSound();
  effect() = std::make_unique<QSoundEffect>();
  QSoundEffect* current = effect().get();
  QObject::connect(current, &QSoundEffect::playingChanged, current, [current] {
    if (!current->isPlaying()) stopLater();
  });
  QObject::connect(current, &QSoundEffect::statusChanged, current, [current] {
    if (current->status() == QSoundEffect::Error) stopLater();
  });
  current->setSource(source);
  // Begins as soon as the file is decoded. A file that is no sound has ended it already.
  if (effect().get() == current) current->play();
}

}  // namespace quillo
