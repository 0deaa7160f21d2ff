#include "platform/ffmpeg/AacEncoder.h"

#include <algorithm>
#include <new>

#include "platform/ffmpeg/Errors.h"
#include "platform/ffmpeg/ExportPlan.h"

namespace quibel::ffmpeg {

namespace {

constexpr const char* encoderName = "aac";

}  // namespace

bool AacEncoder::isAvailable() { return avcodec_find_encoder_by_name(encoderName) != nullptr; }

platform::Result<AacEncoder> AacEncoder::open(int rate, int channels) {
  const AVCodec* const kind = avcodec_find_encoder_by_name(encoderName);
  if (kind == nullptr) return std::unexpected(makeError(Failure::noEncoder));
  CodecPointer codec(avcodec_alloc_context3(kind));
  if (!codec) throw std::bad_alloc();
  codec->sample_rate = rate;
  codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
  codec->time_base = {1, rate};
  codec->bit_rate = bitRate(channels);
  codec->profile = aacLowComplexity;
  codec->thread_count = 1;
  // The codec's configuration stands in the container, and no encoder's name anywhere.
  codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
  av_channel_layout_default(&codec->ch_layout, channels);
  AVDictionary* settings = nullptr;
  // At these bit rates the search called fast leaves 8 dB less noise in real music
  // than the default one, and takes less than half of its time.
  av_dict_set(&settings, "aac_coder", "fast", 0);
  // Noise in place of high tones saves bits that are not short here.
  av_dict_set(&settings, "aac_pns", "0", 0);
  // Nor does one channel stand for both: that costs up to 2 dB of noise.
  av_dict_set(&settings, "aac_is", "0", 0);
  const int code = avcodec_open2(codec.get(), kind, &settings);
  const DictionaryPointer unused(settings);
  if (code < 0) return std::unexpected(codeError(code, Failure::encoderFailed));
  return AacEncoder(std::move(codec));
}

AacEncoder::AacEncoder(CodecPointer codec)
    : codec_(std::move(codec)), block_(av_frame_alloc()), packet_(av_packet_alloc()) {
  if (!block_ || !packet_) throw std::bad_alloc();
}

// The encoder may keep the block before: each one is a new piece of memory.
void AacEncoder::beginBlock() {
  av_frame_unref(block_.get());
  block_->format = codec_->sample_fmt;
  block_->sample_rate = codec_->sample_rate;
  block_->nb_samples = codec_->frame_size;
  if (av_channel_layout_copy(&block_->ch_layout, &codec_->ch_layout) < 0 ||
      av_frame_get_buffer(block_.get(), 0) < 0) {
    throw std::bad_alloc();
  }
  filled_ = 0;
}

platform::Result<void> AacEncoder::encode(const float* const* samples, int frames,
                                          const Accept& accept) {
  for (int done = 0; done < frames;) {
    if (block_->nb_samples == 0) beginBlock();
    const int count = std::min(frames - done, codec_->frame_size - filled_);
    for (int channel = 0; channel < codec_->ch_layout.nb_channels; ++channel) {
      auto* const to = reinterpret_cast<float*>(block_->extended_data[channel]);
      std::copy_n(samples[channel] + done, count, to + filled_);
    }
    filled_ += count;
    done += count;
    if (filled_ < codec_->frame_size) continue;
    if (auto sent = send(block_.get(), accept); !sent) return sent;
    av_frame_unref(block_.get());
  }
  return {};
}

platform::Result<void> AacEncoder::finish(const Accept& accept) {
  if (block_->nb_samples > 0 && filled_ > 0) {
    block_->nb_samples = filled_;
    if (auto sent = send(block_.get(), accept); !sent) return sent;
  }
  return send(nullptr, accept);
}

platform::Result<void> AacEncoder::send(const AVFrame* block, const Accept& accept) {
  if (block != nullptr) {
    block_->pts = position_;
    position_ += block->nb_samples;
  }
  const int sent = avcodec_send_frame(codec_.get(), block);
  if (sent < 0) return std::unexpected(codeError(sent, Failure::encoderFailed));
  while (true) {
    const int code = avcodec_receive_packet(codec_.get(), packet_.get());
    if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return {};
    if (code < 0) return std::unexpected(codeError(code, Failure::encoderFailed));
    if (auto accepted = accept(*packet_); !accepted) return accepted;
  }
}

}  // namespace quibel::ffmpeg
