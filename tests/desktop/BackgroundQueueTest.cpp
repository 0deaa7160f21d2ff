#include <atomic>
#include <latch>
#include <memory>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "desktop/BackgroundQueue.h"

namespace quibel::desktop {
namespace {

TEST(BackgroundQueue, ABlockThatTakesLongHoldsUpNoOther) {
  BackgroundQueue queue;
  std::latch second(1);
  std::latch both(2);
  queue.async([&] {
    second.wait();
    both.count_down();
  });
  queue.async([&] {
    second.count_down();
    both.count_down();
  });
  both.wait();
}

TEST(BackgroundQueue, BlocksRunOnOtherThreads) {
  std::thread::id ranOn;
  {
    BackgroundQueue queue;
    queue.async([&] { ranOn = std::this_thread::get_id(); });
  }
  EXPECT_NE(ranOn, std::thread::id());
  EXPECT_NE(ranOn, std::this_thread::get_id());
}

TEST(BackgroundQueue, ItGoesOnlyAfterItsBlocksAndThoseTheySubmit) {
  std::atomic<int> ran = 0;
  {
    BackgroundQueue queue;
    for (int block = 0; block < 20; ++block)
      queue.async([&] {
        queue.async([&] { ++ran; });
        ++ran;
      });
  }
  EXPECT_EQ(ran, 40);
}

TEST(BackgroundQueue, ABlocksCapturesAreGoneWhenTheQueueIs) {
  const auto owned = std::make_shared<int>();
  {
    BackgroundQueue queue;
    queue.async([owned] {});
  }
  EXPECT_EQ(owned.use_count(), 1);
}

}  // namespace
}  // namespace quibel::desktop
