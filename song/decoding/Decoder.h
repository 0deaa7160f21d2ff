#pragma once

#include "platform/Error.h"
#include "song/file/Pointers.h"

namespace quibel::song {

/// One codec at work. Packets go in, frames come out, in three plain branches.
class Decoder {
 public:
  enum class Status {
    frame,  ///< a frame was delivered
    again,  ///< a packet is needed first
    end,    ///< the last frame was delivered before
    error,  ///< what was sent does not decode; the next packet may
  };

  /// `sampleRate` is the unit of packets' and frames' times: 1/sampleRate seconds.
  /// With `trims` the codec itself drops what packets mark as delay or padding; else the
  /// first frame is noted with what it would drop (see paddingOf), and all are whole.
  /// One thread: handing frames to more costs a quarter more processor time.
  static platform::Result<Decoder> open(const AVCodecParameters& parameters, int sampleRate,
                                        bool trims);

  /// Only after receive() asked for it. False if the packet does not decode. The packet
  /// may lose its notes of padding. Throws std::bad_alloc.
  bool send(AVPacket& packet);

  /// No more packets will come: what is left inside comes out.
  void sendEnd();

  /// Throws std::bad_alloc.
  Status receive(AVFrame& frame);

  /// Forgets everything, as after a seek.
  void flush();

 private:
  Decoder(CodecPointer codec, bool trims) : codec_(std::move(codec)), trims_(trims) {}

  CodecPointer codec_;
  bool trims_;
};

}  // namespace quibel::song
