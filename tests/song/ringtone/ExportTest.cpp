#include "tests/song/Boxes.h"
#include "tests/song/ringtone/ExportFixture.h"

namespace quibel::test {
namespace {

TEST_F(Export, BoxesPresentExactlyTheFrames) {
  const Movie movie{Boxes(exported(wav(song(44'100, 2, std::size_t{50} * 44'100)), 1.5, 40))};
  EXPECT_EQ(movie.brand, "M4A ");
  EXPECT_EQ(movie.movieTimescale, 44'100U);
  EXPECT_EQ(movie.mediaTimescale, 44'100U);
  EXPECT_EQ(movie.edits, 1U);
  EXPECT_EQ(movie.editDuration, 40U * 44'100);
  EXPECT_EQ(movie.editMediaTime, 1024U);
  EXPECT_EQ(movie.movieDuration, 40U * 44'100);
  EXPECT_EQ(movie.trackDuration, 40U * 44'100);
}

TEST_F(Export, NoPresentedDurationIsAboveFortySeconds) {
  for (const int rate : {22'050, 48'000}) {
    const auto song = wav(test::song(rate, 1, std::size_t{42} * static_cast<unsigned>(rate)));
    const Movie movie{Boxes(exported(song, 1.9999, 40))};
    EXPECT_EQ(movie.movieDuration, 40 * movie.movieTimescale) << rate;
    EXPECT_EQ(movie.trackDuration, 40 * movie.movieTimescale) << rate;
    EXPECT_EQ(movie.editDuration, 40 * movie.movieTimescale) << rate;
  }
}

TEST_F(Export, OneAacTrackWithItsIndexInFrontAndNothingOfItsMaker) {
  writeWav(file("s.wav"), song(44'100, 2, 44'100));
  run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc", "-frames:v", "1",
       file("art.png").string()});
  run({"ffmpeg",
       "-v",
       "error",
       "-i",
       file("s.wav").string(),
       "-i",
       file("art.png").string(),
       "-map",
       "0",
       "-map",
       "1",
       "-c:a",
       "libmp3lame",
       "-c:v",
       "copy",
       "-disposition:v",
       "attached_pic",
       "-metadata",
       "title=Mi canción",
       file("song.mp3").string()});
  const Boxes boxes(exported(file("song.mp3"), 0, 1));
  std::vector<std::string> order;
  for (const auto& box : boxes.topLevel()) {
    if (box.type != "free") order.push_back(box.type);
  }
  EXPECT_EQ(order, (std::vector<std::string>{"ftyp", "moov", "mdat"}));
  int tracks = 0;
  const auto index = boxes.at("moov");
  for (const auto& box : boxes.children(index.begin, index.end)) tracks += box.type == "trak";
  EXPECT_EQ(tracks, 1);
  EXPECT_EQ(boxes.text(boxes.at("moov/trak/mdia/hdlr").begin + 8, 4), "soun");
  const auto entry = boxes.at("moov/trak/mdia/minf/stbl/stsd");
  EXPECT_EQ(boxes.text(entry.begin + 12, 4), "mp4a");
  EXPECT_TRUE(boxes.has("moov/trak/mdia/minf/stbl/sgpd"));
  EXPECT_TRUE(boxes.indexMentions("roll"));
  for (const char* tag : {"\251nam", "\251too", "covr", "Lavf", "Lavc", "canci"}) {
    EXPECT_FALSE(boxes.indexMentions(tag)) << tag;
  }
  const auto movie = boxes.at("moov/mvhd").begin;
  EXPECT_EQ(boxes.number(movie + 4, 8), 0U) << "dates";
}

TEST_F(Export, RangesBeyondTheSongAreCutToIt) {
  const Sound source = song(44'100, 2, 44'100);
  const auto path = wav(source);
  EXPECT_EQ(Movie(Boxes(exported(path, -0.25, 1))).editDuration, 33'075U);
  EXPECT_EQ(lagBehind(source, readAll(file("tone.m4a")), 200, 200, 30'000), 0);
  EXPECT_EQ(Movie(Boxes(exported(path, 0.5, 40))).editDuration, 22'050U);
  EXPECT_EQ(Movie(Boxes(exported(path, -1, 41))).editDuration, 44'100U);
}

TEST_F(Export, OtherProgramsPresentTheSameFrames) {
  const Sound source = song(44'100, 2, std::size_t{4} * 44'100);
  const auto tone = exported(wav(source), 1, 2.5);
  run({"ffmpeg", "-v", "error", "-i", tone.string(), "-c:a", "pcm_f32le",
       file("decoded.wav").string()});
  const Sound decoded = readAll(file("decoded.wav"));
  EXPECT_GE(decoded.frames(), 110'250U);
  EXPECT_LT(decoded.frames(), 110'250U + 1024) << "only the last packet's padding may remain";
  EXPECT_EQ(lagBehind(cut(source, 44'100, 110'250), decoded, 200, 200, 100'000), 0);
}

TEST_F(Export, EveryKindOfSongCanBeExported) {
  for (const SongFormat& format : songFormats()) {
    const Sound source = song(format.rate, 2, sourceLength);
    writeWav(file("s.wav"), source);
    const auto path = makeSong(format, file("s.wav"));
    const auto tone = exported(path, 0.5, 1);
    const Movie movie{Boxes(tone)};
    EXPECT_EQ(movie.editDuration, movie.movieTimescale) << format.name;
    const auto whole = readAll(path);
    const Sound expected =
        cut(whole, static_cast<std::size_t>(whole.rate / 2), static_cast<std::size_t>(whole.rate));
    const Sound sound = readAll(tone);
    // Frames of different rates cannot be compared.
    if (sound.rate != whole.rate) continue;
    EXPECT_EQ(lagBehind(expected, sound, 100, 100, 20'000), 0) << format.name;
  }
}

}  // namespace
}  // namespace quibel::test
