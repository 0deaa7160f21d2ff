#include "song/ringtone/RingtoneSession.h"

#include <atomic>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "song/decoding/OpenSong.h"
#include "song/file/Errors.h"
#include "song/file/Input.h"
#include "song/ringtone/AacChannel.h"
#include "song/ringtone/Exporter.h"

namespace quibel::song {

namespace {

using Song = platform::Result<std::unique_ptr<platform::AudioFile>>;

/// What the session and its thread share: it lives as long as either.
struct Job {
  explicit Job(std::stop_token outer)
      : forwardStop(std::move(outer), [this] { stop.request_stop(); }) {}

  /// The thread's whole work.
  void run() {
    auto result = write();
    {
      const std::lock_guard lock(mutex);
      if (result) {
        status = platform::ExportStatus::completed;
      } else {
        status = stop.stop_requested() ? platform::ExportStatus::cancelled
                                       : platform::ExportStatus::failed;
        error = std::move(result.error());
      }
    }
    song = std::unexpected(makeError(Failure::internal));
    std::exchange(completionHandler, nullptr)();
  }

  platform::Result<void> write() try {
    if (!song) return std::unexpected(song.error());
    if (!output) return std::unexpected(makeError(Failure::cannotCreate));
    return exportRange(**song, range, *output, stop.get_token());
  } catch (const std::bad_alloc&) {
    return std::unexpected(makeError(Failure::outOfMemory));
  } catch (const std::exception&) {
    return std::unexpected(makeError(Failure::internal));
  }

  std::stop_source stop;
  std::stop_callback<std::function<void()>> forwardStop;
  Song song = std::unexpected(makeError(Failure::internal));
  std::optional<platform::FileURL> output;
  platform::TimeRange range;
  std::function<void()> completionHandler;

  std::mutex mutex;  // guards what follows
  platform::ExportStatus status = platform::ExportStatus::unknown;
  std::optional<platform::Error> error;
};

class Session final : public platform::ExportSession {
 public:
  explicit Session(std::shared_ptr<Job> job) : job_(std::move(job)) {}

  ~Session() override {
    job_->stop.request_stop();
    if (!thread_.joinable()) return;
    // The handler may have held the last reference: then this is the session's
    // own thread, which ends right after it.
    if (thread_.get_id() == std::this_thread::get_id()) {
      thread_.detach();
    } else {
      thread_.join();
    }
  }

  void setOutputURL(const platform::FileURL& url) override { job_->output = url; }
  void setOutputFileType(platform::FileType) override {}  // there is but one
  void setTimeRange(const platform::TimeRange& range) override { job_->range = range; }

  void exportAsynchronously(std::function<void()> completionHandler) override {
    if (thread_.joinable()) return;
    job_->completionHandler = std::move(completionHandler);
    {
      const std::lock_guard lock(job_->mutex);
      job_->status = platform::ExportStatus::exporting;
    }
    try {
      thread_ = std::thread([job = job_] { job->run(); });
    } catch (const std::system_error&) {
      job_->song = std::unexpected(makeError(Failure::outOfMemory));
      job_->run();
    }
  }

  platform::ExportStatus status() const override {
    const std::lock_guard lock(job_->mutex);
    return job_->status;
  }

  std::optional<platform::Error> error() const override {
    const std::lock_guard lock(job_->mutex);
    return job_->error;
  }

 private:
  std::shared_ptr<Job> job_;
  std::thread thread_;
};

// False where the song is of no kind that can be decoded; any other trouble is
// the job's to report.
bool openSong(Job& job, const platform::FileURL& url) try {
  const auto input = Input::open(url, job.stop.get_token());
  if (!input) {
    job.song = std::unexpected(input.error());
    return true;
  }
  job.song = openAudioFile(*input);
  return job.song || (*input)->failure();
} catch (const std::bad_alloc&) {
  job.song = std::unexpected(makeError(Failure::outOfMemory));
  return true;
}

}  // namespace

std::shared_ptr<platform::ExportSession> makeExportSession(const platform::FileURL& url,
                                                           std::stop_token stop) {
  if (!AacChannel::isAvailable()) return nullptr;
  auto job = std::make_shared<Job>(std::move(stop));
  if (!openSong(*job, url)) return nullptr;
  return std::make_shared<Session>(std::move(job));
}

}  // namespace quibel::song
