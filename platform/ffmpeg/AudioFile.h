#pragma once

#include <memory>
#include <stop_token>

#include "platform/AudioFile.h"
#include "platform/FileURL.h"

namespace quibel::ffmpeg {

class Input;

/// Opens a song for decoding. Any thread; may take as long as reading the file
/// once. A stop request makes this, and every later read or seek of the file,
/// fail at the next access to the disk.
platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(const platform::FileURL& url,
                                                                     std::stop_token stop = {});

/// The same for a file that is open already; throws std::bad_alloc.
platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(std::shared_ptr<Input> input);

}  // namespace quibel::ffmpeg
