#include <gtest/gtest.h>

#include "song/formats/CafPackets.h"
#include "tests/song/InputOf.h"

namespace quibel::song {
namespace {

using test::FileBytes;
using test::inputOf;

FileBytes chunk(std::string_view name, const FileBytes& content) {
  return FileBytes{}.text(name).big(std::ssize(content), 8).bytes(content);
}

FileBytes file(const FileBytes& chunks) {
  return FileBytes{}.text("caff").big(1, 2).big(0, 2).bytes(chunks);
}

// Packets, frames of the song, before it, and after it.
const FileBytes table = FileBytes{}.big(88, 8).big(88'211, 8).big(2112, 4).big(813, 4);

TEST(CafPackets, AreReadFromTheTable) {
  const auto packets = readCafPackets(*inputOf(file(chunk("pakt", table))));
  ASSERT_TRUE(packets);
  EXPECT_EQ(packets->song, 88'211);
  EXPECT_EQ(packets->priming, 2112);
  EXPECT_EQ(packets->remainder, 813);
}

TEST(CafPackets, TheTableMayFollowOtherChunks) {
  const auto packets = readCafPackets(*inputOf(file(FileBytes{chunk("desc", FileBytes(32))}
                                                        .bytes(chunk("data", FileBytes(5)))
                                                        .bytes(chunk("pakt", table)))));
  ASSERT_TRUE(packets);
  EXPECT_EQ(packets->song, 88'211);
}

TEST(CafPackets, NoneWithoutAWholeTable) {
  FileBytes cut = file(chunk("pakt", table));
  cut.pop_back();
  EXPECT_FALSE(readCafPackets(*inputOf(cut)));
  EXPECT_FALSE(readCafPackets(*inputOf(file(chunk("data", FileBytes(50))))));
  FileBytes other = file(chunk("pakt", table));
  other[0] = 'x';
  EXPECT_FALSE(readCafPackets(*inputOf(other)));
}

TEST(CafPackets, NoneAfterAChunkOfAnImpossibleSize) {
  for (const std::int64_t size : {std::int64_t{-1}, std::int64_t{1'000'000}}) {
    const auto chunks = FileBytes{}.text("free").big(size, 8).bytes(chunk("pakt", table));
    EXPECT_FALSE(readCafPackets(*inputOf(file(chunks)))) << size;
  }
}

}  // namespace
}  // namespace quibel::song
