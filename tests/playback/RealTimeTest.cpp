#include <cstdlib>
#include <new>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>

#include "playback/Renderer.h"
#include "tests/support/SystemCall.h"

// What the sink's thread does is counted by standing in for the functions that
// would be called. Sanitizers stand in for them too, and go first.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUIBEL_COUNTS 0
#else
#define QUIBEL_COUNTS 1
#endif

namespace {
thread_local bool counting = false;
thread_local int counted = 0;
}  // namespace

#if QUIBEL_COUNTS
// Not inlined: GCC would pair the free() of one with the other's caller.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (counting) ++counted;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (counting) ++counted;
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  if (counting) ++counted;
  std::free(memory);
}

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static auto* const real = quibel::test::original<int(pthread_mutex_t*)>("pthread_mutex_lock");
  if (counting) ++counted;
  return real(mutex);
}
#endif

namespace quibel::playback {
namespace {

struct RealTime : testing::Test {
  PassageSlots passages{2, 512};
  Renderer renderer{passages, 2, 1};
  std::vector<float> out = std::vector<float>(512);
  std::vector<float> sound = std::vector<float>(512, 0.5F);

  /// Allocations and locks of one call of the sink.
  int cost() {
    counted = 0;
    counting = true;
    renderer.render(out.data(), 256);
    counting = false;
    return counted;
  }
};

TEST_F(RealTime, RenderingAllocatesNothingAndTakesNoLock) {
  if (!QUIBEL_COUNTS) GTEST_SKIP() << "a sanitizer counts in this place";
  EXPECT_EQ(cost(), 0) << "before any sound";
  for (std::uint64_t generation = 1; generation < 1'000; ++generation) {
    auto& passage = passages.begin(generation, 0);
    passage.frames.write(sound.data(), generation % 256);
    passage.complete = generation % 2 == 0;
    passages.offer(passage);
    ASSERT_EQ(cost(), 0) << "with as many notes as nobody takes, and more";
  }
}

TEST_F(RealTime, TheCountSeesAllocationsAndLocks) {
  if (!QUIBEL_COUNTS) GTEST_SKIP() << "a sanitizer counts in this place";
  counted = 0;
  counting = true;
  const std::vector<int> allocated(10);
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  pthread_mutex_lock(&mutex);
  pthread_mutex_unlock(&mutex);
  counting = false;
  EXPECT_EQ(counted, 2);
}

TEST_F(RealTime, NotesThatFoundNoRoomAreMadeAgain) {
  std::uint64_t generation = 0;
  const auto jump = [&] {
    auto& passage = passages.begin(++generation, 0);
    passage.frames.write(sound.data(), 256);
    passages.offer(passage);
    renderer.render(out.data(), 128);
  };
  for (int index = 0; index < 400; ++index) jump();
  while (renderer.nextNote()) {
  }
  renderer.render(out.data(), 128);
  const auto note = renderer.nextNote();
  ASSERT_TRUE(note);
  EXPECT_EQ(note->generation, generation);
  EXPECT_EQ(note->songFrame, 128);
  EXPECT_EQ(note->sinkFrame, renderer.framesRendered() - 128);
}

}  // namespace
}  // namespace quibel::playback
