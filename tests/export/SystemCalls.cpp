#include "tests/export/SystemCalls.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <map>
#include <mutex>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include "tests/support/SystemCall.h"

namespace quibel::test {
namespace {

struct State {
  std::mutex mutex;
  std::string folder;
  CallPlan plan;
  std::map<int, std::string> files;  ///< the folder's open files, by descriptor
  std::vector<std::string> made;
};

std::atomic<bool> isWatching = false;

// Never destroyed: files are closed until the very end of the program.
State& state() {
  static auto* const only = new State;
  return *only;
}

// A file's extension; that of a ringtone for the folder itself, where the file
// that becomes one is opened before it has a name.
std::string kind(const std::string& path) {
  const std::filesystem::path file(path);
  return file.has_extension() ? file.extension().string() : ".m4r";
}

// Notes a call. What is to become of it, if anything.
std::optional<Fate> note(const char* call, const std::string& file) {
  State& all = state();
  all.made.push_back(std::string(call) + ' ' + file);
  if (all.made.size() != all.plan.call) return std::nullopt;
  if (all.plan.fate == Fate::endsTheProgram) static_cast<void>(::kill(::getpid(), SIGKILL));
  errno = all.plan.fate == Fate::isInterrupted ? EINTR : all.plan.error;
  return all.plan.fate;
}

std::optional<Fate> noteFile(const char* call, int descriptor) {
  if (!isWatching) return std::nullopt;
  const std::lock_guard lock(state().mutex);
  const auto file = state().files.find(descriptor);
  if (file == state().files.end()) return std::nullopt;
  return note(call, file->second);
}

std::optional<Fate> notePath(const char* call, const std::string& path) {
  if (!isWatching || !path.starts_with(state().folder)) return std::nullopt;
  const std::lock_guard lock(state().mutex);
  return note(call, kind(path));
}

void remember(int descriptor, const std::string& path) {
  if (!isWatching || descriptor < 0 || !path.starts_with(state().folder)) return;
  const std::lock_guard lock(state().mutex);
  state().files[descriptor] = kind(path);
}

void forget(int descriptor) {
  if (!isWatching) return;
  const std::lock_guard lock(state().mutex);
  state().files.erase(descriptor);
}

// Half of the bytes that a call is to move, but one at least.
std::size_t half(std::size_t count) { return std::max<std::size_t>(count / 2, 1); }

bool fails(const std::optional<Fate>& fate) { return fate && *fate != Fate::doesHalf; }

}  // namespace

SystemCalls::SystemCalls(const std::filesystem::path& folder, CallPlan plan) {
  state().folder = folder.string();
  state().plan = plan;
  state().files.clear();
  state().made.clear();
  isWatching = true;
}

SystemCalls::~SystemCalls() { isWatching = false; }

std::vector<std::string> SystemCalls::made() {
  const std::lock_guard lock(state().mutex);
  return state().made;
}

}  // namespace quibel::test

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's
// headers have reserved names.
using namespace quibel::test;

extern "C" int open(const char* path, int flags, ...) {
  static auto* const real = original<int(const char*, int, ...)>("open");
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = openMode(flags, rest);
  va_end(rest);
  if (notePath("open", path)) return -1;
  const int descriptor = real(path, flags, mode);
  remember(descriptor, path);
  return descriptor;
}

extern "C" ssize_t read(int fd, void* bytes, std::size_t count) {
  static auto* const real = original<ssize_t(int, void*, std::size_t)>("read");
  const auto fate = noteFile("read", fd);
  return fails(fate) ? -1 : real(fd, bytes, fate ? half(count) : count);
}

extern "C" ssize_t pread(int fd, void* bytes, std::size_t count, off_t offset) {
  static auto* const real = original<ssize_t(int, void*, std::size_t, off_t)>("pread");
  const auto fate = noteFile("pread", fd);
  return fails(fate) ? -1 : real(fd, bytes, fate ? half(count) : count, offset);
}

extern "C" ssize_t write(int fd, const void* bytes, std::size_t count) {
  static auto* const real = original<ssize_t(int, const void*, std::size_t)>("write");
  const auto fate = noteFile("write", fd);
  return fails(fate) ? -1 : real(fd, bytes, fate ? half(count) : count);
}

extern "C" ssize_t pwrite(int fd, const void* bytes, std::size_t count, off_t offset) {
  static auto* const real = original<ssize_t(int, const void*, std::size_t, off_t)>("pwrite");
  const auto fate = noteFile("pwrite", fd);
  return fails(fate) ? -1 : real(fd, bytes, fate ? half(count) : count, offset);
}

extern "C" int fsync(int fd) {
  static auto* const real = original<int(int)>("fsync");
  return noteFile("fsync", fd) ? -1 : real(fd);
}

extern "C" int fstat(int fd, struct stat* status) noexcept {
  static auto* const real = original<int(int, struct stat*)>("fstat");
  return noteFile("fstat", fd) ? -1 : real(fd, status);
}

extern "C" int close(int fd) {
  static auto* const real = original<int(int)>("close");
  const bool fails = noteFile("close", fd).has_value();
  forget(fd);
  const int result = real(fd);  // as on Linux, where the descriptor is gone in any case
  if (fails) errno = state().plan.error;
  return fails ? -1 : result;
}

extern "C" int linkat(int fromFolder, const char* from, int toFolder, const char* to,
                      int flags) noexcept {
  static auto* const real = original<int(int, const char*, int, const char*, int)>("linkat");
  return notePath("linkat", to) ? -1 : real(fromFolder, from, toFolder, to, flags);
}

extern "C" int unlink(const char* path) noexcept {
  static auto* const real = original<int(const char*)>("unlink");
  return notePath("unlink", path) ? -1 : real(path);
}

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned flags) noexcept {
  static auto* const real =
      original<int(int, const char*, int, const char*, unsigned)>("renameat2");
  return notePath("renameat2", to) ? -1 : real(fromFolder, from, toFolder, to, flags);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
