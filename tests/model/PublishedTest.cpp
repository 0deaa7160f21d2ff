#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "model/Published.h"

namespace quibel::test {
namespace {

TEST(PublishedTest, AnnouncesBeforeItStores) {
  ChangeAnnouncer announcer;
  Published<int> property(announcer, 1);
  std::vector<int> seen;
  const auto subscription = announcer.subscribe([&] { seen.push_back(property.get()); });

  property = 2;
  property = 3;

  EXPECT_EQ(seen, (std::vector{1, 2}));
  EXPECT_EQ(property.get(), 3);
}

TEST(PublishedTest, AnnouncesAnAssignmentOfTheSameValue) {
  ChangeAnnouncer announcer;
  Published<int> property(announcer, 1);
  int announcements = 0;
  const auto subscription = announcer.subscribe([&] { ++announcements; });

  property = 1;

  EXPECT_EQ(announcements, 1);
}

TEST(PublishedTest, AnnouncesToEveryObserver) {
  ChangeAnnouncer announcer;
  Published<int> property(announcer, 1);
  int first = 0;
  int second = 0;
  const auto one = announcer.subscribe([&] { ++first; });
  const auto two = announcer.subscribe([&] { ++second; });

  property = 2;

  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 1);
}

TEST(PublishedTest, EndedSubscriptionHearsNothing) {
  ChangeAnnouncer announcer;
  Published<int> property(announcer, 1);
  int announcements = 0;
  {
    const auto subscription = announcer.subscribe([&] { ++announcements; });
  }
  property = 2;
  EXPECT_EQ(announcements, 0);
}

TEST(PublishedTest, MovedSubscriptionGoesOnHearing) {
  ChangeAnnouncer announcer;
  Published<int> property(announcer, 1);
  int announcements = 0;
  ChangeAnnouncer::Subscription kept;
  kept = announcer.subscribe([&] { ++announcements; });
  property = 2;
  EXPECT_EQ(announcements, 1);
}

TEST(PublishedTest, SubscriptionMayOutliveTheAnnouncer) {
  std::optional<ChangeAnnouncer> announcer(std::in_place);
  auto subscription = announcer->subscribe([] {});
  announcer.reset();
  subscription = {};
}

TEST(PublishedTest, BindingReadsAndWritesTheProperty) {
  ChangeAnnouncer announcer;
  Published<double> property(announcer, 1.5);
  int announcements = 0;
  const auto subscription = announcer.subscribe([&] { ++announcements; });
  const Binding<double> binding(property);

  EXPECT_EQ(binding.get(), 1.5);
  binding.set(-70);

  EXPECT_EQ(property.get(), -70);
  EXPECT_EQ(announcements, 1);
}

}  // namespace
}  // namespace quibel::test
