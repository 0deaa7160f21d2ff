#include <algorithm>
#include <cmath>
#include <ostream>

#include "tests/song/Levels.h"
#include "tests/song/ringtone/ExportFixture.h"
#include "tests/support/MadeFiles.h"

// Ringtones as programs read them that share nothing with this one but, for two
// of them, the decoder.

namespace quibel::test {
namespace {

using Command = std::vector<std::string>;

struct Reader {
  const char* name;
  /// Decodes a ringtone into a WAV file.
  Command (*command)(const std::string& tone, const std::string& wav);
};

void PrintTo(const Reader& reader, std::ostream* stream) { *stream << reader.name; }

const Reader readers[] = {
    {"Ffmpeg",
     [](const std::string& tone, const std::string& wav) -> Command {
       return {"ffmpeg", "-v", "error", "-y", "-i", tone, "-c:a", "pcm_f32le", wav};
     }},
    {"Faad",
     [](const std::string& tone, const std::string& wav) -> Command {
       return {"faad", "-q", "-b", "4", "-o", wav, tone};
     }},
    {"GStreamer",
     [](const std::string& tone, const std::string& wav) -> Command {
       return {"gst-launch-1.0",
               "-q",
               "filesrc",
               "location=" + tone,
               "!",
               "qtdemux",
               "!",
               "avdec_aac",
               "!",
               "audioconvert",
               "!",
               "audio/x-raw,format=F32LE",
               "!",
               "wavenc",
               "!",
               "filesink",
               "location=" + wav};
     }},
};

// Frames that may follow the last one, for want of the edit list's end, or lack:
// those of the last packet.
constexpr std::size_t packet = 1024;

class ForeignReader : public Export, public testing::WithParamInterface<Reader> {
 protected:
  Sound decode(const std::filesystem::path& tone) const {
    const auto decoded = file("decoded.wav");
    std::filesystem::remove(decoded);
    run(GetParam().command(tone.string(), decoded.string()));
    return readAll(decoded);
  }

  /// A song at another rate, converted by another program.
  static std::filesystem::path converted(const std::filesystem::path& song, int rate,
                                         const std::filesystem::path& to) {
    makeFile({"ffmpeg", "-v", "error", "-y", "-i", "{in}", "-ar", std::to_string(rate), "-c:a",
              "pcm_f32le", "{out}"},
             song, to);
    return to;
  }
};

TEST_P(ForeignReader, HearsTheSongFromTheStartAtItsLevel) {
  struct Form {
    int rate, channels, toRate;
  };
  // Every form that a ringtone has. Other songs are converted to these before they are
  // encoded, and their files differ in nothing from these.
  for (const Form& form : {Form{44'100, 2, 44'100}, Form{44'100, 1, 44'100},
                           Form{48'000, 2, 48'000}, Form{8'000, 1, 48'000}}) {
    // A rising tone, which coders keep whole and no two places of which are alike.
    const int least = std::min(form.rate, form.toRate);
    writeWav(file("rising.wav"), sweep(least, form.channels, std::size_t{5} * unsigned(least)));
    const auto path = converted(file("rising.wav"), form.rate, file("song.wav"));
    const Sound source = readAll(converted(path, form.toRate, file("converted.wav")));
    for (const double start : {0.0, 2.5, 4.5}) {
      SCOPED_TRACE(std::to_string(form.rate) + " Hz, " + std::to_string(form.channels) +
                   " channels, from " + std::to_string(start));
      const double seconds = std::min(2.0, 5 - start);
      const Sound tone = decode(exported(path, start, seconds));
      const auto begin = static_cast<std::size_t>(start * form.toRate);
      const auto frames = static_cast<std::size_t>(seconds * form.toRate);
      ASSERT_EQ(tone.rate, form.toRate);
      EXPECT_GE(tone.frames() + packet, frames);
      EXPECT_LE(tone.frames(), frames + packet);
      const Sound expected = cut(source, begin, frames);
      const std::size_t stretch = frames - 4 * packet;
      const int lag = lagBehind(expected, tone, 1100, 1100, 15'000);
      // The song's frame at the start may begin a part of a frame before it.
      const double before = start * form.rate - std::floor(start * form.rate);
      EXPECT_LE(std::abs(lag), 1 + std::lround(before * form.toRate / form.rate));
      EXPECT_NEAR(level(cut(tone, packet, stretch)), level(cut(expected, packet, stretch)), 0.1);
    }
  }
}

TEST_P(ForeignReader, HearsNothingFromBeforeOrBehindTheFragment) {
  // A faint tone between noises: packets that are all alike are too much for faad.
  Sound source = noise(44'100, 1, std::size_t{5} * 44'100, 3, 0.9F);
  const Sound faint = sine(44'100, 1, 44'100, 440, 0.01F);
  std::ranges::copy(faint.channels[0], source.channels[0].begin() + 44'100);
  const Sound tone = decode(exported(wav(source), 1, 1));
  EXPECT_GT(tone.frames(), 44'100 - packet);
  for (const float sample : tone.channels[0]) ASSERT_LT(std::fabs(sample), 0.02F);
}

INSTANTIATE_TEST_SUITE_P(Readers, ForeignReader, testing::ValuesIn(readers),
                         [](const auto& parameter) { return parameter.param.name; });

/// What a program prints.
std::string printed(const std::filesystem::path& to, const std::string& command) {
  run({"sh", "-c", command + " > '" + to.string() + "'"});
  const auto bytes = readBytes(to);
  return {bytes.begin(), bytes.end()};
}

TEST_F(Export, ToolsThatDescribeFilesAgreeOnWhatTheySee) {
  const auto tone = exported(wav(song(44'100, 2, std::size_t{42} * 44'100)), 1, 40).string();
  const auto told = [&](const std::string& command) {
    return printed(file("printed"), command + " '" + tone + "'");
  };
  EXPECT_EQ(told("mediainfo '--Inform=General;%CodecID%,%AudioCount%,%Duration%,%Title%"
                 "%Encoded_Application%%Encoded_Library%%Encoded_Date%%Cover%'"),
            "M4A ,1,40000,\n");
  EXPECT_EQ(told("mediainfo '--Inform=Audio;%Format% %Format_AdditionalFeatures%,"
                 "%SamplingRate%,%Channels%,%Duration%'"),
            "AAC LC,44100,2,40000\n");
  EXPECT_EQ(told("exiftool -n -s3 -MajorBrand -TimeScale -Duration -TrackDuration -AudioFormat "
                 "-AudioChannels -AudioSampleRate -CreateDate"),
            "M4A\n44100\n40\n40\nmp4a\n2\n44100\n0000:00:00 00:00:00\n");
  EXPECT_EQ(told("exiftool -Title -Encoder -Software -CoverArt"), "");
  EXPECT_EQ(told("ffprobe -v error -of csv=p=0 -show_entries "
                 "stream=codec_name,profile,sample_rate,channels,duration"),
            "aac,LC,44100,2,40.000000\n");
  EXPECT_EQ(told("ffprobe -v error -of csv=p=0 -show_entries "
                 "format=nb_streams,duration:format_tags=major_brand,encoder,title"),
            "1,40.000000,M4A \n");
  // Nothing but the mark that text in Unicode begins with.
  EXPECT_EQ(printed(file("printed"), "AtomicParsley '" + tone + "' -t"), "\uFEFF");
}

}  // namespace
}  // namespace quibel::test
