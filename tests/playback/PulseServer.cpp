#include "tests/playback/PulseServer.h"

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace quibel::playback {
namespace {

bool accepts(const std::filesystem::path& socketPath) {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socketPath.string().copy(address.sun_path, sizeof address.sun_path - 1);
  const bool connected =
      ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(fd);
  return connected;
}

}  // namespace

PulseServer::PulseServer(int rate) : rate_(rate) {
  std::string name = (std::filesystem::temp_directory_path() / "pulse-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder could be made");
  folder_ = name;
  ::setenv("XDG_RUNTIME_DIR", name.c_str(), 1);
  ::setenv("PULSE_RUNTIME_PATH", name.c_str(), 1);
  ::setenv("PULSE_STATE_PATH", name.c_str(), 1);
  // And no other: a test that has no server must not find the machine's sound card.
  ::setenv("ALSA_CONFIG_PATH", "/dev/null", 1);
  ::setenv("JACK_DEFAULT_SERVER", "none", 1);
  ::setenv("JACK_NO_START_SERVER", "1", 1);
  ::setenv("PULSE_SERVER", ("unix:" + name + "/native").c_str(), 1);
  start();
}

PulseServer::~PulseServer() {
  process_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

bool PulseServer::isInstalled() { return std::system("command -v pulseaudio >/dev/null") == 0; }

void PulseServer::start() {
  const auto socket = folder_ / "native";
  std::filesystem::remove(socket);
  process_ = std::make_unique<platform::ChildProcess>(std::vector<std::string>{
      "pulseaudio", "-n", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1",
      "--disable-shm=yes", "-L",
      "module-native-protocol-unix auth-anonymous=1 socket=" + socket.string(), "-L",
      "module-null-sink sink_name=out norewinds=1 format=float32le channels=2 rate=" +
          std::to_string(rate_)});
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!accepts(socket)) {
    if (process_->hasEnded() || std::chrono::steady_clock::now() > deadline)
      throw std::runtime_error("the sound server does not start");
    std::this_thread::yield();
  }
  // It stands for a sound card, which a busy machine keeps waiting no longer than
  // one at rest. By itself it sees to that for only one of its two threads.
  process_->requestRealTimePriority();
}

void PulseServer::kill() { process_.reset(); }
void PulseServer::stop() const { process_->signal(SIGSTOP); }
void PulseServer::resume() const { process_->signal(SIGCONT); }

}  // namespace quibel::playback
