#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sys/types.h>

namespace quibel::playback {

/// A program of the tests' own, killed when it goes out of scope.
class ChildProcess {
 public:
  /// Standard output goes to `output`, or nowhere for -1.
  explicit ChildProcess(const std::vector<std::string>& command, int output = -1);
  ~ChildProcess();

  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void signal(int number) const;
  bool hasEnded();

 private:
  pid_t pid_;
};

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

 private:
  std::filesystem::path folder_;
  int rate_;
  std::unique_ptr<ChildProcess> process_;
};

}  // namespace quibel::playback
