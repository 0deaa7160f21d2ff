#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "song/decoding/OpenSong.h"
#include "tests/song/Songs.h"

namespace quibel::test {
namespace {

struct Row {
  std::string file;
  std::string rate;
  std::string channels;
  std::string frames;
};

std::vector<Row> rows(const std::filesystem::path& folder) {
  std::ifstream stream(folder / "frames.tsv");
  std::vector<Row> found;
  std::string line;
  std::getline(stream, line);
  while (std::getline(stream, line)) {
    std::istringstream fields(line);
    Row row;
    std::getline(fields, row.file, '\t');
    std::getline(fields, row.rate, '\t');
    std::getline(fields, row.channels, '\t');
    std::getline(fields, row.frames, '\t');
    found.push_back(row);
  }
  return found;
}

TEST(SharedAudio, FilesHaveTheirKnownRateChannelsAndLength) {
  const auto folder = sharedAudio();
  if (!folder) GTEST_SKIP() << "The folder of real audio files is not there.";
  for (const Row& row : rows(*folder)) {
    SCOPED_TRACE(row.file);
    const auto song = song::openAudioFile(platform::FileURL(*folder / row.file));
    if (!song) {
      // Where decoders disagree, or agree on nothing, refusing is an answer too.
      EXPECT_TRUE(row.frames == "-" || row.frames == "0") << song.error().localizedDescription();
      continue;
    }
    if (row.frames != "-") {
      EXPECT_EQ((*song)->length(), std::stoll(row.frames));
      EXPECT_EQ((*song)->processingFormat().sampleRate, std::stod(row.rate));
      EXPECT_EQ((*song)->processingFormat().channelCount, std::stoul(row.channels));
    }
    EXPECT_EQ(static_cast<std::int64_t>(readAll(**song).frames()), (*song)->length());
  }
}

TEST(SharedAudio, SeekDeliversTheSamplesOfADecodeFromTheStart) {
  const auto folder = sharedAudio();
  if (!folder) GTEST_SKIP() << "The folder of real audio files is not there.";
  for (const Row& row : rows(*folder)) {
    SCOPED_TRACE(row.file);
    const auto song = song::openAudioFile(platform::FileURL(*folder / row.file));
    if (!song) continue;
    const Sound whole = readAll(**song);
    for (std::size_t i = 0; i < 20; ++i) {
      const std::size_t frame = (i * 7919 * 13) % (whole.frames() + 1);
      ASSERT_TRUE((*song)->seek(static_cast<std::int64_t>(frame)));
      ASSERT_LE(greatestDifference(whole, frame, readFrames(**song, 1000)), 1e-6F);
    }
  }
}

}  // namespace
}  // namespace quibel::test
