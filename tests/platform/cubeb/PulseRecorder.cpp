#include "tests/platform/cubeb/PulseRecorder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "tests/platform/cubeb/Eventually.h"

namespace quibel::playback {

using std::chrono::steady_clock;

PulseMonitor::PulseMonitor(int rate) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe could be made");
  process = std::make_unique<platform::ChildProcess>(
      std::vector<std::string>{"parec", "--device=out.monitor", "--format=float32le", "--raw",
                               "--channels=2", "--rate=" + std::to_string(rate),
                               "--latency-msec=5"},
      ends[1]);
  ::close(ends[1]);
  pipe = ends[0];
}

PulseRecorder::PulseRecorder(int rate) : rate_(rate), monitor_(rate) {
  reader_ = std::thread([this] { read(monitor_.pipe); });
  if (!eventually([&] { return samples().size() > static_cast<std::size_t>(rate) / 5; }))
    throw std::runtime_error("the recorder does not start");
}

PulseRecorder::~PulseRecorder() {
  monitor_.process.reset();
  reader_.join();
}

std::vector<float> PulseRecorder::samples() const {
  const std::lock_guard lock(mutex_);
  return samples_;
}

double PulseRecorder::frameAt(steady_clock::time_point time) const {
  const std::lock_guard lock(mutex_);
  return std::chrono::duration<double>(time - beginning_).count() * rate_;
}

bool PulseRecorder::endsInSilence() const {
  const auto recorded = samples();
  const auto silence = static_cast<std::ptrdiff_t>(rate_);  // half a second of both channels
  const auto isSilent = [](float sample) { return sample == 0; };
  return std::ssize(recorded) > silence && !std::ranges::all_of(recorded, isSilent) &&
         std::all_of(recorded.end() - silence, recorded.end(), isSilent);
}

void PulseRecorder::read(int fd) {
  std::array<char, 16'384> bytes{};
  std::size_t rest = 0;  // of a sample that came in part
  for (;;) {
    const auto got = ::read(fd, bytes.data() + rest, bytes.size() - rest);
    const auto now = steady_clock::now();
    if (got <= 0) break;
    const auto available = rest + static_cast<std::size_t>(got);
    const auto count = available / sizeof(float);
    const std::lock_guard lock(mutex_);
    samples_.resize(samples_.size() + count);
    std::memcpy(samples_.data() + samples_.size() - count, bytes.data(), count * sizeof(float));
    rest = available % sizeof(float);
    std::memmove(bytes.data(), bytes.data() + count * sizeof(float), rest);
    const std::chrono::duration<double> length(static_cast<double>(samples_.size()) / 2 / rate_);
    beginning_ =
        std::min(beginning_, now - std::chrono::duration_cast<steady_clock::duration>(length));
  }
  ::close(fd);
}

}  // namespace quibel::playback
