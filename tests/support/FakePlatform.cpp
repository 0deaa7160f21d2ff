#include "tests/support/FakePlatform.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace quibel::fake {
namespace {

class File final : public platform::AudioFile {
 public:
  File(Song song, std::vector<std::uint32_t>* readSizes)
      : song_(std::move(song)), readSizes_(readSizes) {}

  std::int64_t length() const override {
    return song_.channels.empty() ? 0 : std::ssize(song_.channels.front());
  }
  platform::AudioFormat processingFormat() const override {
    return {song_.sampleRate, static_cast<std::uint32_t>(song_.channels.size())};
  }
  std::int64_t framePosition() const override { return position_; }

  std::unique_ptr<platform::AudioPCMBuffer> makeBuffer(std::uint32_t frameCapacity) const override {
    if (!song_.makesBuffers) return nullptr;
    const auto channels = song_.hasChannelData ? song_.channels.size() : 0;
    return std::make_unique<platform::AudioPCMBuffer>(static_cast<std::uint32_t>(channels),
                                                      frameCapacity);
  }

  platform::Result<void> read(platform::AudioPCMBuffer& into, std::uint32_t frameCount) override {
    if (readSizes_) readSizes_->push_back(frameCount);
    const bool isFirst = std::exchange(isFirstRead_, false);
    if (!isFirst && song_.readError) return std::unexpected(*song_.readError);
    if (!isFirst && song_.endsEarly) return {};
    const auto frames = std::min<std::int64_t>(frameCount, length() - position_);
    if (auto* const* data = into.floatChannelData()) {
      for (std::size_t channel = 0; channel < song_.channels.size(); ++channel)
        std::copy_n(song_.channels[channel].begin() + position_, frames, data[channel]);
    }
    into.setFrameLength(static_cast<std::uint32_t>(frames));
    position_ += frames;
    return {};
  }

  platform::Result<void> seek(std::int64_t frame) override {
    position_ = frame;
    return {};
  }

  std::unique_ptr<platform::AudioFile> anotherReader() const override {
    if (song_.onAnotherReader) song_.onAnotherReader();
    if (!song_.forAnotherReader) return nullptr;
    return std::make_unique<File>(*song_.forAnotherReader, nullptr);
  }

 private:
  Song song_;
  std::vector<std::uint32_t>* readSizes_;
  std::int64_t position_ = 0;
  bool isFirstRead_ = true;
};

class PlayerHandle final : public platform::AudioPlayer {
 public:
  PlayerHandle(std::shared_ptr<Player> state, Journal& journal)
      : state_(std::move(state)), journal_(journal) {}
  ~PlayerHandle() override {
    state_->isAlive = false;
    journal_.record("player released");
  }

  double currentTime() const override { return state_->currentTime; }
  void setCurrentTime(double seconds) override {
    journal_.record("player.currentTime = " + std::to_string(seconds));
    state_->currentTime = seconds;
  }
  bool prepareToPlay() override {
    journal_.record("player.prepareToPlay");
    return state_->playsWhenTold;
  }
  bool play() override {
    journal_.record("player.play");
    return state_->isPlaying = state_->playsWhenTold;
  }
  bool isPlaying() const override { return state_->isPlaying; }
  void stop() override {
    journal_.record("player.stop");
    state_->isPlaying = false;
  }

 private:
  std::shared_ptr<Player> state_;
  Journal& journal_;
};

class TimerHandle final : public platform::Timer {
 public:
  TimerHandle(std::shared_ptr<fake::Timer> state, Journal& journal)
      : state_(std::move(state)), journal_(journal) {}
  ~TimerHandle() override { state_->isValid = false; }

  void invalidate() override {
    journal_.record("timer.invalidate");
    state_->isValid = false;
  }

 private:
  std::shared_ptr<fake::Timer> state_;
  Journal& journal_;
};

const platform::Error missingFile("No existe.");

}  // namespace

void Queue::run(std::size_t index) {
  const auto position = blocks_.begin() + static_cast<std::ptrdiff_t>(index);
  const auto block = std::move(*position);
  blocks_.erase(position);
  block();
}

void Queue::runAll() {
  while (!blocks_.empty()) runNext();
}

Song Song::lasting(double seconds) {
  constexpr double rate = 100;
  const auto frames = static_cast<std::size_t>(seconds * rate);
  return {.sampleRate = rate, .channels = {std::vector<float>(frames, 1.0F)}};
}

std::unique_ptr<platform::AudioFile> openSong(const Song& song,
                                              std::vector<std::uint32_t>* readSizes) {
  return std::make_unique<File>(song, readSizes);
}

