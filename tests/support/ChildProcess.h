#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace quibel::platform {

/// A program of the tests' own, killed when it goes out of scope.
class ChildProcess {
 public:
  /// Standard output goes to `output`, or nowhere for -1.
  explicit ChildProcess(const std::vector<std::string>& command, int output = -1);
  ~ChildProcess();

  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void signal(int number) const;

  /// Gives its first thread real-time priority, where that is allowed.
  void requestRealTimePriority() const;

  bool hasEnded();

  pid_t pid() const { return pid_; }

 private:
  pid_t pid_;
};

}  // namespace quibel::platform
