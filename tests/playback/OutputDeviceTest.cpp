#include <chrono>

#include <gtest/gtest.h>

#include "playback/OutputDevice.h"
#include "tests/playback/FakeOutput.h"

namespace quibel::playback {
namespace {

struct Silence final : SinkSource {
  void render(float*, std::uint32_t) noexcept override {}
};

struct OutputDeviceTest : testing::Test {
  FakeOutput output;
  Clock::time_point now = Clock::time_point() + std::chrono::hours(1);
  OutputDevice device{output.connect(), [this] { return now; }};
  Silence silence;

  bool opens() { return device.open({44'100, 2}, silence).has_value(); }
};

TEST_F(OutputDeviceTest, ConnectsWhenFirstNeededAndOnlyOnce) {
  EXPECT_EQ(output.connections(), 0);
  EXPECT_TRUE(opens());
  EXPECT_TRUE(opens());
  EXPECT_EQ(output.connections(), 1);
}

TEST_F(OutputDeviceTest, TriesAtMostOnceASecond) {
  output.setAbsent(true);
  EXPECT_FALSE(opens());
  EXPECT_FALSE(opens());
  now += std::chrono::milliseconds(999);
  EXPECT_FALSE(opens());
  EXPECT_EQ(output.connections(), 1);
  now += std::chrono::milliseconds(1);
  EXPECT_FALSE(opens());
  EXPECT_EQ(output.connections(), 2);
}

TEST_F(OutputDeviceTest, RepeatsTheLastReasonWithoutAnAttempt) {
  output.setAbsent(true);
  opens();
  output.setAbsent(false);
  const auto refused = device.open({44'100, 2}, silence);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().localizedDescription(), "No hay salida de sonido.");
}

TEST_F(OutputDeviceTest, AConnectionThatDiedWhileIdleIsMadeAnewAtOnce) {
  ASSERT_TRUE(device.connect());
  output.setAbsent(true);
  EXPECT_FALSE(opens());
  EXPECT_EQ(output.connections(), 2) << "the failure of the old connection is not the answer";
}

TEST_F(OutputDeviceTest, ADroppedConnectionIsMadeAnew) {
  EXPECT_TRUE(opens());
  device.drop();
  EXPECT_TRUE(opens());
  EXPECT_EQ(output.connections(), 2);
}

TEST_F(OutputDeviceTest, AQuietConnectionIsKeptForLaterAndNoOther) {
  ASSERT_TRUE(device.connect());
  device.rest();
  EXPECT_TRUE(opens());
  EXPECT_EQ(output.connections(), 1);
  output.setQuiet(false);
  device.rest();
  EXPECT_TRUE(opens());
  EXPECT_EQ(output.connections(), 2);
}

}  // namespace
}  // namespace quibel::playback
