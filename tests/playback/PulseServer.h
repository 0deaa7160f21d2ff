#pragma once

#include <filesystem>
#include <memory>

#include "tests/support/ChildProcess.h"

namespace quibel::playback {

/// A PulseAudio server whose only output is a null sink, in a folder of its own,
/// which this process' PulseAudio clients use from then on.
class PulseServer {
 public:
  /// `rate`: the null sink's.
  explicit PulseServer(int rate = 44100);
  ~PulseServer();

  PulseServer(const PulseServer&) = delete;
  PulseServer& operator=(const PulseServer&) = delete;

  /// Whether the program is there at all.
  static bool isInstalled();

  void start();
  void kill();
  void stop() const;  ///< as SIGSTOP does
  void resume() const;
  pid_t process() const { return process_->pid(); }

 private:
  std::filesystem::path folder_;
  int rate_;
  std::unique_ptr<platform::ChildProcess> process_;
};

}  // namespace quibel::playback
