#pragma once

#include <cstdint>

#include "platform/Error.h"
#include "song/file/Pointers.h"
#include "song/ringtone/OutputFile.h"

namespace quibel::song {

/// Puts AAC packets into an MPEG-4 container of brand `M4A `, its index first,
/// without tags or dates. The edit list leaves out the encoder's delay and padding.
class MovieWriter {
 public:
  /// Begins a file that will hold `frames` frames, in packets whose times are frames.
  /// `output` must outlive this.
  static platform::Result<MovieWriter> open(OutputFile& output, const AVCodecParameters& codec,
                                            std::int64_t frames);

  /// Takes the packet's contents.
  platform::Result<void> write(AVPacket& packet);

  /// Writes the index. The file is complete once `output` has been closed.
  platform::Result<void> finish();

 private:
  MovieWriter(OutputFile& output, OutputFormatPointer format, AVRational packetTimeBase)
      : output_(&output), format_(std::move(format)), packetTimeBase_(packetTimeBase) {}

  OutputFile* output_;
  OutputFormatPointer format_;
  AVRational packetTimeBase_;
};

}  // namespace quibel::song
