#include "platform/linux/sound/SoundEffects.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

TEST(SoundEffects, ASoundThatIsNotThereIsSilentAndNotReported) {
  const TestHome home;
  LogCapture log;
  SoundEffects sounds({home.path(), {}});
  EXPECT_FALSE(sounds.playSoundNamed(u"quillo-reminder"_s));
  EXPECT_FALSE(sounds.playSoundNamed({}));
  EXPECT_TRUE(log.lines().isEmpty());
}

}  // namespace
}  // namespace quillo
