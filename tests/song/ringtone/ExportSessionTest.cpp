#include <atomic>
#include <future>
#include <thread>

#include "tests/song/ringtone/ExportFixture.h"

namespace quibel::test {
namespace {

TEST_F(Export, SongRemovedAfterTheSessionWasMadeIsExportedAllTheSame) {
  const auto path = wav(song(44'100, 1, 88'200));
  const auto session = prepared(path, file("tone.m4a"), 0, 1);
  std::filesystem::remove(path);
  finish(*session);
  EXPECT_EQ(session->status(), ExportStatus::completed);
}

TEST_F(Export, HandlerIsCalledOnceOnAnotherThreadAfterTheStatus) {
  const auto path = wav(song(44'100, 1, 44'100));
  const auto session = prepared(path, file("tone.m4a"), 0, 1);
  EXPECT_EQ(session->status(), ExportStatus::unknown);
  std::promise<std::pair<std::thread::id, ExportStatus>> ended;
  session->exportAsynchronously(
      [&] { ended.set_value({std::this_thread::get_id(), session->status()}); });
  const auto [thread, status] = ended.get_future().get();
  EXPECT_TRUE(thread != std::this_thread::get_id());
  EXPECT_EQ(status, ExportStatus::completed);
  EXPECT_FALSE(session->error());
}

TEST_F(Export, HandlerMayHoldTheLastReference) {
  const auto path = wav(song(44'100, 1, 44'100));
  std::promise<void> ended;
  {
    const auto session = prepared(path, file("tone.m4a"), 0, 1);
    auto* const started = session.get();
    auto held = std::make_shared<std::shared_ptr<platform::ExportSession>>(session);
    started->exportAsynchronously([held, &ended] {
      held->reset();
      ended.set_value();
    });
  }
  ended.get_future().wait();
}

TEST_F(Export, DestructionDuringAnExportEndsItAndCallsTheHandler) {
  const auto path = wav(noise(44'100, 2, std::size_t{60} * 44'100));
  std::atomic<int> calls = 0;
  {
    const auto session = prepared(path, file("tone.m4a"), 0, 40);
    session->exportAsynchronously([&] { ++calls; });
  }
  EXPECT_EQ(calls, 1);
}

TEST_F(Export, StopRequestCancels) {
  const auto path = wav(noise(44'100, 2, std::size_t{60} * 44'100));
  const std::stop_source stop;
  const auto session = prepared(path, file("tone.m4a"), 0, 40, stop.get_token());
  stop.request_stop();
  finish(*session);
  EXPECT_EQ(session->status(), ExportStatus::cancelled);
  EXPECT_EQ(session->error()->localizedDescription(), "La operación se ha cancelado.");
}

}  // namespace
}  // namespace quibel::test
