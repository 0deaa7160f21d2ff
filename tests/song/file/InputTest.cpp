#include <array>

#include <gtest/gtest.h>

#include "song/file/Input.h"
#include "tests/song/InputOf.h"
#include "tests/support/TestAudio.h"

namespace quibel::song {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes read(Input& input, std::int64_t position, std::size_t count) {
  Bytes bytes(count);
  bytes.resize(static_cast<std::size_t>(input.readAt(position, bytes)));
  return bytes;
}

TEST(Input, ReadsWhatIsThere) {
  const auto input = test::inputOf({1, 2, 3, 4, 5});
  EXPECT_EQ(read(*input, 1, 3), (Bytes{2, 3, 4}));
  EXPECT_EQ(read(*input, 3, 3), (Bytes{4, 5}));
  EXPECT_EQ(read(*input, 5, 3), Bytes{});
  EXPECT_EQ(read(*input, 900, 3), Bytes{});
  EXPECT_FALSE(input->hasReadError());
  EXPECT_FALSE(input->failure());
}

TEST(Input, APartReadsNothingOfTheRest) {
  const auto whole = test::inputOf({1, 2, 3, 4, 5});
  const auto part = whole->part(1, 4);
  EXPECT_EQ(part->size(), 3);
  EXPECT_EQ(read(*part, 0, 9), (Bytes{2, 3, 4}));
  EXPECT_EQ(read(*part->part(1, 2), 0, 9), Bytes{3});
  EXPECT_TRUE(part->isPart());
  EXPECT_FALSE(whole->isPart());
  EXPECT_NE(part->identity(), whole->identity());
}

TEST(Input, IsAnotherOneAfterTheFileChanged) {
  const test::TemporaryDirectory directory;
  const auto path = directory.path() / "song";
  const auto identity = [&] { return (*Input::open(platform::FileURL(path), {}))->identity(); };
  test::writeBytes(path, {1, 2, 3});
  const auto before = identity();
  EXPECT_EQ(identity(), before);
  test::writeBytes(path, {1, 2, 3, 4});
  EXPECT_NE(identity(), before);
}

TEST(Input, NothingIsReadAfterAStopRequest) {
  const std::stop_source stop;
  const test::TemporaryDirectory directory;
  test::writeBytes(directory.path() / "song", {1, 2, 3});
  const auto input = *Input::open(platform::FileURL(directory.path() / "song"), stop.get_token());
  EXPECT_EQ(read(*input, 0, 1), Bytes{1});
  stop.request_stop();
  Bytes byte(1);
  EXPECT_EQ(input->readAt(0, byte), AVERROR_EXIT);
  ASSERT_TRUE(input->failure());
  EXPECT_EQ(input->failure()->localizedDescription(), "La operación se ha cancelado.");
}

TEST(InputStream, IsReadAndMovedInByFfmpeg) {
  const InputStream stream(test::inputOf({1, 2, 3, 4, 5}));
  std::array<std::uint8_t, 2> bytes{};
  EXPECT_EQ(avio_size(stream.io()), 5);
  EXPECT_EQ(avio_seek(stream.io(), 3, SEEK_SET), 3);
  EXPECT_EQ(avio_read(stream.io(), bytes.data(), 2), 2);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 2>{4, 5}));
  EXPECT_EQ(avio_read(stream.io(), bytes.data(), 2), AVERROR_EOF);
  EXPECT_LT(avio_seek(stream.io(), -9, SEEK_CUR), 0);
}

}  // namespace
}  // namespace quibel::song
