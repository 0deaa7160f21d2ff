#include <chrono>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "desktop/PreciseTimer.h"
#include "tests/desktop/Application.h"

namespace quibel::desktop {
namespace {

/// Lets the event loop run for as long as a timer of this interval would need
/// to fire a few times more.
void letOthersFire(double interval) {
  int fired = 0;
  const PreciseTimer other(interval, [&] { ++fired; });
  ASSERT_TRUE(eventually([&] { return fired == 5; }));
}

TEST(PreciseTimer, RepeatsOnTheThreadThatMadeIt) {
  int fired = 0;
  const PreciseTimer timer(0.001, [&, self = std::this_thread::get_id()] {
    EXPECT_EQ(std::this_thread::get_id(), self);
    ++fired;
  });
  EXPECT_EQ(fired, 0);
  EXPECT_TRUE(eventually([&] { return fired >= 10; }));
}

TEST(PreciseTimer, DoesNotFireOnceItIsInvalidated) {
  int fired = 0;
  PreciseTimer timer(0.001, [&] { ++fired; });
  ASSERT_TRUE(eventually([&] { return fired > 0; }));
  timer.invalidate();
  const int before = fired;
  letOthersFire(0.001);
  EXPECT_EQ(fired, before);
}

TEST(PreciseTimer, DestroyingItInvalidatesIt) {
  int fired = 0;
  auto timer = std::make_unique<PreciseTimer>(0.001, [&] { ++fired; });
  timer.reset();
  letOthersFire(0.001);
  EXPECT_EQ(fired, 0);
}

TEST(PreciseTimer, ItsBlockMayInvalidateIt) {
  int fired = 0;
  std::unique_ptr<PreciseTimer> timer;
  timer = std::make_unique<PreciseTimer>(0.001, [&] {
    ++fired;
    timer->invalidate();
  });
  letOthersFire(0.001);
  EXPECT_EQ(fired, 1);
}

TEST(PreciseTimer, ItsBlockMayDestroyIt) {
  const auto fired = std::make_shared<int>(0);
  std::unique_ptr<PreciseTimer> timer;
  timer = std::make_unique<PreciseTimer>(0.001, [&timer, fired] {
    timer.reset();
    ++*fired;
  });
  letOthersFire(0.001);
  EXPECT_EQ(*fired, 1);
}

TEST(PreciseTimer, HasTheIntervalInWholeMilliseconds) {
  const auto before = std::chrono::steady_clock::now();
  int fired = 0;
  const PreciseTimer timer(0.025, [&] { ++fired; });
  ASSERT_TRUE(eventually([&] { return fired == 8; }));
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(190));
}

}  // namespace
}  // namespace quibel::desktop
