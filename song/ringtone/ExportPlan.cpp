#include "song/ringtone/ExportPlan.h"

#include <algorithm>

#include "song/file/Pointers.h"

namespace quibel::song {

namespace {

constexpr int discRate = 44'100;
constexpr int studioRate = 48'000;

// Longer than any song; keeps the arithmetic within 64 bits.
constexpr std::int64_t longestSeconds = 1'000'000'000;

std::int64_t framesOf(const platform::Time& time, int rate, AVRounding rounding) {
  const std::int64_t limit = longestSeconds * time.timescale;
  return av_rescale_rnd(std::clamp(time.value, -limit, limit), rate, time.timescale, rounding);
}

}  // namespace

int outputRate(int songRate) {
  // The family of 44,100 is that of a quarter of it: 11,025, 22,050, 88,200 …
  return songRate % (discRate / 4) == 0 ? discRate : studioRate;
}

int outputChannels(int songChannels) { return songChannels == 1 ? 1 : 2; }

std::int64_t bitRate(int channels) { return channels == 1 ? 128'000 : 256'000; }

Fragment fragmentOf(const platform::TimeRange& range, std::int64_t length, int songRate,
                    int fileRate) {
  const std::int64_t start = framesOf(range.start, songRate, AV_ROUND_DOWN);
  const std::int64_t end = start + framesOf(range.duration, songRate, AV_ROUND_UP);
  Fragment fragment;
  fragment.begin = std::clamp<std::int64_t>(start, 0, length);
  fragment.frames = std::max<std::int64_t>(0, std::min(end, length) - fragment.begin);
  fragment.outputFrames =
      std::min(std::max<std::int64_t>(0, framesOf(range.duration, fileRate, AV_ROUND_DOWN)),
               av_rescale_rnd(fragment.frames, fileRate, songRate, AV_ROUND_DOWN));
  if (fileRate == songRate) fragment.frames = fragment.outputFrames;
  return fragment;
}

}  // namespace quibel::song
