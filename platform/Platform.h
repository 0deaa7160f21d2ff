#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/AudioFile.h"
#include "platform/AudioPlayer.h"
#include "platform/Error.h"
#include "platform/ExportSession.h"
#include "platform/FileManager.h"
#include "platform/FileURL.h"
#include "platform/Panels.h"

namespace quibel::platform {

/// Runs blocks later, in the order they came or side by side: see the queues of Platform.
class DispatchQueue {
 public:
  DispatchQueue() = default;
  DispatchQueue(const DispatchQueue&) = delete;
  DispatchQueue& operator=(const DispatchQueue&) = delete;
  virtual ~DispatchQueue() = default;

  /// Any thread may submit. The block must not throw.
  virtual void async(std::function<void()> block) = 0;
};

/// A repeating timer on the main thread. Destroying it invalidates it.
class Timer {
 public:
  Timer() = default;
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  virtual ~Timer() = default;

  /// Ends the timer for good: its block does not run again.
  virtual void invalidate() = 0;
};

/// Everything the editor asks of the machine. Main thread only, but for what
/// says otherwise.
class Platform {
 public:
  Platform() = default;
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;
  virtual ~Platform() = default;

  /// Opens a song for decoding. Any thread; may take as long as reading the
  /// file once.
  virtual Result<std::unique_ptr<AudioFile>> openAudioFile(const FileURL& url) = 0;

  /// Opens a song for playing. Fails where it cannot be decoded or where there
  /// is no sound output. Waits for the sound server, 1.5 s at the most, and for
  /// what it takes to measure the song unless that was done before.
  virtual Result<std::unique_ptr<AudioPlayer>> openAudioPlayer(const FileURL& url) = 0;

  /// Null where the song cannot be converted to AAC.
  virtual std::shared_ptr<ExportSession> makeExportSession(const FileURL& url) = 0;

  /// Each runs a panel modally and returns the choice, or nothing if it was cancelled.
  virtual std::optional<FileURL> runModal(const OpenPanel& panel) = 0;
  virtual std::optional<FileURL> runModal(const SavePanel& panel) = 0;

  /// The content type of an extension, or nothing where the system has none for it.
  virtual std::optional<ContentType> contentType(const std::string& filenameExtension) = 0;

  /// Shows the files in the desktop's file manager, selected. Does not wait for it.
  virtual void activateFileViewerSelecting(const std::vector<FileURL>& urls) = 0;

  virtual FileManager& fileManager() = 0;

  /// Runs `block` on the main thread every `interval` seconds until the timer is invalidated.
  virtual std::unique_ptr<Timer> scheduledTimer(double interval, std::function<void()> block) = 0;

  /// Runs blocks on the main thread, in submission order. Any thread.
  virtual DispatchQueue& mainQueue() = 0;

  /// Runs blocks on background threads, side by side, for work that a person
  /// waits for. Any thread.
  virtual DispatchQueue& userInitiatedQueue() = 0;

  /// A fresh random UUID in its upper-case textual form (RFC 4122, version 4).
  virtual std::string uuidString() = 0;

  /// Asks for access to a file outside a sandbox; true if it was granted, and
  /// then to be given up once. Desktops without a sandbox grant none and need none.
  virtual bool startAccessingSecurityScopedResource(const FileURL&) { return false; }
  virtual void stopAccessingSecurityScopedResource(const FileURL&) {}

  /// The platform that models are made with unless they are told otherwise.
  /// Set once by main() before the first model, and outliving the last.
  static Platform& standard();
  static void setStandard(Platform* platform);
};

}  // namespace quibel::platform
