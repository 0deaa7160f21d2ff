#include "tests/playback/PulseMonitor.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

#include <pulse/pulseaudio.h>

namespace quibel::playback {
namespace {

using std::chrono::microseconds;

/// The steady clock's time of a moment of the system clock.
PulseMonitor::Clock::time_point steady(const timeval& moment) {
  timeval now{};
  pa_gettimeofday(&now);
  return PulseMonitor::Clock::now() - microseconds(pa_timeval_diff(&now, &moment));
}

}  // namespace

class PulseMonitor::Client {
 public:
  Client(int rate, Receive receive);
  ~Client();

  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  Clock::time_point beginning() const;

 private:
  void connect();
  void waitFor(const std::function<bool()>& ready);
  void read();
  void takeTime();

  const Receive receive_;
  const pa_sample_spec format_;
  mutable std::mutex mutex_;
  std::vector<Clock::time_point> beginnings_;  ///< sorted
  std::unique_ptr<pa_threaded_mainloop, decltype(&pa_threaded_mainloop_free)> loop_;
  std::unique_ptr<pa_context, decltype(&pa_context_unref)> context_;
  std::unique_ptr<pa_stream, decltype(&pa_stream_unref)> stream_;
};

PulseMonitor::Client::Client(int rate, Receive receive)
    : receive_(std::move(receive)),
      format_{PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(rate), 2},
      loop_(pa_threaded_mainloop_new(), &pa_threaded_mainloop_free),
      context_(pa_context_new(pa_threaded_mainloop_get_api(loop_.get()), "monitor"),
               &pa_context_unref),
      stream_(nullptr, &pa_stream_unref) {
  if (pa_threaded_mainloop_start(loop_.get()) < 0) throw std::runtime_error("no thread");
  pa_threaded_mainloop_lock(loop_.get());
  try {
    connect();
  } catch (...) {
    pa_threaded_mainloop_unlock(loop_.get());
    pa_threaded_mainloop_stop(loop_.get());
    throw;
  }
  pa_threaded_mainloop_unlock(loop_.get());
}

PulseMonitor::Client::~Client() {
  pa_threaded_mainloop_lock(loop_.get());
  pa_stream_disconnect(stream_.get());
  pa_context_disconnect(context_.get());
  pa_threaded_mainloop_unlock(loop_.get());
  pa_threaded_mainloop_stop(loop_.get());
}

PulseMonitor::Clock::time_point PulseMonitor::Client::beginning() const {
  const std::lock_guard lock(mutex_);
  return beginnings_.at(beginnings_.size() / 2);
}

void PulseMonitor::Client::connect() {
  pa_context_set_state_callback(
      context_.get(),
      [](pa_context*, void* self) {
        pa_threaded_mainloop_signal(static_cast<Client*>(self)->loop_.get(), 0);
      },
      this);
  if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
    throw std::runtime_error("no sound server");
  waitFor([this] { return pa_context_get_state(context_.get()) == PA_CONTEXT_READY; });

  stream_.reset(pa_stream_new(context_.get(), "monitor", &format_, nullptr));
  pa_stream_set_read_callback(
      stream_.get(),
      [](pa_stream*, std::size_t, void* self) { static_cast<Client*>(self)->read(); }, this);
  if (pa_stream_connect_record(stream_.get(), "out.monitor", nullptr, PA_STREAM_DONT_MOVE) < 0)
    throw std::runtime_error("no monitor");
  waitFor([this] {
    const std::lock_guard lock(mutex_);
    return !beginnings_.empty();
  });
}

void PulseMonitor::Client::waitFor(const std::function<bool()>& ready) {
  while (!ready()) {
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context_.get())))
      throw std::runtime_error("the sound server does not answer");
    if (stream_ && pa_stream_get_state(stream_.get()) == PA_STREAM_FAILED)
      throw std::runtime_error("the sink cannot be listened to");
    pa_threaded_mainloop_wait(loop_.get());
  }
}

void PulseMonitor::Client::read() {
  const void* data = nullptr;
  std::size_t bytes = 0;
  while (pa_stream_peek(stream_.get(), &data, &bytes) == 0 && bytes > 0) {
    const auto count = bytes / sizeof(float);
    if (data) {
      receive_({static_cast<const float*>(data), count});
    } else {  // lost on the way
      receive_(std::vector<float>(count));
    }
    pa_stream_drop(stream_.get());
  }
  auto* const asked = pa_stream_update_timing_info(
      stream_.get(),
      [](pa_stream*, int success, void* self) {
        if (success != 0) static_cast<Client*>(self)->takeTime();
      },
      this);
  if (asked) pa_operation_unref(asked);
}

void PulseMonitor::Client::takeTime() {
  const auto* const time = pa_stream_get_timing_info(stream_.get());
  // At that moment so much had been recorded, and the last of it was still to be heard.
  const auto recorded =
      pa_bytes_to_usec(static_cast<std::uint64_t>(time->write_index), &format_) + time->source_usec;
  const auto beginning =
      steady(time->timestamp) - microseconds(recorded) + microseconds(time->sink_usec);
  const std::lock_guard lock(mutex_);
  beginnings_.insert(std::ranges::upper_bound(beginnings_, beginning), beginning);
  pa_threaded_mainloop_signal(loop_.get(), 0);
}

PulseMonitor::PulseMonitor(int rate, Receive receive)
    : client_(std::make_unique<Client>(rate, std::move(receive))) {}

PulseMonitor::~PulseMonitor() = default;

PulseMonitor::Clock::time_point PulseMonitor::beginning() const { return client_->beginning(); }

}  // namespace quibel::playback