void ExportSession::setOutputURL(const platform::FileURL& url) {
  journal_.record("session.outputURL = " + url.path().string());
  outputURL = url;
}

void ExportSession::setOutputFileType(platform::FileType type) {
  if (type == platform::FileType::appleM4A) journal_.record("session.outputFileType = appleM4A");
}

void ExportSession::setTimeRange(const platform::TimeRange& range) {
  journal_.record("session.timeRange");
  timeRange = range;
}

void ExportSession::exportAsynchronously(std::function<void()> completionHandler) {
  journal_.record("session.exportAsynchronously");
  handler_ = std::move(completionHandler);
  status_ = platform::ExportStatus::exporting;
}

void ExportSession::finish(platform::ExportStatus status, std::optional<platform::Error> error) {
  status_ = status;
  error_ = std::move(error);
  std::exchange(handler_, nullptr)();
}

platform::Result<void> FileManager::removeItem(const platform::FileURL& url) {
  journal_.record("remove " + url.path().string());
  if (removeError) return std::unexpected(*removeError);
  if (existing.erase(url.path().string()) == 0) return std::unexpected(missingFile);
  return {};
}

platform::Result<void> FileManager::copyItem(const platform::FileURL& from,
                                             const platform::FileURL& to) {
  journal_.record("copy " + from.path().string() + " to " + to.path().string());
  if (copyError) return std::unexpected(*copyError);
  existing.insert(to.path().string());
  return {};
}

platform::Result<void> FileManager::moveItem(const platform::FileURL& from,
                                             const platform::FileURL& to) {
  journal_.record("move " + from.path().string() + " to " + to.path().string());
  if (moveError) return std::unexpected(*moveError);
  existing.erase(from.path().string());
  existing.insert(to.path().string());
  return {};
}

Platform::~Platform() {
  for (const auto& session : sessions) session->abandon();
}

platform::Result<std::unique_ptr<platform::AudioFile>> Platform::openAudioFile(
    const platform::FileURL& url) {
  if (whileOpening) whileOpening();
  const auto song = songs.find(url.path().string());
  if (song == songs.end()) return std::unexpected(missingFile);
  if (song->second.openError) return std::unexpected(*song->second.openError);
  return openSong(song->second);
}

platform::Result<std::unique_ptr<platform::AudioPlayer>> Platform::openAudioPlayer(
    const platform::FileURL& url) {
  journal.record("open player " + url.path().string());
  if (whileOpening) whileOpening();
  const auto song = songs.find(url.path().string());
  if (song == songs.end()) return std::unexpected(missingFile);
  if (song->second.playError) return std::unexpected(*song->second.playError);
  players.push_back(std::make_shared<Player>());
  return std::make_unique<PlayerHandle>(players.back(), journal);
}

std::shared_ptr<platform::ExportSession> Platform::makeExportSession(const platform::FileURL& url) {
  journal.record("make session " + url.path().string());
  if (whileOpening) whileOpening();
  const auto song = songs.find(url.path().string());
  if (song == songs.end() || !song->second.convertible) return nullptr;
  sessions.push_back(std::make_shared<ExportSession>(journal));
  return sessions.back();
}

std::optional<platform::FileURL> Platform::runModal(const platform::OpenPanel& panel) {
  journal.record("open panel");
  openPanel = panel;
  return openPanelAnswer;
}

std::optional<platform::FileURL> Platform::runModal(const platform::SavePanel& panel) {
  journal.record("save panel");
  savePanel = panel;
  if (whileSavePanelIsOpen) whileSavePanelIsOpen();
  return savePanelAnswer;
}

std::optional<platform::ContentType> Platform::contentType(const std::string& filenameExtension) {
  if (!knowsM4R) return std::nullopt;
  return platform::ContentType{filenameExtension};
}

void Platform::activateFileViewerSelecting(const std::vector<platform::FileURL>& urls) {
  for (const auto& url : urls) journal.record("reveal " + url.path().string());
}

std::unique_ptr<platform::Timer> Platform::scheduledTimer(double interval,
                                                          std::function<void()> block) {
  journal.record("schedule timer");
  timers.push_back(std::make_shared<Timer>(interval, std::move(block)));
  return std::make_unique<TimerHandle>(timers.back(), journal);
}

bool Platform::startAccessingSecurityScopedResource(const platform::FileURL& url) {
  journal.record("start access " + url.path().string());
  return grantsAccess;
}

void Platform::stopAccessingSecurityScopedResource(const platform::FileURL& url) {
  journal.record("stop access " + url.path().string());
}

void Platform::settle() {
  while (background.size() + main.size() > 0) {
    background.runAll();
    main.runAll();
  }
}

}  // namespace quibel::fake
