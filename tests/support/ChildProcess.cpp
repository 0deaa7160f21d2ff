#include "tests/support/ChildProcess.h"

#include <stdexcept>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quibel::platform {

ChildProcess::ChildProcess(const std::vector<std::string>& command, int output) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const auto& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_ = ::fork();
  if (pid_ < 0) throw std::runtime_error("no process could be made");
  if (pid_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // a test that crashes leaves nothing behind
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    ::dup2(nowhere, STDIN_FILENO);
    ::dup2(output >= 0 ? output : nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    ::execvp(arguments.front(), arguments.data());
    ::_exit(127);
  }
}

ChildProcess::~ChildProcess() {
  if (pid_ == 0) return;
  ::kill(pid_, SIGKILL);
  ::waitpid(pid_, nullptr, 0);
}

void ChildProcess::signal(int number) const { ::kill(pid_, number); }

void ChildProcess::requestRealTimePriority() const {
  const sched_param parameters{.sched_priority = 5};
  static_cast<void>(::sched_setscheduler(pid_, SCHED_RR, &parameters));
}

bool ChildProcess::hasEnded() {
  if (pid_ != 0 && ::waitpid(pid_, nullptr, WNOHANG) == pid_) pid_ = 0;
  return pid_ == 0;
}

}  // namespace quibel::platform
