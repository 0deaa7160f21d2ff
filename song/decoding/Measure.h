#pragma once

#include <memory>

#include "platform/Error.h"
#include "song/decoding/FrameSource.h"
#include "song/decoding/Length.h"
#include "song/file/Input.h"
#include "song/formats/SongRange.h"

namespace quibel::song {

/// Finds out which part of a file's stream is the song, exactly. Where an index
/// or the file's ends tell, they are asked; else the packets are counted, and
/// decoded only where nothing else tells their length and it has to be exact. What was
/// found exactly is remembered for the last few files.
///
/// `opened` has delivered its first frame. The plan's clock is the one that the
/// container suggests; the range says which one is to be used.
platform::Result<SongRange> measure(const std::shared_ptr<Input>& input, const FrameSource& opened,
                                    const FrameSource::Plan& plan, Length length);

}  // namespace quibel::song
