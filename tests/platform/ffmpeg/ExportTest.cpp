#include <cmath>
#include <csignal>
#include <future>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "platform/ffmpeg/ExportSession.h"
#include "tests/platform/ffmpeg/Boxes.h"
#include "tests/platform/ffmpeg/Songs.h"

namespace quibel::test {
namespace {

using platform::ExportStatus;
using platform::FileURL;
using platform::makeTime;

class Export : public testing::Test {
 protected:
  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }

  /// Exports and waits for the end.
  std::shared_ptr<platform::ExportSession> exportSong(const std::filesystem::path& song,
                                                      const std::filesystem::path& to, double start,
                                                      double duration) {
    auto session = ffmpeg::makeExportSession(FileURL(song));
    if (!session) throw std::runtime_error("no session");
    session->setOutputURL(FileURL(to));
    session->setOutputFileType(platform::FileType::appleM4A);
    session->setTimeRange({makeTime(start, 600), makeTime(duration, 600)});
    std::promise<void> ended;
    session->exportAsynchronously([&] { ended.set_value(); });
    ended.get_future().wait();
    return session;
  }

  Boxes exported(const std::filesystem::path& song, double start, double duration) {
    const auto to = file("tone.m4a");
    std::filesystem::remove(to);
    const auto session = exportSong(song, to, start, duration);
    if (session->status() != ExportStatus::completed) {
      throw std::runtime_error(session->error()->localizedDescription());
    }
    return Boxes(readBytes(to));
  }

  std::filesystem::path wav(const Sound& sound) {
    writeWav(file("song.wav"), sound);
    return file("song.wav");
  }

