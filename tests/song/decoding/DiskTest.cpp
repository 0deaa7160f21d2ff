#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

#include "song/decoding/OpenSong.h"
#include "tests/song/Songs.h"
#include "tests/support/MadeFiles.h"
#include "tests/support/SystemCall.h"

namespace {

// From this byte of any file on, the disk is broken.
std::atomic<std::int64_t> brokenFrom = std::numeric_limits<std::int64_t>::max();

std::atomic<int> reads = 0;

}  // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's
// headers have reserved names.
extern "C" ssize_t pread(int fd, void* bytes, std::size_t count, off_t from) {
  static auto* const real =
      quibel::test::original<ssize_t(int, void*, std::size_t, off_t)>("pread");
  ++reads;
  const auto whole = brokenFrom - from;
  if (whole <= 0) {
    errno = EIO;
    return -1;
  }
  return real(fd, bytes, std::min(count, static_cast<std::size_t>(whole)), from);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace quibel::test {
namespace {

constexpr auto readError = "No se puede leer el archivo (Input/output error).";

class BrokenDisk : public testing::TestWithParam<SongFormat> {
 protected:
  void SetUp() override {
    const auto wav = directory_.path() / "source.wav";
    writeWav(wav, song(GetParam().rate, GetParam().channels, std::size_t{5} * 44'100));
    file_ = makeSong(GetParam(), wav);
  }
  void TearDown() override { brokenFrom = std::numeric_limits<std::int64_t>::max(); }

  std::int64_t sizeOfFile() const {
    return static_cast<std::int64_t>(std::filesystem::file_size(file_));
  }

  TemporaryDirectory directory_;
  std::filesystem::path file_;
};

TEST_P(BrokenDisk, IsToldAndNeverTakenForTheSongsEndOrForSilence) {
  for (const int percent : {0, 1, 50, 97}) {
    brokenFrom = sizeOfFile() * percent / 100;
    EXPECT_EQ(failureOf(file_), readError) << "broken at " << percent << " %";
  }
}

/// Formats whose songs are longer than what of them stands in memory.
class BreakingDisk : public BrokenDisk {};

TEST_P(BreakingDisk, IsAReadErrorOfASongThatIsOpen) {
  const auto song = openSong(file_);
  brokenFrom = sizeOfFile() / 2;
  const auto buffer = song->makeBuffer(4096);
  platform::Result<void> result;
  while ((result = song->read(*buffer, 4096)) && buffer->frameLength() > 0) {
  }
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().localizedDescription(), readError);
  EXPECT_LT(song->framePosition(), song->length() * 3 / 4);
}

TEST(KnownChain, IsOpenedAgainWithoutLookingAtItsLinks) {
  const TemporaryDirectory directory;
  const auto link = directory.path() / "link.ogg";
  const auto chain = directory.path() / "chain.ogg";
  writeWav(directory.path() / "s.wav", song(44'100, 2, 44'100));
  makeFile({"oggenc", "-Q", "-o", "{out}", "{in}"}, directory.path() / "s.wav", link);
  const auto once = readBytes(link);
  std::vector<std::uint8_t> bytes;
  for (int links = 0; links < 12; ++links) bytes.insert(bytes.end(), once.begin(), once.end());
  writeBytes(chain, bytes);
  const auto readsToOpen = [&] {
    const auto before = reads.load();
    EXPECT_EQ(openSong(chain)->length(), 12 * 44'100);
    return reads - before;
  };
  const auto first = readsToOpen();
  EXPECT_LT(readsToOpen(), first / 4);
}

std::vector<SongFormat> losslessFormats() {
  auto formats = songFormats();
  std::erase_if(formats, [](const SongFormat& format) { return !format.isLossless; });
  return formats;
}

std::string nameOf(const testing::TestParamInfo<SongFormat>& format) { return format.param.name; }

INSTANTIATE_TEST_SUITE_P(Formats, BrokenDisk, testing::ValuesIn(songFormats()), nameOf);
INSTANTIATE_TEST_SUITE_P(Formats, BreakingDisk, testing::ValuesIn(losslessFormats()), nameOf);

}  // namespace
}  // namespace quibel::test
