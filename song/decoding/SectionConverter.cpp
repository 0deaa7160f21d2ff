#include "song/decoding/SectionConverter.h"

#include <new>

namespace quibel::song {

const AVFrame* SectionConverter::convert(const AVFrame& frame) {
  const int rate = static_cast<int>(format_.sampleRate);
  const int channels = static_cast<int>(format_.channelCount);
  if (frame.sample_rate == rate && frame.ch_layout.nb_channels == channels) {
    resampler_.reset();
    return &frame;
  }
  const bool isSameSection = resampler_ && sectionForm_->format == frame.format &&
                             sectionForm_->sample_rate == frame.sample_rate &&
                             sectionForm_->ch_layout.nb_channels == frame.ch_layout.nb_channels;
  if (!isSameSection && !setUp(frame)) return nullptr;

  av_frame_unref(converted_.get());
  converted_->format = AV_SAMPLE_FMT_FLTP;
  converted_->sample_rate = rate;
  av_channel_layout_default(&converted_->ch_layout, channels);
  converted_->nb_samples = swr_get_out_samples(resampler_.get(), frame.nb_samples);
  if (converted_->nb_samples <= 0) return nullptr;
  if (av_frame_get_buffer(converted_.get(), 0) < 0) throw std::bad_alloc();
  const int count =
      swr_convert(resampler_.get(), converted_->extended_data, converted_->nb_samples,
                  const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
  if (count < 0) return nullptr;
  converted_->nb_samples = count;
  return converted_.get();
}

bool SectionConverter::setUp(const AVFrame& frame) {
  if (!sectionForm_) sectionForm_.reset(av_frame_alloc());
  if (!converted_) converted_.reset(av_frame_alloc());
  if (!sectionForm_ || !converted_) throw std::bad_alloc();
  av_frame_unref(sectionForm_.get());
  sectionForm_->format = frame.format;
  sectionForm_->sample_rate = frame.sample_rate;
  if (av_channel_layout_copy(&sectionForm_->ch_layout, &frame.ch_layout) < 0) {
    throw std::bad_alloc();
  }

  AVChannelLayout from{};
  if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
    av_channel_layout_default(&from, frame.ch_layout.nb_channels);
  } else if (av_channel_layout_copy(&from, &frame.ch_layout) < 0) {
    throw std::bad_alloc();
  }
  AVChannelLayout to{};
  av_channel_layout_default(&to, static_cast<int>(format_.channelCount));
  SwrContext* resampler = nullptr;
  const int code = swr_alloc_set_opts2(
      &resampler, &to, AV_SAMPLE_FMT_FLTP, static_cast<int>(format_.sampleRate), &from,
      static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
  av_channel_layout_uninit(&from);
  av_channel_layout_uninit(&to);
  resampler_.reset(resampler);
  if (code >= 0 && swr_init(resampler_.get()) >= 0) return true;
  resampler_.reset();
  return false;
}

}  // namespace quibel::song
