#pragma once

#include <memory>
#include <stop_token>

#include "desktop/BackgroundQueue.h"
#include "desktop/FilePanels.h"
#include "desktop/LocalFileManager.h"
#include "desktop/MainQueue.h"
#include "media/MediaModule.h"
#include "platform/Platform.h"

namespace quibel {

class ExportsUnderWay;

/// The machine as a Linux desktop has it. Made on the main thread, after the
/// application object, and destroyed there after the last model.
class DesktopPlatform final : public platform::Platform {
 public:
  DesktopPlatform();

  /// Breaks off what is being decoded or exported, and waits for its threads.
  /// What they still leave for the main queue is dropped.
  ~DesktopPlatform() override;

  platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(
      const platform::FileURL& url) override;
  platform::Result<std::unique_ptr<platform::AudioPlayer>> openAudioPlayer(
      const platform::FileURL& url) override;
  std::shared_ptr<platform::ExportSession> makeExportSession(const platform::FileURL& url) override;

  std::optional<platform::FileURL> runModal(const platform::OpenPanel& panel) override;
  std::optional<platform::FileURL> runModal(const platform::SavePanel& panel) override;
  std::optional<platform::ContentType> contentType(const std::string& filenameExtension) override;
  void activateFileViewerSelecting(const std::vector<platform::FileURL>& urls) override;

  platform::FileManager& fileManager() override { return fileManager_; }
  std::unique_ptr<platform::Timer> scheduledTimer(double interval,
                                                  std::function<void()> block) override;
  platform::DispatchQueue& mainQueue() override { return mainQueue_; }
  platform::DispatchQueue& userInitiatedQueue() override { return backgroundQueue_; }
  std::string uuidString() override;

 private:
  // In this order: what comes later may still use what comes first, and is
  // destroyed before it.
  std::stop_source stop_;
  desktop::LocalFileManager fileManager_;
  desktop::FilePanels panels_;
  desktop::MainQueue mainQueue_;
  media::MediaModule media_;
  std::shared_ptr<ExportsUnderWay> exports_;
  desktop::BackgroundQueue backgroundQueue_;
};

}  // namespace quibel
