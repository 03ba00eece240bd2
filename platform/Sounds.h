#pragma once

#include <QString>

namespace quillo {

// The sounds that the program carries with it. Main thread only.
class Sounds {
 public:
  virtual ~Sounds() = default;

  // Plays the sound NAME of the main bundle once and does not wait for its end. False where there is no such sound;
  // one that cannot be heard, for want of a sound system, is no failure.
  virtual bool playSoundNamed(const QString& name) = 0;
};

}  // namespace quillo
