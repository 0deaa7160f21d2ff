#include <array>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "playback/Passage.h"

namespace quibel::playback {
namespace {

TEST(FrameRing, GivesBackWhatWasWrittenAcrossItsEnd) {
  FrameRing ring(2, 5);
  std::array<float, 10> out{};
  float next = 0;
  float expected = 0;
  for (int round = 0; round < 20; ++round) {
    const std::array<float, 6> in{next, next + 1, next + 2, next + 3, next + 4, next + 5};
    ASSERT_EQ(ring.write(in.data(), 3), 3U);
    next += 6;
    ASSERT_EQ(ring.read(out.data(), 5), 3U);
    for (std::size_t sample = 0; sample < 6; ++sample) ASSERT_EQ(out[sample], expected++);
  }
}

TEST(FrameRing, TakesNoMoreThanItHasRoomFor) {
  FrameRing ring(1, 4);
  const std::array<float, 6> in{1, 2, 3, 4, 5, 6};
  EXPECT_EQ(ring.write(in.data(), 6), 4U);
  EXPECT_EQ(ring.writable(), 0U);
  EXPECT_EQ(ring.readable(), 4U);
}

TEST(PassageSlots, TheSinkKeepsItsPassageUntilAFreshOneIsOffered) {
  PassageSlots slots(1, 4);
  EXPECT_EQ(slots.take(), nullptr);
  auto& first = slots.begin(1, 0);
  EXPECT_EQ(slots.take(), nullptr);
  slots.offer(first);
  EXPECT_EQ(slots.take(), &first);
  auto& second = slots.begin(2, 0);
  EXPECT_EQ(slots.take(), &first);
  slots.offer(second);
  EXPECT_EQ(slots.take(), &second);
}

TEST(PassageSlots, APassageThatPlaysIsNeverBegunAgain) {
  PassageSlots slots(1, 4);
  slots.offer(slots.begin(1, 0));
  const auto* const playing = slots.take();
  for (std::uint64_t generation = 2; generation < 20; ++generation) {
    auto& fresh = slots.begin(generation, 0);
    EXPECT_NE(&fresh, playing);
    slots.offer(fresh);
  }
  EXPECT_EQ(slots.take()->generation, 19U);
}

TEST(PassageSlots, ASinkOnAnotherThreadReadsOnlyWholePassages) {
  constexpr std::uint64_t last = 20'000;
  PassageSlots slots(1, 16);
  const std::jthread decoder([&] {
    for (std::uint64_t generation = 1; generation <= last; ++generation) {
      auto& passage = slots.begin(generation, static_cast<std::int64_t>(generation));
      const auto value = static_cast<float>(generation);
      const std::array<float, 8> sound{value, value, value, value, value, value, value, value};
      passage.frames.write(sound.data(), 4);
      slots.offer(passage);
      passage.frames.write(sound.data(), 8);
    }
  });
  std::uint64_t heard = 0;
  while (heard < last) {
    auto* const passage = slots.take();
    if (passage == nullptr) continue;
    ASSERT_GE(passage->generation, heard);
    heard = passage->generation;
    ASSERT_EQ(passage->firstFrame, static_cast<std::int64_t>(heard));
    std::array<float, 3> out{};
    const auto got = passage->frames.read(out.data(), out.size());
    for (std::size_t frame = 0; frame < got; ++frame)
      ASSERT_EQ(out[frame], static_cast<float>(heard));
  }
}

}  // namespace
}  // namespace quibel::playback
