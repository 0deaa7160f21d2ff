#include <gtest/gtest.h>

#include "song/formats/OggPages.h"
#include "tests/song/InputOf.h"

namespace quibel::song {
namespace {

using test::FileBytes;
using test::inputOf;
using Positions = std::vector<std::int64_t>;

constexpr unsigned first = 2;
constexpr unsigned last = 4;

/// A page whose segments have these sizes (RFC 3533, 6).
FileBytes page(unsigned flags, std::int64_t granule, std::uint32_t serial,
               const std::vector<std::uint8_t>& segments = {10}) {
  FileBytes bytes;
  bytes.text("OggS").big(0, 1).big(flags, 1).little(granule, 8).little(serial, 4).zeros(8);
  bytes.big(std::ssize(segments), 1).bytes(segments);
  for (const auto size : segments) bytes.zeros(size);
  return bytes;
}

FileBytes join(const std::vector<FileBytes>& pages) {
  FileBytes bytes;
  for (const auto& each : pages) bytes.bytes(each);
  return bytes;
}

const FileBytes song = join({page(first, 0, 7), page(0, 0, 7), page(0, 960, 7, {255, 20, 30}),
                             page(0, 1920, 7), page(last, 2000, 7)});
const auto size = std::ssize(song);

TEST(OggLinks, EverySongInARowBeginsOne) {
  EXPECT_EQ(readOggLinks(*inputOf(song)), Positions{0});
  EXPECT_EQ(readOggLinks(*inputOf(join({song, song, song}))), (Positions{0, size, 2 * size}));
}

TEST(OggLinks, StreamsSideBySideAreOneSong) {
  const auto both = join({page(first, 0, 7), page(first, 0, 8), page(0, 960, 7), page(0, 960, 8)});
  EXPECT_EQ(readOggLinks(*inputOf(both)), Positions{0});
}

TEST(OggLinks, ASongAfterACutOneIsFound) {
  FileBytes cut = song;
  cut.resize(cut.size() - 5);
  EXPECT_EQ(readOggLinks(*inputOf(join({cut, song}))), (Positions{0, size - 5}));
}

TEST(OggLinks, ASongAfterAHoleIsFound) {
  FileBytes hole = song;
  hole.zeros(100'000);
  EXPECT_EQ(readOggLinks(*inputOf(join({hole, song}))), (Positions{0, size + 100'000}));
}

TEST(OggLinks, NoneInAFileThatBeginsOtherwise) {
  EXPECT_EQ(readOggLinks(*inputOf(join({FileBytes{0}, song}))), Positions{});
  FileBytes another = song;
  another[4] = 1;  // a version that does not exist
  EXPECT_EQ(readOggLinks(*inputOf(another)), (Positions{}));
}

TEST(OggGranules, AreThoseOfTheFirstPageWithSoundAndOfTheLastPage) {
  const auto granules = readOggGranules(*inputOf(song), 0);
  ASSERT_TRUE(granules);
  EXPECT_EQ(granules->first, 960);
  EXPECT_EQ(granules->packetsOnFirstPage, 2) << "a segment of 255 bytes ends no packet";
  EXPECT_FALSE(granules->isOnlyPage);
  EXPECT_EQ(granules->last, 2000);
}

TEST(OggGranules, OfTheOnlyPage) {
  const auto granules = readOggGranules(*inputOf(join({page(first, 0, 7), page(last, 960, 7)})), 0);
  ASSERT_TRUE(granules);
  EXPECT_TRUE(granules->isOnlyPage);
  EXPECT_EQ(granules->last, 960);
}

TEST(OggGranules, AreOfTheStreamAskedFor) {
  const auto bytes = join({page(first, 0, 7), page(first, 0, 8), page(0, 100, 7), page(0, 960, 8),
                           page(0, 1920, 8), page(last, 200, 7)});
  const auto granules = readOggGranules(*inputOf(bytes), 1);
  ASSERT_TRUE(granules);
  EXPECT_EQ(granules->first, 960);
  EXPECT_EQ(granules->last, 1920);
  EXPECT_FALSE(readOggGranules(*inputOf(bytes), 2)) << "there are two streams";
  EXPECT_FALSE(readOggGranules(*inputOf(bytes), -1));
}

TEST(OggGranules, PagesThatNoPacketEndsOnAndPagesThatAreCutDoNotCount) {
  FileBytes bytes = join({song, page(0, -1, 7, {255}), page(0, 9'000, 7)});
  bytes.pop_back();
  EXPECT_EQ(readOggGranules(*inputOf(bytes), 0)->last, 2000);
}

TEST(OggGranules, NoneWithoutSound) {
  EXPECT_FALSE(readOggGranules(*inputOf(page(first, 0, 7)), 0));
  EXPECT_FALSE(readOggGranules(*inputOf(FileBytes{}.text("RIFF")), 0));
}

}  // namespace
}  // namespace quibel::song
