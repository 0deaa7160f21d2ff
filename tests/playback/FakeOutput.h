#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "playback/Sink.h"

namespace quibel::playback {

/// A sound output that is pulled by hand and hears when it is told. Any thread.
class FakeOutput {
 public:
  /// Called before each connection, on the audio thread; may wait there.
  std::function<void()> beforeConnect = [] {};

  Connect connect() {
    return [this]() -> platform::Result<std::unique_ptr<SinkContext>> {
      beforeConnect();
      const std::lock_guard lock(mutex_);
      ++connections_;
      if (absent_) return std::unexpected(platform::Error("No hay salida de sonido."));
      return std::make_unique<Context>(*this);
    };
  }

  void setAbsent(bool absent) { set(absent_, absent); }

  /// Whether its connections wake nothing up while they have no sink.
  void setQuiet(bool quiet) { set(quiet_, quiet); }

  /// The next `frames` frames that the sink plays, interleaved; none while it is stopped.
  std::vector<float> pull(std::uint32_t frames) {
    const std::lock_guard lock(mutex_);
    if (!running_) return {};
    std::vector<float> samples(std::size_t{frames} * format_.channels, -1.0F);
    source_->render(samples.data(), frames);
    pulled_ += frames;
    return samples;
  }

  /// Everything up to the sink's frame `position` has been heard.
  void hear(std::uint64_t position) { set(position_, position); }
  void hearAll() {
    const std::lock_guard lock(mutex_);
    position_ = pulled_;
  }
  void fail() { set(failed_, true); }

  bool isRunning() const { return get(running_); }
  bool isOpen() const { return get(source_) != nullptr; }
  SinkFormat format() const { return get(format_); }
  int connections() const { return get(connections_); }
  int starts() const { return get(starts_); }

 private:
  class FakeSink final : public Sink {
   public:
    FakeSink(FakeOutput& output, SinkSource& source) : output_(output) {
      output_.set(output_.source_, &source);
    }
    ~FakeSink() override {
      const std::lock_guard lock(output_.mutex_);
      output_.source_ = nullptr;
      output_.running_ = false;
      output_.failed_ = false;
      output_.position_ = output_.pulled_ = 0;
    }
    bool start() override {
      const std::lock_guard lock(output_.mutex_);
      ++output_.starts_;
      return output_.running_ = true;
    }
    std::optional<std::uint64_t> position() override { return output_.get(output_.position_); }
    bool hasFailed() const override { return output_.get(output_.failed_); }

   private:
    FakeOutput& output_;
  };

  class Context final : public SinkContext {
   public:
    explicit Context(FakeOutput& output) : output_(output) {}
    platform::Result<std::unique_ptr<Sink>> open(const SinkFormat& format,
                                                 SinkSource& source) override {
      if (output_.get(output_.absent_))
        return std::unexpected(platform::Error("No hay salida de sonido."));
      output_.set(output_.format_, format);
      return std::make_unique<FakeSink>(output_, source);
    }
    bool isQuiet() const override { return output_.get(output_.quiet_); }

   private:
    FakeOutput& output_;
  };

  template <class T>
  T get(const T& value) const {
    const std::lock_guard lock(mutex_);
    return value;
  }
  template <class T, class U>
  void set(T& value, const U& to) {
    const std::lock_guard lock(mutex_);
    value = to;
  }

  mutable std::mutex mutex_;
  SinkSource* source_ = nullptr;
  SinkFormat format_;
  std::uint64_t position_ = 0;
  std::uint64_t pulled_ = 0;
  bool running_ = false;
  bool failed_ = false;
  bool absent_ = false;
  bool quiet_ = true;
  int connections_ = 0;
  int starts_ = 0;
};

}  // namespace quibel::playback
