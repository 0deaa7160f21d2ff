// Any bytes as a song: opened, read on from its beginning and from other places.
// What a song promises holds for every file, however it was made.

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "fuzz/MemoryInput.h"
#include "song/decoding/OpenSong.h"

namespace quibel::fuzz {
namespace {

constexpr std::uint32_t bufferFrames = 4096;

// A few seconds tell as much as hours.
constexpr std::int64_t mostFrames = 1 << 18;

void expect(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", promise);
  std::abort();
}

// Reads up to `limit` frames from where the song stands; false after an error.
bool readOn(platform::AudioFile& song, std::int64_t limit) {
  const auto buffer = song.makeBuffer(bufferFrames);
  if (!buffer) return false;
  for (std::int64_t frames = 0; frames < limit && song.framePosition() < song.length();) {
    const std::int64_t before = song.framePosition();
    const auto result = song.read(*buffer, bufferFrames);
    if (!result) {
      expect(!result.error().localizedDescription().empty(), "a failed read says why");
      return false;
    }
    const std::int64_t count = buffer->frameLength();
    expect(count == std::min<std::int64_t>(bufferFrames, song.length() - before),
           "a read fills its buffer unless the song ends");
    expect(song.framePosition() == before + count, "the position follows what was read");
    frames += count;
  }
  return true;
}

void useSong(platform::AudioFile& song) {
  const auto format = song.processingFormat();
  expect(format.sampleRate > 0 && std::isfinite(format.sampleRate), "a song has a rate");
  expect(format.channelCount > 0, "a song has channels");
  expect(song.length() >= 0, "a length is no less than nothing");
  expect(song.framePosition() == 0, "a song stands at its beginning");
  if (!readOn(song, mostFrames)) return;
  for (const std::int64_t place : {song.length() / 2, song.length() - 1, std::int64_t{0}}) {
    if (!song.seek(place)) continue;
    expect(song.framePosition() == std::max<std::int64_t>(place, 0), "a seek arrives");
    if (!readOn(song, bufferFrames)) return;
  }
}

void useAnotherReader(const platform::AudioFile& song) {
  const auto other = song.anotherReader();
  if (!other) return;
  expect(other->length() == song.length() && other->framePosition() == 0, "it is the same song");
  if (other->seek(song.length() / 2)) static_cast<void>(readOn(*other, bufferFrames));
}

}  // namespace
}  // namespace quibel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quibel;
  if (size == 0) return 0;
  const auto song = song::openAudioFile(fuzz::inputOf({data, size}));
  if (song) {
    fuzz::useSong(**song);
    fuzz::useAnotherReader(**song);
  } else {
    fuzz::expect(!song.error().localizedDescription().empty(), "a refusal says why");
  }
  return 0;
}
