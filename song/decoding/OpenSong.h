#pragma once

#include <memory>
#include <stop_token>

#include "platform/AudioFile.h"
#include "platform/FileURL.h"
#include "song/decoding/Length.h"

namespace quibel::song {

class Input;

/// Opens a song for decoding. Any thread; may take as long as decoding the file once,
/// or with Length::stated, in the few formats that state nothing, as reading it once. A stop
/// request makes this, and every later read or seek of the file, fail at the next access to the
/// disk.
platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(const platform::FileURL& url,
                                                                     std::stop_token stop = {},
                                                                     Length length = Length::exact);

/// The same for a file that is open already; throws std::bad_alloc.
platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(std::shared_ptr<Input> input,
                                                                     Length length = Length::exact);

}  // namespace quibel::song
