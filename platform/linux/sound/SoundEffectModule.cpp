// The half of the sounds that needs the multimedia library; a module that SoundEffects loads.

#include <QObject>
#include <QSoundEffect>
#include <QThread>
#include <QUrl>

#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace quillo {

namespace {

// Milliseconds.
constexpr int longestEnd = 500;

// Lives on the thread of sounds.
class Player : public QObject {
 public:
  // In place of the sound before. No effect is kept between sounds.
  void play(const QUrl& source) {
    m_effect = std::make_unique<QSoundEffect>();
    QSoundEffect* current = m_effect.get();
    connect(current, &QSoundEffect::playingChanged, this, [this, current] {
      if (!current->isPlaying()) stopLater();
    });
    connect(current, &QSoundEffect::statusChanged, this, [this, current] {
      if (current->status() == QSoundEffect::Error) stopLater();
    });
    current->setSource(source);
    // Begins as soon as the file is decoded. A file that is no sound has ended it already.
    if (m_effect.get() == current) current->play();
  }

  void stop() { m_effect.reset(); }

 private:
  // The effect is in the middle of telling.
  void stopLater() {
    if (QSoundEffect* done = m_effect.release()) {
      done->disconnect();
      done->deleteLater();
    }
  }

  std::unique_ptr<QSoundEffect> m_effect;
};

// The multimedia library waits for the sound server's answer, half a minute for one that hangs. The program must not.
class SoundThread {
 public:
  SoundThread() {
    m_player.moveToThread(&m_thread);
    m_thread.start();
  }

  void play(const QUrl& source) {
    QMetaObject::invokeMethod(&m_player, [this, source] { m_player.play(source); });
  }

  // False when it still waits for the sound server.
  bool end() {
    QMetaObject::invokeMethod(&m_player, [this] {
      m_player.stop();
      m_thread.quit();
    });
    return m_thread.wait(longestEnd);
  }

 private:
  QThread m_thread;
  Player m_player;
};

std::unique_ptr<SoundThread>& soundThread() {
  static std::unique_ptr<SoundThread> current;
  return current;
}

}  // namespace

// Ends the sound that is heard. To be called before the application object goes.
extern "C" Q_DECL_EXPORT void quilloStopSound() {
  if (!soundThread()) return;
  if (!soundThread()->end()) {
    // One that hangs goes with the process. The library's own last words would wait for it, so they are left out: this
    // comes before them.
    static_cast<void>(soundThread().release());
    ::on_exit([](int status, void*) { ::_exit(status); }, nullptr);
  }
  soundThread().reset();
}

// Plays the wave file once, in place of the sound before. Does not wait for anything.
extern "C" Q_DECL_EXPORT void quilloPlaySound(const QUrl& source) {
  if (!soundThread()) soundThread() = std::make_unique<SoundThread>();
  soundThread()->play(source);
}

}  // namespace quillo
