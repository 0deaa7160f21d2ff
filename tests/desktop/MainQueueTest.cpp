#include <QEventLoop>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "desktop/MainQueue.h"
#include "tests/desktop/Application.h"

namespace quibel::desktop {
namespace {

using testing::ElementsAre;

TEST(MainQueue, RunsBlocksLaterOnItsOwnThreadInTheirOrder) {
  MainQueue queue;
  std::vector<int> ran;
  std::vector<std::thread::id> threads;
  const auto note = [&](int number) {
    return [&, number] {
      ran.push_back(number);
      threads.push_back(std::this_thread::get_id());
    };
  };
  std::thread([&] {
    queue.async(note(1));
    queue.async(note(2));
  }).join();
  queue.async(note(3));
  EXPECT_TRUE(ran.empty());
  ASSERT_TRUE(eventually([&] { return ran.size() == 3; }));
  EXPECT_THAT(ran, ElementsAre(1, 2, 3));
  EXPECT_THAT(threads, testing::Each(std::this_thread::get_id()));
}

TEST(MainQueue, EveryBlockOfEveryThreadRunsOnceAndInThatThreadsOrder) {
  constexpr int perThread = 500;
  MainQueue queue;
  std::vector<std::vector<int>> ran(4);
  std::vector<std::jthread> threads;
  threads.reserve(ran.size());
  for (auto& list : ran)
    threads.emplace_back([&] {
      for (int number = 0; number < perThread; ++number)
        queue.async([&list, number] { list.push_back(number); });
    });
  ASSERT_TRUE(eventually([&] {
    return std::ranges::all_of(ran, [](const auto& list) { return list.size() == perThread; });
  }));
  for (const auto& list : ran) EXPECT_TRUE(std::ranges::is_sorted(list));
}

TEST(MainQueue, ABlockThatABlockSubmitsRunsAfterIt) {
  MainQueue queue;
  std::vector<int> ran;
  queue.async([&] {
    queue.async([&] { ran.push_back(2); });
    ran.push_back(1);
  });
  ASSERT_TRUE(eventually([&] { return ran.size() == 2; }));
  EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST(MainQueue, BlocksRunWhileABlockShowsADialog) {
  MainQueue queue;
  bool during = false;
  bool after = false;
  queue.async([&] {
    QEventLoop dialog;
    queue.async([&] { dialog.quit(); });
    dialog.exec();
    during = true;
  });
  queue.async([&] { after = true; });
  EXPECT_TRUE(eventually([&] { return during && after; }));
}

TEST(MainQueue, AfterShuttingDownBlocksAreDroppedWithWhatTheyOwn) {
  MainQueue queue;
  const auto owned = std::make_shared<bool>(false);
  queue.async([owned] { *owned = true; });
  queue.shutDown();
  queue.async([owned] { *owned = true; });
  EXPECT_EQ(owned.use_count(), 1);
  QCoreApplication::processEvents();
  EXPECT_FALSE(*owned);
}

TEST(MainQueue, BlocksThatWaitWhenItGoesDoNotRun) {
  std::optional<MainQueue> queue(std::in_place);
  bool ran = false;
  queue->async([&] { ran = true; });
  queue.reset();
  QCoreApplication::processEvents();
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace quibel::desktop
