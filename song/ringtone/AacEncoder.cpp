#include "song/ringtone/AacEncoder.h"

#include <cstring>
#include <future>
#include <new>
#include <span>
#include <utility>

#include "song/file/Errors.h"
#include "song/ringtone/AacElements.h"
#include "song/ringtone/ExportPlan.h"

namespace quibel::song {

namespace {

// Input is scaled by 1/4; 8 gain steps of 2^(1/4) restore it. Tones of up to 1.88 times full
// scale stay whole.
constexpr float headroom = 0.25F;
constexpr int stepsBack = 8;

std::span<const std::uint8_t> bytesOf(const AVPacket& packet) {
  return {packet.data, static_cast<std::size_t>(packet.size)};
}

/// One channel's packet, or those of two channels, as the song's.
platform::Result<PacketPointer> joined(const AVPacket& first, const AVPacket* second) {
  const auto bytes = second == nullptr ? amplified(bytesOf(first), stepsBack)
                                       : channelPair(bytesOf(first), bytesOf(*second), stepsBack);
  if (bytes.empty()) return std::unexpected(makeError(Failure::encoderFailed));
  PacketPointer packet(av_packet_alloc());
  if (!packet || av_new_packet(packet.get(), static_cast<int>(bytes.size())) < 0 ||
      av_packet_copy_props(packet.get(), &first) < 0) {
    throw std::bad_alloc();
  }
  std::memcpy(packet->data, bytes.data(), bytes.size());
  return packet;
}

}  // namespace

platform::Result<AacEncoder> AacEncoder::open(int rate, int channels) {
  std::vector<AacChannel> opened;
  for (int channel = 0; channel < channels; ++channel) {
    auto encoder = AacChannel::open(rate);
    if (!encoder) return std::unexpected(encoder.error());
    opened.push_back(std::move(*encoder));
  }
  return AacEncoder(std::move(opened));
}

ParametersPointer AacEncoder::parameters() const {
  ParametersPointer parameters(avcodec_parameters_alloc());
  if (!parameters ||
      avcodec_parameters_from_context(parameters.get(), &channels_.front().codec()) < 0) {
    throw std::bad_alloc();
  }
  const auto channels = static_cast<int>(channels_.size());
  av_channel_layout_default(&parameters->ch_layout, channels);
  parameters->bit_rate = bitRate(channels);
  // The AudioSpecificConfig: five bits of the object's type, four of the rate, four of the
  // channels (ISO/IEC 14496-3, table 1.15).
  std::uint8_t& byte = parameters->extradata[1];
  byte = static_cast<std::uint8_t>((byte & ~0x78) | channels << 3);
  return parameters;
}

platform::Result<void> AacEncoder::encode(const float* const* samples, int frames,
                                          const Accept& accept) {
  return run(
      [&](std::size_t channel) {
        return channels_[channel].encode(samples[channel], frames, headroom);
      },
      accept);
}

platform::Result<void> AacEncoder::finish(const Accept& accept) {
  return run([&](std::size_t channel) { return channels_[channel].finish(); }, accept);
}

platform::Result<void> AacEncoder::run(const Step& step, const Accept& accept) {
  std::future<platform::Result<AacChannel::Packets>> other;
  // Where there is no thread to be had, it is done on this one when it is asked for.
  if (channels_.size() > 1) other = std::async([&step] { return step(1); });
  const auto first = step(0);
  const auto second = other.valid() ? other.get() : AacChannel::Packets();
  if (!first) return std::unexpected(first.error());
  if (!second) return std::unexpected(second.error());
  if (channels_.size() > 1 && second->size() != first->size())
    return std::unexpected(makeError(Failure::encoderFailed));

  for (std::size_t i = 0; i < first->size(); ++i) {
    const auto packet = joined(*(*first)[i], second->empty() ? nullptr : (*second)[i].get());
    if (!packet) return std::unexpected(packet.error());
    if (auto accepted = accept(**packet); !accepted) return accepted;
  }
  return {};
}

}  // namespace quibel::song
