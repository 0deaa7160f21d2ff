#include "media/Media.h"

#include "playback/AudioOutput.h"
#include "playback/cubeb/CubebSink.h"
#include "song/decoding/OpenSong.h"
#include "song/ringtone/RingtoneSession.h"

namespace quibel::media {
namespace {

class FFmpegAndCubeb final : public Media {
 public:
  platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(
      const platform::FileURL& url, std::stop_token stop) override {
    return song::openAudioFile(url, std::move(stop));
  }

  void warmUp() override { output_.warmUp(); }

  platform::Result<std::unique_ptr<platform::AudioPlayer>> openAudioPlayer(
      const platform::FileURL& url, std::stop_token stop) override {
    auto song = song::openAudioFile(url, std::move(stop), song::Length::stated);
    if (!song) return std::unexpected(song.error());
    return output_.makePlayer(std::move(*song));
  }

  std::shared_ptr<platform::ExportSession> makeExportSession(const platform::FileURL& url,
                                                             std::stop_token stop) override {
    return song::makeExportSession(url, std::move(stop));
  }

 private:
  playback::AudioOutput output_{playback::connectCubeb};
};

}  // namespace
}  // namespace quibel::media

extern "C" [[gnu::visibility("default")]] quibel::media::Media* quibelMakeMedia();

quibel::media::Media* quibelMakeMedia() { return new quibel::media::FFmpegAndCubeb; }
