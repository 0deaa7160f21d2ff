#include <cerrno>
#include <cstddef>
#include <optional>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>

#include "app/DesktopPlatform.h"
#include "desktop/BackgroundQueue.h"
#include "model/Waveform.h"
#include "tests/desktop/TemporaryFolder.h"
#include "tests/support/SystemCall.h"
#include "tests/support/TestAudio.h"

namespace {

// The system starts no thread for this one any more. It still does for cubeb, which
// ends the program where it gets none for ALSA.
thread_local bool shortage = false;

}  // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's
// headers have reserved names.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*routine)(void*), void* argument) {
  static auto* const real =
      quibel::test::original<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>(
          "pthread_create");
  return shortage ? EAGAIN : real(thread, attributes, routine, argument);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace quibel {
namespace {

constexpr auto reason =
    "El sistema no permite más tareas a la vez. Cierra algún programa e inténtalo otra vez.";

struct ThreadShortage : testing::Test {
  void SetUp() override {
    // Long enough to be shared between two readers.
    test::writeWav(url.path(), test::sine(44'100, 1, std::size_t{30} * 44'100, 440));
  }
  void TearDown() override { shortage = false; }

  desktop::TemporaryFolder folder;
  const platform::FileURL url = folder.url("canción.wav");
  std::optional<DesktopPlatform> machine{std::in_place};
};

TEST_F(ThreadShortage, TheFirstSongIsNotOpenedAndOpensLater) {
  shortage = true;
  const auto refused = machine->openAudioFile(url);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().localizedDescription(), reason);
  shortage = false;
  EXPECT_TRUE(machine->openAudioFile(url));
}

TEST_F(ThreadShortage, ThereIsNoPlayer) {
  ASSERT_TRUE(machine->openAudioFile(url));
  shortage = true;
  const auto player = machine->openAudioPlayer(url);
  ASSERT_FALSE(player);
  EXPECT_EQ(player.error().localizedDescription(), reason);
}

TEST_F(ThreadShortage, OneReaderReadsTheWholeSong) {
  const auto two = machine->openAudioFile(url);
  const auto one = machine->openAudioFile(url);
  ASSERT_TRUE(two && one);
  const auto expected = waveform(**two, 900);
  shortage = true;
  EXPECT_EQ(waveform(**one, 900), expected);
}

TEST_F(ThreadShortage, AnExportFailsWithItsReason) {
  const auto session = machine->makeExportSession(url);
  ASSERT_TRUE(session);
  session->setOutputURL(folder.url("tono.m4a"));
  session->setTimeRange({{0, 600}, {600, 600}});
  bool isDone = false;
  shortage = true;
  session->exportAsynchronously([&] { isDone = true; });
  ASSERT_TRUE(isDone);
  EXPECT_EQ(session->status(), platform::ExportStatus::failed);
  EXPECT_EQ(session->error(), platform::Error("No hay memoria suficiente."));
}

TEST_F(ThreadShortage, AnExportThatCannotBePreparedFailsWithItsReason) {
  shortage = true;
  const auto session = machine->makeExportSession(url);
  ASSERT_TRUE(session);
  bool isDone = false;
  session->exportAsynchronously([&] { isDone = true; });
  EXPECT_TRUE(isDone);
  EXPECT_EQ(session->status(), platform::ExportStatus::failed);
  EXPECT_EQ(session->error(), platform::Error(reason));
}

TEST_F(ThreadShortage, ABackgroundBlockRunsAtOnce) {
  desktop::BackgroundQueue queue;
  std::thread::id ranOn;
  shortage = true;
  queue.async([&] { ranOn = std::this_thread::get_id(); });
  EXPECT_EQ(ranOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace quibel
