#include "tests/song/Songs.h"

namespace quibel::test {

namespace {

using Arguments = std::vector<std::string>;

constexpr auto source = static_cast<std::int64_t>(sourceLength);

// The length in whole packets, where nothing in the file tells the song's own.
constexpr std::int64_t inPackets(std::int64_t frames, std::int64_t packet) {
  return (frames + packet - 1) / packet * packet;
}

Arguments ffmpeg(const Arguments& options) {
  Arguments command{"ffmpeg", "-v", "error", "-y", "-i", "{in}", "-fflags", "+bitexact"};
  command.insert(command.end(), options.begin(), options.end());
  command.emplace_back("{out}");
  return command;
}

// A song that takes more than one program: {in} is $0 and {out} is $1.
Arguments shell(const std::string& script) { return {"sh", "-ec", script, "{in}", "{out}"}; }

// AAC as FFmpeg writes it, with iTunes' own note of the delay, the padding and the song.
Arguments taggedAac(const std::string& options) {
  return shell("ffmpeg -v error -y -i $0 -c:a aac -aac_pns 0 -fflags +bitexact " + options +
               " $1\n"
               "frames=$((($(stat -c %s $0) - 44) / 4))\n"
               "note=$(printf ' 00000000 %08X %08X %016X' 1024 $((1023 - (frames - 1) % 1024))"
               " $frames)\n"
               "AtomicParsley $1 --overWrite --rDNSatom \"$note 00000000 00000000\""
               " name=iTunSMPB domain=com.apple.iTunes >/dev/null");
}

SongFormat lossless(std::string name, std::string file, Arguments command) {
  return {std::move(name), std::move(file), std::move(command), source, true};
}

SongFormat lossy(std::string name, std::string file, Arguments command,
                 std::int64_t length = source, int rate = 44'100) {
  return {std::move(name), std::move(file), std::move(command), length, false, rate};
}

SongFormat mono(SongFormat format) {
  format.channels = 1;
  return format;
}

SongFormat wholeBlocks(std::string name, const std::string& codec, std::int64_t block) {
  const std::int64_t length = inPackets(source, block);
  return lossy(std::move(name), "song.wav",
               ffmpeg({"-af", "apad=whole_len=" + std::to_string(length), "-c:a", codec}), length);
}

std::vector<SongFormat> makeFormats() {
  return {
      lossless("Wav16", "song.wav", ffmpeg({"-c:a", "pcm_s16le"})),
      lossless("Wav24", "song.wav", ffmpeg({"-c:a", "pcm_s24le"})),
      lossless("Wav32", "song.wav", ffmpeg({"-c:a", "pcm_s32le"})),
      lossless("WavFloat", "song.wav", ffmpeg({"-c:a", "pcm_f32le"})),
      lossless("WavDouble", "song.wav", ffmpeg({"-c:a", "pcm_f64le"})),
      lossy("Wav8", "song.wav", ffmpeg({"-c:a", "pcm_u8"})),
      lossy("WavALaw", "song.wav", ffmpeg({"-c:a", "pcm_alaw"})),
      lossy("WavMuLaw", "song.wav", ffmpeg({"-c:a", "pcm_mulaw"})),
      // Blocks of 1,017 and 1,012 frames, all filled: FFmpeg 7.1 notes how far the
      // last one is, 5.1 does not.
      wholeBlocks("WavImaAdpcm", "adpcm_ima_wav", 1017),
      wholeBlocks("WavMsAdpcm", "adpcm_ms", 1012),
      // FFmpeg counts the bytes up to a multiple of 8 as sound: these are one.
      lossless("Wave64", "song.w64", ffmpeg({"-c:a", "pcm_s32le"})),
      lossless("Rf64", "song.wav", ffmpeg({"-rf64", "always"})),
      lossless("Aiff16", "song.aiff", ffmpeg({})),
      lossless("Aiff24", "song.aiff", ffmpeg({"-c:a", "pcm_s24be"})),
      lossless("AifcFloat", "song.aifc", ffmpeg({"-c:a", "pcm_f32be"})),
      lossy("AifcALaw", "song.aifc", ffmpeg({"-c:a", "pcm_alaw"})),
      lossless("Caf", "song.caf", ffmpeg({})),
      lossless("CafAlac", "song.caf", ffmpeg({"-c:a", "alac"})),
      lossless("Au", "song.au", ffmpeg({})),
      lossy("AuMuLaw", "song.au", ffmpeg({"-c:a", "pcm_mulaw"})),
      lossless("Flac", "song.flac", {"flac", "-s", "-f", "-o", "{out}", "{in}"}),
      lossless("OggFlac", "song.oga", {"flac", "-s", "-f", "--ogg", "-o", "{out}", "{in}"}),
      lossless("Alac", "song.m4a", ffmpeg({"-c:a", "alac"})),
      lossless("WavPack", "song.wv", ffmpeg({})),
      lossless("MonkeysAudio", "song.ape", {ENCODE_APE, "{in}", "{out}"}),
      lossless("TrueAudio", "song.tta", ffmpeg({})),
      lossless("MatroskaFlac", "song.mka", ffmpeg({"-c:a", "flac"})),
      lossless("Mp4Flac", "song.mp4", ffmpeg({"-c:a", "flac", "-strict", "-2"})),
      lossless("MatroskaPcm", "song.mka", ffmpeg({"-c:a", "pcm_s16le"})),
      lossless("MoviePcm", "song.mov", ffmpeg({"-c:a", "pcm_s16le"})),
      lossy("Mp3ConstantRate", "song.mp3", {"lame", "--quiet", "-b", "128", "{in}", "{out}"}),
      lossy("Mp3VariableRate", "song.mp3", {"lame", "--quiet", "-V4", "{in}", "{out}"}),
      // Frames too small for the tag with the lengths.
      lossy("Mp3FullReservoir", "song.mp3",
            {"lame", "--quiet", "-b", "32", "--resample", "44.1", "{in}", "{out}"},
            inPackets(source + 1105, 1152)),
      // LAME's encoder delay is 1,105 frames with its decoder's part.
      lossy("Mp3WithoutHeader", "song.mp3", {"lame", "--quiet", "-t", "{in}", "{out}"},
            inPackets(source + 1105, 1152)),
      lossy("Mp2", "song.mp2", ffmpeg({"-c:a", "mp2"}), inPackets(source, 1152)),
      lossy("AacM4a", "song.m4a", ffmpeg({"-c:a", "aac", "-aac_pns", "0"})),
      lossy("AacMov", "song.mov", ffmpeg({"-c:a", "aac", "-aac_pns", "0"})),
      lossy("AacFragmented", "song.m4a",
            ffmpeg({"-c:a", "aac", "-aac_pns", "0", "-movflags",
                    "+frag_keyframe+empty_moov+delay_moov"})),
      // Nothing tells the delay of 1,024 frames here.
      lossy("AacWithoutEdits", "song.m4a",
            ffmpeg({"-c:a", "aac", "-aac_pns", "0", "-use_editlist", "0"}), source + 1024),
      lossy("AacWithGaplessTag", "song.m4a", taggedAac("-use_editlist 0")),
      lossy("AacWithEditsAndGaplessTag", "song.m4a", taggedAac("")),
      // FFmpeg encodes the lower half only, and says that there is no upper one: here it
      // is told that there is.
      lossy("HeAac", "song.m4a",
            shell("ffmpeg -v error -y -i $0 -ar 22050 -c:a aac -aac_pns 0 -fflags +bitexact $1\n"
                  "LC_ALL=C sed -i 's/\\x56\\xe5\\x00/\\x56\\xe5\\xa0/' $1"),
            source + 1),
      lossy("AacAdts", "song.aac", ffmpeg({"-c:a", "aac", "-aac_pns", "0"}),
            inPackets(source + 1024, 1024)),
      lossy("Vorbis", "song.ogg", {"oggenc", "-Q", "-o", "{out}", "{in}"}),
      lossy("VorbisLow", "song.ogg", {"oggenc", "-Q", "-q", "-1", "-o", "{out}", "{in}"}),
      lossy("Opus", "song.opus", {"opusenc", "--quiet", "{in}", "{out}"}, source, 48'000),
      lossy("OpusSpeech", "song.opus", {"opusenc", "--quiet", "--bitrate", "24", "{in}", "{out}"},
            source, 48'000),
      lossy("OpusShortPackets", "song.opus",
            {"opusenc", "--quiet", "--framesize", "5", "{in}", "{out}"}, source, 48'000),
      lossy("WebmOpus", "song.webm", ffmpeg({"-c:a", "libopus"}), source, 48'000),
      lossy("MatroskaVorbis", "song.mka",
            shell("oggenc -Q -o $1.ogg $0\nffmpeg -v error -y -i $1.ogg -c:a copy $1")),
      lossy("Mp4Opus", "song.mp4", ffmpeg({"-c:a", "libopus"}), source, 48'000),
      // FFmpeg's encoder puts one block before the song, and its decoder leaves two out.
      lossy("Wma", "song.wma", ffmpeg({"-c:a", "wmav2"}), inPackets(source, 2048) - 2048),
      mono(lossy("Amr", "song.amr", {"sox", "{in}", "-t", "amr-nb", "{out}"},
                 inPackets(source, 160), 8'000)),
      mono(lossy("AmrWideband", "song.awb",
                 shell("sox $0 -r 16000 -c 1 $1.wav\n'" ENCODE_AMR_WB "' $1.wav $1"),
                 inPackets(source, 320), 16'000)),
      lossy("Ac3", "song.ac3", ffmpeg({"-c:a", "ac3"}), inPackets(source, 1536)),
      lossy("Eac3", "song.eac3", ffmpeg({"-c:a", "eac3"}), inPackets(source, 1536)),
  };
}

}  // namespace

const std::vector<SongFormat>& songFormats() {
  static const std::vector<SongFormat> formats = makeFormats();
  return formats;
}

}  // namespace quibel::test