  TemporaryDirectory directory_;
};

Sound cut(const Sound& sound, std::size_t begin, std::size_t count) {
  Sound part{sound.rate, {}};
  for (const auto& channel : sound.channels) {
    const auto from = channel.begin() + static_cast<std::ptrdiff_t>(begin);
    part.channels.emplace_back(from, from + static_cast<std::ptrdiff_t>(count));
  }
  return part;
}

double level(const std::vector<float>& samples, std::size_t from, std::size_t to) {
  double sum = 0;
  for (std::size_t i = from; i < to; ++i) sum += double{samples[i]} * double{samples[i]};
  return 10 * std::log10(sum / static_cast<double>(to - from));
}

TEST_F(Export, BoxesPresentExactlyTheFrames) {
  const Boxes boxes = exported(wav(song(44'100, 2, std::size_t{50} * 44'100)), 1.5, 40);
  const Movie movie(boxes);
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
  const auto song = wav(test::song(48'000, 1, std::size_t{42} * 48'000));
  for (const double start : {0.0, 0.001, 0.777, 1.9999}) {
    const Movie movie(exported(song, start, 40));
    EXPECT_LE(movie.movieDuration, 40 * movie.movieTimescale);
    EXPECT_LE(movie.trackDuration, 40 * movie.movieTimescale);
    EXPECT_EQ(movie.editDuration, 40 * movie.movieTimescale);
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
  const Boxes boxes = exported(file("song.mp3"), 0, 1);
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

TEST_F(Export, FirstFrameIsTheSongsFrameAtTheStart) {
  const Sound source = song(44'100, 2, std::size_t{10} * 44'100);
  const auto path = wav(source);
  for (const double start : {0.0, 0.5, 3.21, 9.5}) {
    const double duration = std::min(2.0, 10 - start);
    static_cast<void>(exported(path, start, duration));
    const Sound tone = readAll(file("tone.m4a"));
    const auto begin = static_cast<std::size_t>(makeTime(start, 600).value * 44'100 / 600);
    const Sound expected =
        cut(source, begin, static_cast<std::size_t>(makeTime(duration, 600).value * 147 / 2));
    ASSERT_EQ(tone.frames(), expected.frames()) << start;
    EXPECT_EQ(lagBehind(expected, tone, 200, 200, expected.frames() - 400), 0) << start;
    for (std::size_t channel = 0; channel < 2; ++channel) {
      EXPECT_NEAR(level(tone.channels[channel], 0, tone.frames()),
                  level(expected.channels[channel], 0, tone.frames()), 0.1);
    }
  }
}

TEST_F(Export, NothingFromBeforeOrBehindTheFragmentIsHeard) {
  // Loud everywhere but in the fragment.
  Sound source = noise(44'100, 1, std::size_t{5} * 44'100, 3, 0.9F);
  std::fill_n(source.channels[0].begin() + 44'100, 44'100, 0.0F);
  static_cast<void>(exported(wav(source), 1, 1));
  const Sound tone = readAll(file("tone.m4a"));
  EXPECT_EQ(tone.frames(), 44'100U);
  for (const float sample : tone.channels[0]) ASSERT_LT(std::fabs(sample), 1e-4F);
}

struct Form {
  int rate;
  int channels;
  int toRate;
  std::uint64_t toChannels;
};

class ExportOfForm : public Export, public testing::WithParamInterface<Form> {};

TEST_P(ExportOfForm, GivesTheRateChannelsPlaceAndLevel) {
  const Form form = GetParam();
  // A tone in one place of two seconds of quiet: its edges tell the place.
  Sound source = sine(form.rate, form.channels, 2 * static_cast<std::size_t>(form.rate), 440, 0.0F);
  const Sound tone = sine(form.rate, form.channels, source.frames(), 440, 0.4F);
  const auto first = static_cast<std::size_t>(form.rate * 3 / 4);
  const auto last = static_cast<std::size_t>(form.rate * 5 / 4);
  for (std::size_t channel = 0; channel < source.channels.size(); ++channel) {
    std::copy(tone.channels[channel].begin() + static_cast<std::ptrdiff_t>(first),
              tone.channels[channel].begin() + static_cast<std::ptrdiff_t>(last),
              source.channels[channel].begin() + static_cast<std::ptrdiff_t>(first));
  }
  const Movie movie(exported(wav(source), 0.5, 1));
  EXPECT_EQ(movie.mediaTimescale, static_cast<std::uint64_t>(form.toRate));
  EXPECT_EQ(movie.editDuration, static_cast<std::uint64_t>(form.toRate));
  const Sound result = readAll(file("tone.m4a"));
  ASSERT_EQ(result.channels.size(), form.toChannels);
  ASSERT_EQ(result.frames(), static_cast<std::size_t>(form.toRate));
  const Sound expected = cut(sine(form.toRate, 1, 2 * static_cast<std::size_t>(form.toRate), 440),
                             static_cast<std::size_t>(form.toRate / 2), result.frames());
  const auto from = static_cast<std::size_t>(form.toRate * 3 / 10);
  const auto count = static_cast<std::size_t>(form.toRate * 4 / 10);
  // Within one frame of the song.
  EXPECT_LE(std::abs(lagBehind(expected, result, 40, from, count)),
            (form.toRate + form.rate - 1) / form.rate);
  const double inside = level(result.channels[0], from, from + count);
  const double outside = level(result.channels[0], 0, static_cast<std::size_t>(form.toRate / 5));
  EXPECT_GT(inside - outside, 40);
  if (form.channels <= 2) {
    EXPECT_NEAR(inside, 20 * std::log10(0.4 / std::sqrt(2)), 0.1);
  }
  for (const auto& channel : result.channels) {
    for (const float sample : channel) ASSERT_LT(std::fabs(sample), 1.0F);
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, ExportOfForm,
                         testing::Values(Form{44'100, 1, 44'100, 1}, Form{44'100, 2, 44'100, 2},
                                         Form{48'000, 2, 48'000, 2}, Form{8'000, 1, 48'000, 1},
                                         Form{11'025, 2, 44'100, 2}, Form{22'050, 1, 44'100, 1},
                                         Form{32'000, 2, 48'000, 2}, Form{88'200, 2, 44'100, 2},
                                         Form{96'000, 2, 48'000, 2}, Form{192'000, 1, 48'000, 1},
                                         Form{48'000, 6, 48'000, 2}, Form{44'100, 3, 44'100, 2},
                                         Form{44'100, 8, 44'100, 2}),
                         [](const auto& parameter) {
                           return "Rate" + std::to_string(parameter.param.rate) + "Channels" +
                                  std::to_string(parameter.param.channels);
                         });

TEST_F(Export, DownmixKeepsTheCentreAndDoesNotClip) {
  // In 5.1 the third channel is the centre.
  Sound source = sine(48'000, 6, 48'000, 440, 1.0F);
  static_cast<void>(exported(wav(source), 0, 1));
  Sound result = readAll(file("tone.m4a"));
  // A coder may overshoot where the tone sets in.
  for (std::size_t i = 4096; i < 40'000; ++i) {
    ASSERT_LT(std::fabs(result.channels[0][i]), 1.01F);
  }
  for (const std::size_t channel : {0U, 1U, 3U, 4U, 5U}) {
    std::ranges::fill(source.channels[channel], 0.0F);
  }
  static_cast<void>(exported(wav(source), 0, 1));
  result = readAll(file("tone.m4a"));
  for (const auto& channel : result.channels) {
    EXPECT_GT(level(channel, 10'000, 40'000), -20) << "the centre alone";
  }
}

TEST_F(Export, RangesBeyondTheSongAreCutToIt) {
  const Sound source = song(44'100, 2, 44'100);
  const auto path = wav(source);
  EXPECT_EQ(Movie(exported(path, -0.25, 1)).editDuration, 33'075U);
  EXPECT_EQ(lagBehind(source, readAll(file("tone.m4a")), 200, 200, 30'000), 0);
  EXPECT_EQ(Movie(exported(path, 0.5, 40)).editDuration, 22'050U);
  EXPECT_EQ(Movie(exported(path, -1, 41)).editDuration, 44'100U);
}

TEST_F(Export, RangeWithoutAnyFrameFails) {
  const auto path = wav(song(44'100, 2, 44'100));
  for (const double start : {-3.0, 1.0, 5.0}) {
    const auto session = exportSong(path, file("tone.m4a"), start, 1);
    EXPECT_EQ(session->status(), ExportStatus::failed);
    EXPECT_EQ(session->error()->localizedDescription(), "El fragmento elegido no contiene audio.");
    EXPECT_FALSE(std::filesystem::exists(file("tone.m4a")));
  }
}

TEST_F(Export, EveryKindOfSongCanBeExported) {
  for (const SongFormat& format : songFormats()) {
    const Sound source = song(format.rate, 2, sourceLength);
    writeWav(file("s.wav"), source);
    const auto path = makeSong(format, file("s.wav"));
    const Movie movie(exported(path, 0.5, 1));
    EXPECT_EQ(movie.editDuration, movie.movieTimescale) << format.name;
    const auto whole = readAll(path);
    const Sound expected =
        cut(whole, static_cast<std::size_t>(whole.rate / 2), static_cast<std::size_t>(whole.rate));
    EXPECT_EQ(lagBehind(expected, readAll(file("tone.m4a")), 100, 100, 20'000), 0) << format.name;
  }
}

TEST_F(Export, OtherProgramsPresentTheSameFrames) {
  const Sound source = song(44'100, 2, std::size_t{4} * 44'100);
  static_cast<void>(exported(wav(source), 1, 2.5));
  run({"ffmpeg", "-v", "error", "-i", file("tone.m4a").string(), "-c:a", "pcm_f32le",
       file("decoded.wav").string()});
  const Sound decoded = readAll(file("decoded.wav"));
  EXPECT_GE(decoded.frames(), 110'250U);
  EXPECT_LT(decoded.frames(), 110'250U + 1024) << "only the last packet's padding may remain";
  EXPECT_EQ(lagBehind(cut(source, 44'100, 110'250), decoded, 200, 200, 100'000), 0);
}

TEST_F(Export, PermissionsFollowTheUmask) {
  const auto path = wav(song(44'100, 1, 44'100));
  const mode_t before = umask(027);
  static_cast<void>(exported(path, 0, 1));
  umask(before);
  struct stat status{};
  ASSERT_EQ(stat(file("tone.m4a").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(Export, SongOfNoKnownKindGivesNoSession) {
  writeBytes(file("text.mp3"), std::vector<std::uint8_t>(5000, 'x'));
  EXPECT_EQ(ffmpeg::makeExportSession(FileURL(file("text.mp3"))), nullptr);
}

TEST_F(Export, SongThatIsGoneFailsWithTheReason) {
  const auto session = exportSong(file("gone.mp3"), file("tone.m4a"), 0, 1);
  EXPECT_EQ(session->status(), ExportStatus::failed);
  EXPECT_EQ(session->error()->localizedDescription(), "El archivo no existe o se ha movido.");
}

TEST_F(Export, SongRemovedAfterTheSessionWasMadeIsExportedAllTheSame) {
  const auto path = wav(song(44'100, 1, 88'200));
  const auto session = ffmpeg::makeExportSession(FileURL(path));
  std::filesystem::remove(path);
  session->setOutputURL(FileURL(file("tone.m4a")));
  session->setTimeRange({makeTime(0, 600), makeTime(1, 600)});
  std::promise<void> ended;
  session->exportAsynchronously([&] { ended.set_value(); });
  ended.get_future().wait();
  EXPECT_EQ(session->status(), ExportStatus::completed);
}

TEST_F(Export, SongCutAfterTheSessionWasMadeFails) {
  const auto path = wav(noise(44'100, 2, std::size_t{20} * 44'100));
  const auto session = ffmpeg::makeExportSession(FileURL(path));
  std::filesystem::resize_file(path, 100'000);
  session->setOutputURL(FileURL(file("tone.m4a")));
  session->setTimeRange({makeTime(5, 600), makeTime(10, 600)});
  std::promise<void> ended;
  session->exportAsynchronously([&] { ended.set_value(); });
  ended.get_future().wait();
  EXPECT_EQ(session->status(), ExportStatus::failed);
  EXPECT_EQ(session->error()->localizedDescription(), "El archivo ha cambiado mientras se leía.");
}

TEST_F(Export, FolderThatIsNotThere) {
  const auto session = exportSong(wav(song(44'100, 1, 44'100)), file("no/tone.m4a"), 0, 1);
  EXPECT_EQ(session->status(), ExportStatus::failed);
  EXPECT_EQ(session->error()->localizedDescription(),
            "No se puede crear el archivo temporal (No such file or directory).");
}

TEST_F(Export, NameThatIsTakenIsLeftAlone) {
  writeBytes(file("tone.m4a"), {1, 2, 3});
  const auto session = exportSong(wav(song(44'100, 1, 44'100)), file("tone.m4a"), 0, 1);
  EXPECT_EQ(session->status(), ExportStatus::failed);
  EXPECT_EQ(readBytes(file("tone.m4a")), (std::vector<std::uint8_t>{1, 2, 3}));
}

TEST_F(Export, FileSizeLimitFailsAtEveryPlaceWhereItMayStrike) {
  const auto path = wav(noise(44'100, 2, std::size_t{8} * 44'100));
  ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  // A whole file takes some 230,000 bytes: the limit strikes at the header, in
  // the middle, at the last bytes, and at the index.
  static_cast<void>(exported(path, 0, 7));
  const auto size = std::filesystem::file_size(file("tone.m4a"));
  for (const rlim_t limit :
       {rlim_t{0}, rlim_t{10}, rlim_t{4'000}, rlim_t{size / 2}, rlim_t{size - 1}}) {
    std::filesystem::remove(file("tone.m4a"));
    rlimit less = before;
    less.rlim_cur = limit;
    setrlimit(RLIMIT_FSIZE, &less);
    const auto session = exportSong(path, file("tone.m4a"), 0, 7);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(session->status(), ExportStatus::failed) << limit;
    ASSERT_TRUE(session->error()) << limit;
    EXPECT_EQ(session->error()->localizedDescription(),
              "El sistema no permite un archivo tan grande.");
  }
}

TEST_F(Export, HandlerIsCalledOnceOnAnotherThreadAfterTheStatus) {
  const auto path = wav(song(44'100, 1, 44'100));
  const auto session = ffmpeg::makeExportSession(FileURL(path));
  EXPECT_EQ(session->status(), ExportStatus::unknown);
  session->setOutputURL(FileURL(file("tone.m4a")));
  session->setTimeRange({makeTime(0, 600), makeTime(1, 600)});
  std::promise<std::pair<std::thread::id, ExportStatus>> ended;
  session->exportAsynchronously(
      [&] { ended.set_value({std::this_thread::get_id(), session->status()}); });
  const auto [thread, status] = ended.get_future().get();
  EXPECT_TRUE(thread != std::this_thread::get_id());
  EXPECT_EQ(status, ExportStatus::completed);
  EXPECT_FALSE(session->error());
}

TEST_F(Export, HandlerMayHoldTheLastReference) {
  const auto path = wav(song(44'100, 1, 44'100));
  std::promise<void> ended;
  {
    auto session = ffmpeg::makeExportSession(FileURL(path));
    session->setOutputURL(FileURL(file("tone.m4a")));
    session->setTimeRange({makeTime(0, 600), makeTime(1, 600)});
    auto* const started = session.get();
    auto held = std::make_shared<std::shared_ptr<platform::ExportSession>>(session);
    started->exportAsynchronously([held, &ended] {
      held->reset();
      ended.set_value();
    });
  }
  ended.get_future().wait();
}

TEST_F(Export, DestructionDuringAnExportEndsItAndCallsTheHandler) {
  const auto path = wav(noise(44'100, 2, std::size_t{60} * 44'100));
  std::atomic<int> calls = 0;
  {
    const auto session = ffmpeg::makeExportSession(FileURL(path));
    session->setOutputURL(FileURL(file("tone.m4a")));
    session->setTimeRange({makeTime(0, 600), makeTime(40, 600)});
    session->exportAsynchronously([&] { ++calls; });
  }
  EXPECT_EQ(calls, 1);
}

TEST_F(Export, StopRequestCancels) {
  const auto path = wav(noise(44'100, 2, std::size_t{60} * 44'100));
  const std::stop_source stop;
  const auto session = ffmpeg::makeExportSession(FileURL(path), stop.get_token());
  session->setOutputURL(FileURL(file("tone.m4a")));
  session->setTimeRange({makeTime(0, 600), makeTime(40, 600)});
  stop.request_stop();
  std::promise<void> ended;
  session->exportAsynchronously([&] { ended.set_value(); });
  ended.get_future().wait();
  EXPECT_EQ(session->status(), ExportStatus::cancelled);
  EXPECT_EQ(session->error()->localizedDescription(), "La operación se ha cancelado.");
}

}  // namespace
}  // namespace quibel::test
