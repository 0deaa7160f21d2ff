#include "playback/OutputDevice.h"

#include <chrono>
#include <utility>

namespace quibel::playback {

OutputDevice::OutputDevice(Connect connect, std::function<Clock::time_point()> now)
    : connect_(std::move(connect)), now_(std::move(now)) {}

platform::Result<std::unique_ptr<Sink>> OutputDevice::open(const SinkFormat& format,
                                                           SinkSource& source) {
  // A connection that was idle may have died unseen: the first failure is its,
  // and only a fresh one's counts.
  if (context_) {
    if (auto sink = context_->open(format, source)) return sink;
    drop();
  }
  if (auto connected = connect(); !connected) return std::unexpected(connected.error());
  auto sink = context_->open(format, source);
  if (!sink) return std::unexpected(refuse(sink.error()));
  return sink;
}

platform::Result<void> OutputDevice::connect() {
  if (context_) return {};
  if (lastError_ && now_() - lastFailure_ < std::chrono::seconds(1))
    return std::unexpected(*lastError_);
  auto context = connect_();
  if (!context) return std::unexpected(refuse(context.error()));
  context_ = std::move(*context);
  lastError_.reset();
  return {};
}

void OutputDevice::drop() { context_.reset(); }

void OutputDevice::rest() {
  if (context_ && !context_->isQuiet()) drop();
}

platform::Error OutputDevice::refuse(platform::Error error) {
  drop();
  lastError_ = error;
  lastFailure_ = now_();
  return error;
}

}  // namespace quibel::playback
