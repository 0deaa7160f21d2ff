#include "playback/cubeb/CubebSink.h"

#include <algorithm>
#include <atomic>
#include <expected>
#include <string>
#include <string_view>
#include <utility>

#include <cubeb/cubeb.h>

namespace quibel::playback {
namespace {

struct DestroyContext {
  void operator()(::cubeb* context) const { cubeb_destroy(context); }
};
struct DestroyStream {
  void operator()(::cubeb_stream* stream) const { cubeb_stream_destroy(stream); }
};

/// Seconds between a sample's rendering and its sound: short enough that a jump
/// is heard at once, long enough for a busy desktop.
constexpr double latency = 0.040;

std::unexpected<platform::Error> noOutput() {
  return std::unexpected(
      platform::Error("No hay ninguna salida de sonido disponible. Conecta unos altavoces o unos "
                      "auriculares y comprueba los ajustes de sonido."));
}

class CubebSink final : public Sink {
 public:
  CubebSink(std::shared_ptr<::cubeb> context, SinkSource& source)
      : context_(std::move(context)), source_(source) {}

  ~CubebSink() override {
    if (stream_) cubeb_stream_stop(stream_.get());
  }

  int open(cubeb_stream_params params, std::uint32_t latencyFrames) {
    ::cubeb_stream* stream = nullptr;
    const int result =
        cubeb_stream_init(context_.get(), &stream, "Quibel", nullptr, nullptr, nullptr, &params,
                          latencyFrames, &CubebSink::dataCallback, &CubebSink::stateCallback, this);
    if (result == CUBEB_OK) stream_.reset(stream);
    return result;
  }

  bool start() override { return cubeb_stream_start(stream_.get()) == CUBEB_OK; }

  std::optional<std::uint64_t> position() override {
    std::uint64_t frames = 0;
    if (cubeb_stream_get_position(stream_.get(), &frames) != CUBEB_OK) return std::nullopt;
    return frames;
  }

  bool hasFailed() const override { return failed_.load(std::memory_order_relaxed); }

 private:
  static long dataCallback(cubeb_stream*, void* self, const void*, void* out, long frames) {
    auto& sink = *static_cast<CubebSink*>(self);
    sink.source_.render(static_cast<float*>(out), static_cast<std::uint32_t>(frames));
    return frames;
  }

  static void stateCallback(cubeb_stream*, void* self, cubeb_state state) {
    if (state == CUBEB_STATE_ERROR)
      static_cast<CubebSink*>(self)->failed_.store(true, std::memory_order_relaxed);
  }

  std::shared_ptr<::cubeb> context_;
  SinkSource& source_;
  std::atomic<bool> failed_ = false;
  std::unique_ptr<::cubeb_stream, DestroyStream> stream_;
};

class CubebContext final : public SinkContext {
 public:
  explicit CubebContext(std::shared_ptr<::cubeb> context) : context_(std::move(context)) {}

  platform::Result<std::unique_ptr<Sink>> open(const SinkFormat& format,
                                               SinkSource& source) override {
    cubeb_stream_params params{};
    params.format = CUBEB_SAMPLE_FLOAT32NE;
    params.rate = format.rate;
    params.channels = format.channels;
    params.layout = format.channels == 1 ? CUBEB_LAYOUT_MONO : CUBEB_LAYOUT_STEREO;
    params.prefs = CUBEB_STREAM_PREF_NONE;

    auto frames = static_cast<std::uint32_t>(latency * format.rate);
    std::uint32_t least = 0;
    if (cubeb_get_min_latency(context_.get(), &params, &least) == CUBEB_OK)
      frames = std::max(frames, least);

    auto sink = std::make_unique<CubebSink>(context_, source);
    const int result = sink->open(params, frames);
    if (result == CUBEB_OK) return sink;
    if (result == CUBEB_ERROR_INVALID_FORMAT)
      return std::unexpected(platform::Error("La salida de sonido no admite este audio (" +
                                             std::to_string(format.rate) + " Hz)."));
    return noOutput();
  }

  // The others look after their streams in a thread of their own, ALSA's once a second,
  // also where there are none.
  bool isQuiet() const override {
    return std::string_view(cubeb_get_backend_id(context_.get())).starts_with("pulse");
  }

 private:
  std::shared_ptr<::cubeb> context_;
};

}  // namespace

platform::Result<std::unique_ptr<SinkContext>> connectCubeb() {
  ::cubeb* context = nullptr;
  if (cubeb_init(&context, "Quibel", nullptr) != CUBEB_OK) return noOutput();
  return std::make_unique<CubebContext>(std::shared_ptr<::cubeb>(context, DestroyContext{}));
}

}  // namespace quibel::playback
