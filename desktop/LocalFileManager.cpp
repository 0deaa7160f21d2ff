#include "desktop/LocalFileManager.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "desktop/ErrnoText.h"

namespace quibel::desktop {
namespace {

using platform::FileURL;
using platform::Result;

// Read and write for all, less what the umask takes away.
constexpr mode_t permissions = 0666;

std::unexpected<platform::Error> failure(int code = errno) {
  return std::unexpected(errnoError(code));
}

/// An open file, closed when it goes out of scope.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }

  explicit operator bool() const { return fd_ >= 0; }
  int get() const { return fd_; }

  /// For a file that was written: its last error may come only here.
  Result<void> close() {
    // Linux frees the descriptor whatever it answers, also for EINTR.
    if (::close(std::exchange(fd_, -1)) != 0 && errno != EINTR) return failure();
    return {};
  }

 private:
  int fd_;
};

/// Removes what was written, unless it is whole in the end.
class RemoveUnlessKept {
 public:
  explicit RemoveUnlessKept(const FileURL& url) : url_(url) {}
  RemoveUnlessKept(const RemoveUnlessKept&) = delete;
  RemoveUnlessKept& operator=(const RemoveUnlessKept&) = delete;
  ~RemoveUnlessKept() {
    if (!kept_) ::unlink(url_.path().c_str());
  }

  void keep() { kept_ = true; }

 private:
  const FileURL& url_;
  bool kept_ = false;
};

Result<void> writeAll(int fd, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return failure();
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return {};
}

/// Opens a file to be written that has no name yet, on the file system where it
/// will get it. Negative, as open(), where that fails.
int openUnnamed(const FileURL& url) {
  return ::open(url.path().parent_path().c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, permissions);
}

/// Whether a failure of openUnnamed() says that there are no such files here: on
/// FAT, on most network file systems, and on those that programs provide.
bool isWithoutUnnamedFiles(int code) {
  return code == EOPNOTSUPP || code == EISDIR || code == EINVAL;
}

/// Gives a file without a name one that is free.
Result<void> giveName(int fd, const FileURL& url) {
  const auto unnamed = "/proc/self/fd/" + std::to_string(fd);
  if (::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, url.path().c_str(), AT_SYMLINK_FOLLOW) != 0)
    return failure();
  return {};
}

/// Returns the number of bytes copied.
Result<off_t> copyBytes(int from, int to) {
  std::vector<std::byte> buffer(std::size_t{256} * 1024);
  off_t copied = 0;
  for (;;) {
    const auto got = ::read(from, buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return failure();
    if (got == 0) return copied;
    const auto written = writeAll(to, std::span(buffer).first(static_cast<std::size_t>(got)));
    if (!written) return std::unexpected(written.error());
    copied += got;
  }
}

/// Has the file's contents on the disk, or the error that keeps them from it.
Result<void> flush(int fd) {
  // Some network and user-space file systems have no such call, and say so.
  if (::fsync(fd) != 0 && errno != EINVAL && errno != ENOTSUP && errno != ENOSYS) return failure();
  return {};
}

Result<off_t> size(int fd) {
  struct stat status{};
  if (::fstat(fd, &status) != 0) return failure();
  return status.st_size;
}

Result<off_t> regularFileSize(int fd) {
  struct stat status{};
  if (::fstat(fd, &status) != 0) return failure();
  if (S_ISDIR(status.st_mode)) return failure(EISDIR);
  if (!S_ISREG(status.st_mode))
    return std::unexpected(platform::Error("No es un archivo que se pueda copiar."));
  return status.st_size;
}

}  // namespace

FileURL LocalFileManager::temporaryDirectory() const {
  const char* const folder = std::getenv("TMPDIR");
  struct stat status{};
  const bool isUsable = folder != nullptr && folder[0] == '/' && ::stat(folder, &status) == 0 &&
                        S_ISDIR(status.st_mode);
  return FileURL(isUsable ? folder : "/tmp");
}

bool LocalFileManager::fileExists(const FileURL& url) const {
  struct stat status{};
  return ::lstat(url.path().c_str(), &status) == 0;
}

Result<void> LocalFileManager::removeItem(const FileURL& url) {
  if (::unlink(url.path().c_str()) != 0) return failure();
  return {};
}

Result<void> LocalFileManager::copyItem(const FileURL& from, const FileURL& to) {
  // Without O_NONBLOCK opening a pipe that nobody writes would never return.
  const Descriptor source(::open(from.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!source) return failure();
  const auto expected = regularFileSize(source.get());
  if (!expected) return std::unexpected(expected.error());

  // A file that gets its name only when it is whole: not even the program's
  // sudden end leaves half of one.
  int opened = openUnnamed(to);
  const bool isNamedFirst = opened < 0 && isWithoutUnnamedFiles(errno);
  if (isNamedFirst)
    opened = ::open(to.path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
  Descriptor target(opened);
  if (!target) return failure();
  std::optional<RemoveUnlessKept> written;
  if (isNamedFirst) written.emplace(to);

  const auto copied = copyBytes(source.get(), target.get());
  if (!copied) return std::unexpected(copied.error());
  if (*copied != *expected)
    return std::unexpected(platform::Error("El archivo ha cambiado mientras se copiaba."));
  if (auto flushed = flush(target.get()); !flushed) return flushed;
  const auto reached = size(target.get());
  if (!reached) return std::unexpected(reached.error());
  if (*reached != *expected)
    return std::unexpected(platform::Error("El archivo no se ha escrito entero."));
  if (!isNamedFirst) {
    if (auto named = giveName(target.get(), to); !named) return named;
    written.emplace(to);
  }
  if (auto closed = target.close(); !closed) return closed;

  written->keep();
  return {};
}

Result<void> LocalFileManager::moveItem(const FileURL& from, const FileURL& to) {
  const char* const old = from.path().c_str();
  const char* const wanted = to.path().c_str();
  if (::renameat2(AT_FDCWD, old, AT_FDCWD, wanted, RENAME_NOREPLACE) == 0) return {};
  // Network and user-space file systems know renaming alone.
  if (errno != EINVAL && errno != ENOSYS) return failure();
  if (fileExists(to)) return failure(EEXIST);
  if (::rename(old, wanted) != 0) return failure();
  return {};
}

}  // namespace quibel::desktop
