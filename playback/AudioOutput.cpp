#include "playback/AudioOutput.h"

#include <utility>

#include "playback/AudioThread.h"
#include "playback/Clock.h"
#include "playback/PlayerEngine.h"

namespace quibel::playback {
namespace {

/// The lowest rate that sound outputs take.
constexpr double lowestRate = 1'000;

/// Above all that songs are recorded with, DSD among them. The buffers of what claims more
/// would take gigabytes.
constexpr double highestSongRate = 12'288'000;

/// A player's face to the main thread.
class Player final : public platform::AudioPlayer {
 public:
  Player(std::shared_ptr<AudioThread> thread, std::shared_ptr<PlayerEngine> engine)
      : thread_(std::move(thread)), engine_(std::move(engine)) {}

  ~Player() override { thread_->remove(std::move(engine_)); }

  double currentTime() const override { return engine_->transport().currentTime(Clock::now()); }

  void setCurrentTime(double seconds) override {
    if (const auto jump = engine_->transport().seek(seconds)) engine_->jump(*jump);
  }

  bool prepareToPlay() override {
    if (const auto jump = engine_->transport().begin()) engine_->jump(*jump);
    return engine_->transport().hasOutput();
  }

  bool play() override {
    const bool hasOutput = prepareToPlay();
    engine_->transport().play();
    thread_->wake();
    return hasOutput;
  }

  bool isPlaying() const override { return engine_->transport().isPlaying(); }

  void stop() override {
    engine_->transport().stop();
    thread_->wake();
  }

 private:
  const std::shared_ptr<AudioThread> thread_;
  std::shared_ptr<PlayerEngine> engine_;
};

}  // namespace

AudioOutput::AudioOutput(Connect connect) : thread_(AudioThread::start(std::move(connect))) {}

AudioOutput::~AudioOutput() { thread_->shutDown(); }

void AudioOutput::warmUp() { thread_->warmUp(); }

platform::Result<std::unique_ptr<platform::AudioPlayer>> AudioOutput::makePlayer(
    std::unique_ptr<platform::AudioFile> song) {
  const auto format = song->processingFormat();
  if (format.channelCount == 0 ||
      !(format.sampleRate >= lowestRate && format.sampleRate <= highestSongRate))
    return std::unexpected(
        platform::Error("La salida de sonido no admite la frecuencia de este audio."));
  const auto engine =
      std::make_shared<PlayerEngine>(std::move(song), [thread = std::weak_ptr(thread_)] {
        if (const auto alive = thread.lock()) alive->wake();
      });
  if (auto opened = thread_->open(engine); !opened) return std::unexpected(opened.error());
  return std::make_unique<Player>(thread_, engine);
}

}  // namespace quibel::playback
