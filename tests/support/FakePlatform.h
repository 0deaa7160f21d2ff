#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace quibel::fake {

/// Everything that happens to the machine, in its order. A listener may add what
/// happened elsewhere since the last entry, before the next one is written.
class Journal {
 public:
  void record(const std::string& event) {
    if (beforeRecord) beforeRecord();
    entries.push_back(event);
  }

  std::vector<std::string> entries;
  std::function<void()> beforeRecord;
};

/// A queue whose blocks run when the test says so.
class Queue final : public platform::DispatchQueue {
 public:
  void async(std::function<void()> block) override { blocks_.push_back(std::move(block)); }

  std::size_t size() const { return blocks_.size(); }
  void runNext() { run(0); }
  /// Runs a block out of its turn, as background threads may.
  void run(std::size_t index);
  void runAll();

 private:
  std::deque<std::function<void()>> blocks_;
};

/// What a file holds, and how opening or reading it goes wrong.
struct Song {
  double sampleRate = 44100;
  std::vector<std::vector<float>> channels = {};  ///< the same number of frames in each
  std::optional<platform::Error> openError = std::nullopt;
  std::optional<platform::Error> playError = std::nullopt;
  std::optional<platform::Error> readError = std::nullopt;  ///< at the second read
  bool makesBuffers = true;
  bool hasChannelData = true;
  bool endsEarly = false;  ///< reads deliver nothing from the second one on
  bool convertible = true;
  std::shared_ptr<const Song> forAnotherReader = nullptr;  ///< what it finds, if there is one
  std::function<void()> onAnotherReader = {};              ///< called when one is asked for

  /// `seconds` of full-scale sound at a rate low enough for long songs to be cheap.
  static Song lasting(double seconds);
};

/// Opens `song` as an audio file. `readSizes`, if given, takes the frames asked of each read.
std::unique_ptr<platform::AudioFile> openSong(const Song& song,
                                              std::vector<std::uint32_t>* readSizes = nullptr);

/// A player's state, kept after the player is gone. Tests set the time and stop it by hand.
struct Player {
  double currentTime = 0;
  bool isPlaying = false;
  bool isAlive = true;
  bool playsWhenTold = true;
};

struct Timer {
  double interval = 0;
  std::function<void()> block;
  bool isValid = true;

  void fire() const { block(); }
};

/// A session that ends when the test says so.
class ExportSession final : public platform::ExportSession {
 public:
  explicit ExportSession(Journal& journal) : journal_(journal) {}

  void setOutputURL(const platform::FileURL& url) override;
  void setOutputFileType(platform::FileType type) override;
  void setTimeRange(const platform::TimeRange& range) override;
  void exportAsynchronously(std::function<void()> completionHandler) override;
  platform::ExportStatus status() const override { return status_; }
  std::optional<platform::Error> error() const override { return error_; }

  /// Ends the session and calls its handler.
  void finish(platform::ExportStatus status, std::optional<platform::Error> error = {});

  /// Forgets the handler, which holds the session itself.
  void abandon() { handler_ = nullptr; }

  std::optional<platform::FileURL> outputURL;
  std::optional<platform::TimeRange> timeRange;

 private:
  Journal& journal_;
  std::function<void()> handler_;
  platform::ExportStatus status_ = platform::ExportStatus::unknown;
  std::optional<platform::Error> error_;
};

/// A disk that is a list of names.
class FileManager final : public platform::FileManager {
 public:
  explicit FileManager(Journal& journal) : journal_(journal) {}

  platform::FileURL temporaryDirectory() const override { return platform::FileURL("/tmp"); }
  bool fileExists(const platform::FileURL& url) const override {
    return existing.contains(url.path().string());
  }
  platform::Result<void> removeItem(const platform::FileURL& url) override;
  platform::Result<void> copyItem(const platform::FileURL& from,
                                  const platform::FileURL& to) override;
  platform::Result<void> moveItem(const platform::FileURL& from,
                                  const platform::FileURL& to) override;

  std::set<std::string> existing;
  std::optional<platform::Error> removeError;
  std::optional<platform::Error> copyError;
  std::optional<platform::Error> moveError;

 private:
  Journal& journal_;
};

/// A machine that a test sets up, steps by hand and looks into.
class Platform : public platform::Platform {
 public:
  ~Platform() override;

  platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(
      const platform::FileURL& url) override;
  platform::Result<std::unique_ptr<platform::AudioPlayer>> openAudioPlayer(
      const platform::FileURL& url) override;
  std::shared_ptr<platform::ExportSession> makeExportSession(const platform::FileURL& url) override;
  std::optional<platform::FileURL> runModal(const platform::OpenPanel& panel) override;
  std::optional<platform::FileURL> runModal(const platform::SavePanel& panel) override;
  std::optional<platform::ContentType> contentType(const std::string& filenameExtension) override;
  void activateFileViewerSelecting(const std::vector<platform::FileURL>& urls) override;
  platform::FileManager& fileManager() override { return files; }
  std::unique_ptr<platform::Timer> scheduledTimer(double interval,
                                                  std::function<void()> block) override;
  platform::DispatchQueue& mainQueue() override { return main; }
  platform::DispatchQueue& userInitiatedQueue() override { return background; }
  std::string uuidString() override { return "UUID-" + std::to_string(++uuids_); }
  bool startAccessingSecurityScopedResource(const platform::FileURL& url) override;
  void stopAccessingSecurityScopedResource(const platform::FileURL& url) override;

  /// Runs background and main blocks until none is left.
  void settle();

  Journal journal;
  Queue main;
  Queue background;
  FileManager files{journal};
  std::map<std::string, Song> songs;  ///< by path; a path without one does not open
  std::vector<std::shared_ptr<Player>> players;
  std::vector<std::shared_ptr<Timer>> timers;
  std::vector<std::shared_ptr<ExportSession>> sessions;
  std::optional<platform::FileURL> openPanelAnswer;
  std::optional<platform::FileURL> savePanelAnswer;
  std::function<void()> whileSavePanelIsOpen;
  std::function<void()> whileOpening;  ///< a song for decoding, playing or export; may throw
  std::optional<platform::OpenPanel> openPanel;  ///< the last one run
  std::optional<platform::SavePanel> savePanel;  ///< the last one run
  bool knowsM4R = true;
  bool grantsAccess = false;

 private:
  int uuids_ = 0;
};

}  // namespace quibel::fake
