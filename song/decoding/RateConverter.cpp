#include "song/decoding/RateConverter.h"

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <vector>

#include "platform/StereoMix.h"
#include "song/file/Errors.h"

namespace quibel::song {

namespace {

struct Setting {
  const char* name;
  double value;
};

// libsoxr at its very high quality, where swresample was built with it …
constexpr std::array soxr{Setting{"resampler", SWR_ENGINE_SOXR}, Setting{"precision", 28}};
// … and otherwise swresample's own filter, longer than its default of 32 taps.
constexpr std::array native{Setting{"resampler", SWR_ENGINE_SWR}, Setting{"filter_size", 128},
                            Setting{"phase_shift", 12}, Setting{"cutoff", 0.98}};

ResamplerPointer tryEngine(const RateConverter::Form& from, const RateConverter::Form& to,
                           std::span<const Setting> settings) {
  AVChannelLayout fromLayout{};
  AVChannelLayout toLayout{};
  av_channel_layout_default(&fromLayout, from.channels);
  av_channel_layout_default(&toLayout, to.channels);
  SwrContext* created = nullptr;
  const int code = swr_alloc_set_opts2(&created, &toLayout, AV_SAMPLE_FMT_FLTP, to.rate,
                                       &fromLayout, AV_SAMPLE_FMT_FLTP, from.rate, 0, nullptr);
  av_channel_layout_uninit(&fromLayout);
  av_channel_layout_uninit(&toLayout);
  ResamplerPointer resampler(created);
  if (code < 0) throw std::bad_alloc();
  if (from.channels > 2 && to.channels == 2) {
    const auto gains =
        platform::stereoMix({.sampleRate = static_cast<double>(from.rate),
                             .channelCount = static_cast<std::uint32_t>(from.channels),
                             .speakers = from.speakers});
    const std::vector<double> matrix(gains.begin(), gains.end());
    if (swr_set_matrix(resampler.get(), matrix.data(), from.channels) < 0) return nullptr;
  }
  // Float samples are not kept below full scale unless that is asked for.
  if (av_opt_set_double(resampler.get(), "rematrix_maxval", 1.0, 0) < 0) return nullptr;
  for (const Setting& setting : settings) {
    if (av_opt_set_double(resampler.get(), setting.name, setting.value, 0) < 0) return nullptr;
  }
  if (swr_init(resampler.get()) < 0) return nullptr;
  return resampler;
}

}  // namespace

platform::Result<RateConverter> RateConverter::open(const Form& from, const Form& to) {
  auto resampler = tryEngine(from, to, soxr);
  if (!resampler) resampler = tryEngine(from, to, native);
  if (!resampler) return std::unexpected(makeError(Failure::internal));
  return RateConverter(std::move(resampler), to);
}

RateConverter::RateConverter(ResamplerPointer resampler, const Form& to)
    : resampler_(std::move(resampler)), to_(to), out_(av_frame_alloc()) {
  if (!out_) throw std::bad_alloc();
}

platform::Result<const AVFrame*> RateConverter::convert(const float* const* in, int frames) {
  av_frame_unref(out_.get());
  const int capacity = swr_get_out_samples(resampler_.get(), frames);
  if (capacity < 0) return std::unexpected(codeError(capacity, Failure::internal));
  if (capacity == 0 && frames == 0) return out_.get();
  out_->format = AV_SAMPLE_FMT_FLTP;
  out_->sample_rate = to_.rate;
  out_->nb_samples = std::max(capacity, 1);
  av_channel_layout_default(&out_->ch_layout, to_.channels);
  if (av_frame_get_buffer(out_.get(), 0) < 0) throw std::bad_alloc();
  // swresample takes planes of floats by pointers to bytes.
  const auto* const planes = reinterpret_cast<const std::uint8_t* const*>(in);
  const int count = swr_convert(resampler_.get(), out_->extended_data, out_->nb_samples,
                                const_cast<const std::uint8_t**>(planes), frames);
  if (count < 0) return std::unexpected(codeError(count, Failure::internal));
  out_->nb_samples = count;
  return out_.get();
}

}  // namespace quibel::song
