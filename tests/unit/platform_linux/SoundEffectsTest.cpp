#include "foundation/Bundle.h"
#include "platform/linux/sound/SoundEffects.h"
#include "tests/support/TestHome.h"

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

TEST(SoundEffects, ASoundThatIsNotThereIsSilentAndNotReported) {
  const TestHome home;
  LogCapture log;
  const Bundle before = Bundle::mainBundle();
  Bundle::setMainBundle({home.path(), {}});
  SoundEffects sounds;
  EXPECT_FALSE(sounds.playSoundNamed(u"quillo-reminder"_s));
  EXPECT_FALSE(sounds.playSoundNamed({}));
  EXPECT_TRUE(log.lines().isEmpty());
  Bundle::setMainBundle(before);
}

}  // namespace
}  // namespace quillo
