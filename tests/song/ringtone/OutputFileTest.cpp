#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "song/ringtone/OutputFile.h"
#include "tests/support/TestAudio.h"

namespace quibel::song {
namespace {

using Bytes = std::vector<std::uint8_t>;

class OutputFileTest : public testing::Test {
 protected:
  static void write(const OutputFile& file, const Bytes& bytes) {
    avio_write(file.io(), bytes.data(), static_cast<int>(bytes.size()));
  }

  test::TemporaryDirectory directory_;
  std::filesystem::path path_ = directory_.path() / "tone.m4a";
};

TEST_F(OutputFileTest, HoldsAllThatWasWrittenOnceItIsClosed) {
  const Bytes bytes(200'000, 7);
  const auto file = OutputFile::create(platform::FileURL(path_));
  ASSERT_TRUE(file);
  write(**file, bytes);
  ASSERT_TRUE((*file)->close());
  EXPECT_EQ(test::readBytes(path_), bytes);
}

TEST_F(OutputFileTest, MayBeWrittenToAtAnEarlierPlace) {
  const auto file = OutputFile::create(platform::FileURL(path_));
  ASSERT_TRUE(file);
  write(**file, Bytes(100'000, 7));
  EXPECT_EQ(avio_seek((*file)->io(), 4, SEEK_SET), 4);
  write(**file, {1, 2});
  EXPECT_EQ(avio_size((*file)->io()), 100'000);
  EXPECT_EQ(avio_seek((*file)->io(), 10, SEEK_CUR), 16);
  write(**file, {3});
  ASSERT_TRUE((*file)->close());
  const auto bytes = test::readBytes(path_);
  EXPECT_EQ(bytes.size(), 100'000U);
  EXPECT_EQ(Bytes(bytes.begin() + 3, bytes.begin() + 7), (Bytes{7, 1, 2, 7}));
  EXPECT_EQ(bytes[16], 3);
}

TEST_F(OutputFileTest, IsNotMadeUnderANameThatIsTaken) {
  test::writeBytes(path_, {1, 2, 3});
  EXPECT_FALSE(OutputFile::create(platform::FileURL(path_)));
  EXPECT_EQ(test::readBytes(path_), (Bytes{1, 2, 3}));
}

TEST_F(OutputFileTest, HasThePermissionsThatTheUmaskLeaves) {
  const mode_t before = ::umask(027);
  const auto file = OutputFile::create(platform::FileURL(path_));
  ::umask(before);
  ASSERT_TRUE(file);
  EXPECT_EQ(std::filesystem::status(path_).permissions(), std::filesystem::perms{0640});
}

TEST_F(OutputFileTest, FailsToCloseAfterAFailedWrite) {
  OutputFile file(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  write(file, {1});
  const auto closed = file.close();
  ASSERT_FALSE(closed);
  EXPECT_EQ(closed.error().localizedDescription(), "No queda espacio en el disco.");
}

TEST_F(OutputFileTest, StatesTheFirstFailureRatherThanFfmpegsCode) {
  const OutputFile file(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  EXPECT_NE(file.failure(AVERROR_INVALIDDATA).localizedDescription(),
            "No queda espacio en el disco.");
  write(file, {1});
  avio_flush(file.io());
  EXPECT_EQ(file.failure(AVERROR_INVALIDDATA).localizedDescription(),
            "No queda espacio en el disco.");
}

}  // namespace
}  // namespace quibel::song
