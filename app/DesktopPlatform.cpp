#include "app/DesktopPlatform.h"

#include <QUuid>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <new>
#include <system_error>
#include <type_traits>
#include <utility>

#include "desktop/PreciseTimer.h"
#include "desktop/Reveal.h"

namespace quibel {

/// Counts the exports whose completion handler has not returned.
class ExportsUnderWay {
 public:
  void begin() {
    const std::lock_guard lock(mutex_);
    ++count_;
  }

  void end() {
    const std::lock_guard lock(mutex_);
    --count_;
    changed_.notify_all();
  }

  void wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return count_ == 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int count_ = 0;
};

namespace {

/// A session that is counted while it exports: its handler uses the main queue,
/// which must not go away before that.
class CountedExportSession final : public platform::ExportSession {
 public:
  CountedExportSession(std::shared_ptr<platform::ExportSession> session,
                       std::shared_ptr<ExportsUnderWay> exports)
      : session_(std::move(session)), exports_(std::move(exports)) {}

  void setOutputURL(const platform::FileURL& url) override { session_->setOutputURL(url); }
  void setOutputFileType(platform::FileType type) override { session_->setOutputFileType(type); }
  void setTimeRange(const platform::TimeRange& range) override { session_->setTimeRange(range); }

  void exportAsynchronously(std::function<void()> completionHandler) override {
    exports_->begin();
    session_->exportAsynchronously([exports = exports_, handler = std::move(completionHandler)] {
      handler();
      exports->end();
    });
  }

  platform::ExportStatus status() const override { return session_->status(); }
  std::optional<platform::Error> error() const override { return session_->error(); }

 private:
  const std::shared_ptr<platform::ExportSession> session_;
  const std::shared_ptr<ExportsUnderWay> exports_;
};

/// A session that could not be made, and says why once it is started.
class FailedExportSession final : public platform::ExportSession {
 public:
  explicit FailedExportSession(platform::Error error) : error_(std::move(error)) {}

  void setOutputURL(const platform::FileURL&) override {}
  void setOutputFileType(platform::FileType) override {}
  void setTimeRange(const platform::TimeRange&) override {}
  void exportAsynchronously(std::function<void()> completionHandler) override {
    completionHandler();
  }
  platform::ExportStatus status() const override { return platform::ExportStatus::failed; }
  std::optional<platform::Error> error() const override { return error_; }

 private:
  const platform::Error error_;
};

/// What cannot be opened because the system denies a thread or memory fails like
/// anything else.
template <class Open>
std::invoke_result_t<Open> withoutExceptions(Open open) try {
  return open();
} catch (const std::system_error&) {
  return std::unexpected(platform::Error(
      "El sistema no permite más tareas a la vez. Cierra algún programa e inténtalo otra vez."));
} catch (const std::bad_alloc&) {
  return std::unexpected(platform::Error("No hay memoria suficiente."));
}

}  // namespace

DesktopPlatform::DesktopPlatform() : exports_(std::make_shared<ExportsUnderWay>()) {
  // A file that outgrows the person's limit is then an error of its write, with
  // a message, and not the end of the process.
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
}

DesktopPlatform::~DesktopPlatform() {
  stop_.request_stop();
  mainQueue_.shutDown();
  exports_->wait();
}

platform::Result<std::unique_ptr<platform::AudioFile>> DesktopPlatform::openAudioFile(
    const platform::FileURL& url) {
  return withoutExceptions([&]() -> platform::Result<std::unique_ptr<platform::AudioFile>> {
    const auto media = media_.load();
    if (!media) return std::unexpected(media.error());
    // Connect early: playback usually follows.
    (*media)->warmUp();
    return (*media)->openAudioFile(url, stop_.get_token());
  });
}

platform::Result<std::unique_ptr<platform::AudioPlayer>> DesktopPlatform::openAudioPlayer(
    const platform::FileURL& url) {
  return withoutExceptions([&]() -> platform::Result<std::unique_ptr<platform::AudioPlayer>> {
    const auto media = media_.load();
    if (!media) return std::unexpected(media.error());
    return (*media)->openAudioPlayer(url, stop_.get_token());
  });
}

std::shared_ptr<platform::ExportSession> DesktopPlatform::makeExportSession(
    const platform::FileURL& url) {
  using Session = std::shared_ptr<platform::ExportSession>;
  auto session = withoutExceptions([&]() -> platform::Result<Session> {
    const auto media = media_.load();
    if (!media) return std::unexpected(media.error());
    auto made = (*media)->makeExportSession(url, stop_.get_token());
    if (!made) return nullptr;
    return std::make_shared<CountedExportSession>(std::move(made), exports_);
  });
  return session ? *std::move(session)
                 : std::make_shared<FailedExportSession>(std::move(session).error());
}

std::optional<platform::FileURL> DesktopPlatform::runModal(const platform::OpenPanel& panel) {
  return panels_.runModal(panel);
}

std::optional<platform::FileURL> DesktopPlatform::runModal(const platform::SavePanel& panel) {
  return panels_.runModal(panel);
}

std::optional<platform::ContentType> DesktopPlatform::contentType(
    const std::string& filenameExtension) {
  // Here a type is a filter on names, and there is one for every extension.
  return platform::ContentType{filenameExtension};
}

void DesktopPlatform::activateFileViewerSelecting(const std::vector<platform::FileURL>& urls) {
  desktop::reveal(urls);
}

std::unique_ptr<platform::Timer> DesktopPlatform::scheduledTimer(double interval,
                                                                 std::function<void()> block) {
  return std::make_unique<desktop::PreciseTimer>(interval, std::move(block));
}

std::string DesktopPlatform::uuidString() {
  return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

}  // namespace quibel
