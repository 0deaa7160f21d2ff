#include "song/decoding/FrameSource.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

namespace quibel::song {

PacketClock::PacketClock(Clock kind, const Demuxer& demuxer, int outputRate)
    : kind_(kind),
      timeBase_(demuxer.stream().time_base),
      codedRate_(demuxer.stream().codecpar->sample_rate),
      outputRate_(outputRate),
      durationOf_(demuxer.stream()),
      isOggVorbis_(demuxer.isOgg() && demuxer.stream().codecpar->codec_id == AV_CODEC_ID_VORBIS) {}

std::optional<std::int64_t> PacketClock::position(const AVPacket& packet) {
  duration_ = durationOf_(packet);
  if (duration_ && codedRate_ != outputRate_) {
    duration_ = av_rescale(*duration_, outputRate_, codedRate_);
  }
  switch (kind_) {
    case Clock::timestamps: {
      if (packet.pts == AV_NOPTS_VALUE) return std::nullopt;
      const std::int64_t stated = av_rescale_q(packet.pts, timeBase_, {1, outputRate_});
      return isOggVorbis_ ? oggVorbisPosition(packet, stated) : stated;
    }
    case Clock::durations:
      return std::exchange(next_, next_ + duration_.value_or(0));
    case Clock::decoding:
      return std::nullopt;
  }
  return std::nullopt;
}

std::int64_t PacketClock::oggVorbisPosition(const AVPacket& packet, std::int64_t stated) {
  constexpr std::int64_t largestBlock = 8192;
  const std::int64_t frames = duration_.value_or(0);
  const std::int64_t begin = following_.value_or(stated);
  const std::int64_t ahead = stated - begin;
  const std::int64_t told = av_rescale_q(packet.duration, timeBase_, {1, outputRate_});
  const bool isShort = ahead + early_ == frames - told;
  const bool isEarly = -largestBlock < ahead && ahead <= 0;
  if (!isShort) early_ = isEarly ? -ahead : 0;
  const std::int64_t position = isShort || isEarly ? begin : stated;
  following_ = position + frames;
  return position;
}

platform::Result<FrameSource> FrameSource::open(std::shared_ptr<Input> input,
                                                std::unique_ptr<Demuxer> demuxer,
                                                const Plan& plan) {
  // Where only decoding tells a packet's length, its delay and padding are
  // dropped by the decoder too, but not in MP4, whose edit lists are applied here.
  const bool isMovie = std::string_view(demuxer->format().iformat->name).starts_with("mov");
  const bool trims = plan.clock == Clock::decoding && !isMovie;
  auto decoder = Decoder::open(*demuxer->stream().codecpar, plan.outputRate, trims);
  if (!decoder) return std::unexpected(decoder.error());
  return FrameSource(std::move(input), std::move(demuxer), plan, std::move(*decoder));
}

FrameSource::FrameSource(std::shared_ptr<Input> input, std::unique_ptr<Demuxer> demuxer,
                         const Plan& plan, Decoder decoder)
    : input_(std::move(input)),
      demuxer_(std::move(demuxer)),
      plan_(plan),
      decoder_(std::move(decoder)),
      clock_(plan.clock, *demuxer_, plan.outputRate),
      converter_({.sampleRate = static_cast<double>(plan.outputRate),
                  .channelCount = static_cast<std::uint32_t>(plan.channels),
                  .speakers = plan.speakers}),
      packet_(av_packet_alloc()),
      frame_(av_frame_alloc()) {
  if (!packet_ || !frame_) throw std::bad_alloc();
}

FrameSource::Fed FrameSource::feed() {
  if (!packetIsPending_) {
    switch (demuxer_->read(*packet_)) {
      case Demuxer::Status::error:
        return Fed::error;
      case Demuxer::Status::end:
        decoder_.sendEnd();
        return Fed::end;
      case Demuxer::Status::packet:
        break;
    }
    pendingPosition_ = clock_.position(*packet_);
  }
  packetIsPending_ = false;
  const auto duration = clock_.duration().value_or(0);
  // After a loss the decoder starts again, as it would after a seek to there. Gaps
  // shorter than a packet are timestamp jitter. Vorbis forgets what was before by itself,
  // within a block.
  const bool isVorbis = demuxer_->stream().codecpar->codec_id == AV_CODEC_ID_VORBIS;
  const bool isLoss = pendingPosition_ && sentEnd_ && *pendingPosition_ > *sentEnd_ &&
                      *pendingPosition_ >= *sentEnd_ + duration;
  if (isLoss && !isVorbis) decoder_.flush();
  sentEnd_ = std::nullopt;
  if (pendingPosition_ && duration > 0) sentEnd_ = *pendingPosition_ + duration;
  if (!firstPacketPosition_) firstPacketPosition_ = std::max<std::int64_t>(packet_->pos, 0);
  packet_->pts = pendingPosition_.value_or(AV_NOPTS_VALUE);
  packet_->dts = packet_->pts;
  const bool isDecoded = decoder_.send(*packet_);
  if (!isDecoded && plan_.clock == Clock::decoding && packet_->duration > 0) {
    const auto frames =
        av_rescale_q(packet_->duration, demuxer_->stream().time_base, {1, plan_.outputRate});
    if (frames <= maximumFramesPerPacket) next_ += frames;
  }
  av_packet_unref(packet_.get());
  return Fed::packet;
}

bool FrameSource::acceptFrame() {
  delivered_ = plan_.channels > 0 ? converter_.convert(*frame_) : frame_.get();
  if (delivered_ == nullptr || delivered_->nb_samples <= 0) return false;
  // A resampler's output has no times: it follows on what came before.
  const bool wasConverting = std::exchange(isConverting_, delivered_ != frame_.get());
  const bool follows = plan_.clock == Clock::decoding || frame_->pts == AV_NOPTS_VALUE ||
                       (isConverting_ && wasConverting);
  position_ = follows ? next_ : frame_->pts;
  next_ = position_ + delivered_->nb_samples;
  return true;
}

FrameSource::Status FrameSource::next() {
  while (!ended_) {
    switch (decoder_.receive(*frame_)) {
      case Decoder::Status::frame:
        if (acceptFrame()) return Status::frame;
        break;
      case Decoder::Status::again:
        if (feed() == Fed::error) return Status::error;
        break;
      case Decoder::Status::end:
        ended_ = true;
        break;
      case Decoder::Status::error:
        break;
    }
    if (input_->stopRequested()) return Status::error;
  }
  return Status::end;
}

bool FrameSource::seek(std::int64_t target) {
  const auto lead = preroll(demuxer_->stream().codecpar->codec_id);
  const bool isNear = target >= next_ && target - next_ <= plan_.outputRate;
  if (isNear && !ended_) return true;
  if (!lead) return target >= next_ && !ended_;
  switch (plan_.clock) {
    case Clock::timestamps:
      return seekByTime(target, *lead);
    case Clock::durations:
      if (plan_.index) return seekByIndex(target - *lead);
      return target - *lead >= next_ && !ended_ && skipTo(target - *lead);
    case Clock::decoding:
      return target >= next_ && !ended_;
  }
  return false;
}

bool FrameSource::seeks() const {
  return preroll(demuxer_->stream().codecpar->codec_id) &&
         (plan_.clock == Clock::timestamps || plan_.index);
}

bool FrameSource::readPositionedPacket() {
  // After a seek, FFmpeg guesses the times in the Ogg page where it lands; from
  // the next page on they come from the file.
  std::optional<std::int64_t> landing;
  while (demuxer_->read(*packet_) == Demuxer::Status::packet) {
    if (!landing) landing = packet_->pos;
    const bool isGuessed = demuxer_->isOgg() && packet_->pos == landing;
    if (!isGuessed) clock_.forget();
    pendingPosition_ = clock_.position(*packet_);
    if (pendingPosition_ && !isGuessed) return true;
  }
  return false;
}

// A container may land later than it was asked to, or find no place near its end that
// it has found before: then it is asked for ever earlier ones, and at last there is the
// beginning.
bool FrameSource::seekByTime(std::int64_t target, std::int64_t lead) {
  const AVStream& stream = demuxer_->stream();
  std::int64_t asked = target - lead;
  for (std::int64_t step = plan_.outputRate; step < 64 * std::int64_t{plan_.outputRate};
       step *= 2) {
    const auto time =
        av_rescale_q_rnd(asked, {1, plan_.outputRate}, stream.time_base, AV_ROUND_DOWN);
    if (asked < 0) return false;
    const bool isFound = demuxer_->seek(time);
    forget();
    if (isFound && readPositionedPacket() && *pendingPosition_ <= target - lead) {
      packetIsPending_ = true;
      next_ = *pendingPosition_;
      return true;
    }
    asked -= step;
  }
  return false;
}

bool FrameSource::seekByIndex(std::int64_t position) {
  const PacketIndex& index = *plan_.index;
  const std::int64_t framesPerPlace = PacketIndex::step * index.packetFrames;
  if (index.places.empty() || framesPerPlace <= 0) return false;
  const std::int64_t place =
      std::clamp<std::int64_t>(position / framesPerPlace, 0, std::ssize(index.places) - 1);
  if (!demuxer_->seekToByte(index.places[static_cast<std::size_t>(place)])) return false;
  forget();
  next_ = place * framesPerPlace;
  clock_.restart(next_);
  return true;
}

// After a move of the demuxer: what was read before it is no beginning of what comes.
void FrameSource::forget() {
  decoder_.flush();
  converter_.reset();
  isConverting_ = false;
  packetIsPending_ = false;
  sentEnd_ = std::nullopt;
  ended_ = false;
}

bool FrameSource::skipTo(std::int64_t position) {
  decoder_.flush();
  while (true) {
    if (demuxer_->read(*packet_) != Demuxer::Status::packet) return false;
    pendingPosition_ = clock_.position(*packet_);
    const std::int64_t end = *pendingPosition_ + clock_.duration().value_or(0);
    if (end > position) break;
  }
  packetIsPending_ = true;
  next_ = *pendingPosition_;
  return true;
}

}  // namespace quibel::song
