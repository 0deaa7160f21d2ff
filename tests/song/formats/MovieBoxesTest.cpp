#include <gtest/gtest.h>

#include "song/formats/MovieBoxes.h"
#include "tests/song/InputOf.h"

namespace quibel::song {
namespace {

using test::FileBytes;
using test::inputOf;

FileBytes box(std::string_view type, const FileBytes& content) {
  return FileBytes{}.big(std::ssize(content) + 8, 4).text(type).bytes(content);
}

/// A box of times, in its short form (version 0) or its long one: mvhd, mdhd and tkhd have a
/// number after two times (ISO/IEC 14496-12, 8.2.2).
FileBytes timed(std::string_view type, std::int64_t number, int version = 0) {
  return box(type,
             FileBytes{}.big(version, 1).zeros(version == 1 ? 19 : 11).big(number, 4).zeros(80));
}

struct Entry {
  std::int64_t duration, mediaTime;
};

FileBytes edits(const std::vector<Entry>& entries, int version = 0) {
  const int size = version == 1 ? 8 : 4;
  FileBytes list;
  list.big(version, 1).zeros(3).big(std::ssize(entries), 4);
  for (const auto& [duration, mediaTime] : entries) {
    list.big(duration, size).big(mediaTime, size).big(0x10000, 4);
  }
  return box("edts", box("elst", list));
}

FileBytes track(int id, std::int64_t timescale, const FileBytes& edit = {}, int version = 0) {
  return box("trak", FileBytes{timed("tkhd", id, version)}.bytes(edit).bytes(
                         box("mdia", timed("mdhd", timescale, version))));
}

FileBytes movie(const FileBytes& tracks, int version = 0) {
  return FileBytes{box("ftyp", FileBytes(8))}
      .bytes(box("mdat", FileBytes(99)))
      .bytes(box("moov", FileBytes{timed("mvhd", 1000, version)}.bytes(tracks)));
}

TEST(MovieTimes, AreThoseOfTheTrack) {
  const auto input = inputOf(
      movie(FileBytes{track(1, 12'800)}.bytes(track(2, 44'100, edits({{500, -1}, {2000, 2112}})))));
  const auto times = readMovieTimes(*input, 2);
  ASSERT_TRUE(times);
  EXPECT_EQ(times->movieTimescale, 1000);
  EXPECT_EQ(times->mediaTimescale, 44'100);
  ASSERT_EQ(times->edits.size(), 2U);
  EXPECT_EQ(times->edits[0].duration, 500);
  EXPECT_EQ(times->edits[0].mediaTime, -1);
  EXPECT_EQ(times->edits[1].duration, 2000);
  EXPECT_EQ(times->edits[1].mediaTime, 2112);
  EXPECT_EQ(readMovieTimes(*input, 1)->mediaTimescale, 12'800);
  EXPECT_FALSE(readMovieTimes(*input, 3));
}

TEST(MovieTimes, HaveALongForm) {
  const std::int64_t hours = std::int64_t{1} << 33;
  const auto input = inputOf(movie(track(1, 44'100, edits({{hours, -1}, {7, 2112}}, 1), 1), 1));
  const auto times = readMovieTimes(*input, 1);
  ASSERT_TRUE(times);
  EXPECT_EQ(times->movieTimescale, 1000);
  EXPECT_EQ(times->mediaTimescale, 44'100);
  EXPECT_EQ(times->edits.at(0).duration, hours);
  EXPECT_EQ(times->edits.at(0).mediaTime, -1);
  EXPECT_EQ(times->edits.at(1).mediaTime, 2112);
}

TEST(MovieTimes, BoxesMayStateTheirSizeInEightBytesOrReachToTheEnd) {
  const auto content = FileBytes{timed("mvhd", 1000)}.bytes(track(1, 44'100));
  const auto large =
      FileBytes{}.big(1, 4).text("free").big(16 + 5, 8).zeros(5).big(0, 4).text("moov");
  const auto times = readMovieTimes(*inputOf(FileBytes{large}.bytes(content)), 1);
  ASSERT_TRUE(times);
  EXPECT_EQ(times->mediaTimescale, 44'100);
}

TEST(MovieTimes, NoneWithoutATimescale) {
  EXPECT_FALSE(readMovieTimes(*inputOf(movie(track(1, 0))), 1));
  EXPECT_FALSE(readMovieTimes(*inputOf(box("moov", track(1, 44'100))), 1));
}

TEST(MovieTimes, NoneAfterABoxOfAnImpossibleSize) {
  const auto after = [](const FileBytes& bytes) {
    return readMovieTimes(*inputOf(FileBytes{bytes}.bytes(movie(track(1, 44'100)))), 1);
  };
  EXPECT_TRUE(after(box("free", {})));
  EXPECT_FALSE(after(FileBytes{}.big(7, 4).text("free")));
  EXPECT_FALSE(after(FileBytes{}.big(1, 4).text("free").big(std::int64_t{1} << 62, 8)));
}

TEST(MovieTimes, EditsLongerThanAnySongAreNotBelieved) {
  const std::int64_t years = std::int64_t{1} << 49;
  EXPECT_TRUE(
      readMovieTimes(*inputOf(movie(track(1, 44'100, edits({{years, 0}}, 1)))), 1)->edits.empty());
  EXPECT_TRUE(
      readMovieTimes(*inputOf(movie(track(1, 44'100, edits({{9, years}}, 1)))), 1)->edits.empty());
}

TEST(MovieTimes, NoMoreEditsAreReadThanTheBoxHolds) {
  auto list = FileBytes{}.zeros(4).big(0x7FFF'FFFF, 4);
  list.big(2000, 4).big(2112, 4).big(0x10000, 4);
  const auto times =
      readMovieTimes(*inputOf(movie(track(1, 44'100, box("edts", box("elst", list))))), 1);
  ASSERT_TRUE(times);
  EXPECT_EQ(times->edits.size(), 1U);
}

TEST(GaplessNote, IsParsed) {
  const auto info = parseGaplessInfo(
      " 00000000 00000840 000001CA 00000000003F31F6 00000000 00000000 00000000 00000000");
  ASSERT_TRUE(info);
  EXPECT_EQ(info->delay, 0x840);
  EXPECT_EQ(info->length, 0x3F31F6);
}

TEST(GaplessNote, NonsenseIsNone) {
  for (const char* text :
       {"", " ", "0", " 0 840 1CA", " 0 zzz 1 1", " 0 840 1CA 0", " 0 FFFFFFFF 0 100",
        " 0 840 1CA FFFFFFFFFFFFFFFFFFFF", " 0 840 1CA FFFFFFFFFFFFFFF"}) {
    EXPECT_FALSE(parseGaplessInfo(text)) << text;
  }
}

}  // namespace
}  // namespace quibel::song
