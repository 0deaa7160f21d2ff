#include <memory>

#include <gtest/gtest.h>

#include "playback/Reader.h"
#include "tests/playback/Eventually.h"
#include "tests/playback/SyntheticSong.h"

namespace quibel::playback {
namespace {

// Two threads count their jumps under one lock and hand them over after it.
TEST(Reader, AJumpThatComesBehindALaterOneIsNotMade) {
  const Downmix downmix({1'000, 1}, 1);
  PassageSlots passages(1, 1'000);
  Reader decoder(std::make_unique<SyntheticSong>(platform::AudioFormat{1'000, 1}, 10'000,
                                                 [](std::int64_t, std::uint32_t) { return 1.0F; }),
                 downmix, 1'000, passages, [] {});
  decoder.jump(2, 7'000);
  decoder.jump(1, 3'000);
  ASSERT_TRUE(eventually([&] { return decoder.isReady(); }));
  EXPECT_EQ(passages.take()->generation, 2U);
  EXPECT_EQ(passages.take()->firstFrame, 7'000);
}

}  // namespace
}  // namespace quibel::playback
