#pragma once

#include <memory>
#include <stop_token>

#include "platform/AudioFile.h"
#include "platform/AudioPlayer.h"
#include "platform/ExportSession.h"
#include "platform/FileURL.h"

namespace quibel::media {

/// Decoding, export and sound output. They stand on more than a hundred shared
/// libraries, whose loading would take longer than all else that opens the window:
/// so they are a module of their own, which MediaModule loads with the first song.
class Media {
 public:
  Media() = default;
  Media(const Media&) = delete;
  Media& operator=(const Media&) = delete;

  /// Silences what still plays. Main thread.
  virtual ~Media() = default;

  /// Opens a song for decoding. Any thread; may take as long as reading the file
  /// once. A stop request makes it fail at the next access to the disk.
  virtual platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(
      const platform::FileURL& url, std::stop_token stop) = 0;

  /// Any thread, at once: begins to connect to the sound server.
  virtual void warmUp() = 0;

  /// A player of the song. Main thread; waits at most 1.5 s for a sound output, and
  /// fails where there is none. The song's length is then what the file states, where
  /// all of it would have to be decoded to know better and nobody has done so yet.
  virtual platform::Result<std::unique_ptr<platform::AudioPlayer>> openAudioPlayer(
      const platform::FileURL& url, std::stop_token stop) = 0;

  /// Null where the song cannot be converted to AAC. Main thread.
  virtual std::shared_ptr<platform::ExportSession> makeExportSession(const platform::FileURL& url,
                                                                     std::stop_token stop) = 0;
};

/// The module's one function, which makes its Media for the caller to own, and the
/// name of it.
using MakeMedia = Media* (*)();
inline constexpr const char* makeMediaName = "quibelMakeMedia";

}  // namespace quibel::media
