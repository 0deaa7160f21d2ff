#include <cerrno>
#include <cstdarg>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include "desktop/LocalFileManager.h"
#include "tests/desktop/TemporaryFolder.h"
#include "tests/support/SystemCall.h"

// Stands in for the system calls of a copy, so that any one of them can fail.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's
// headers have reserved names.
namespace {

using quibel::test::openMode;
using quibel::test::original;

thread_local int callsUntilFailure = 0;  // 0: none fails
thread_local int failure = 0;
thread_local std::string_view failedCall;
thread_local bool hasNoUnnamedFiles = false;  // as on FAT

bool failsNow(const char* call) {
  if (callsUntilFailure == 0) return false;
  --callsUntilFailure;
  if (callsUntilFailure > 0) return false;
  errno = failure;
  failedCall = call;
  return true;
}

}  // namespace

extern "C" ssize_t read(int fd, void* bytes, std::size_t count) {
  static auto* const real = original<ssize_t(int, void*, std::size_t)>("read");
  return failsNow("read") ? -1 : real(fd, bytes, count);
}

extern "C" ssize_t write(int fd, const void* bytes, std::size_t count) {
  static auto* const real = original<ssize_t(int, const void*, std::size_t)>("write");
  return failsNow("write") ? -1 : real(fd, bytes, count);
}

extern "C" int fsync(int fd) {
  static auto* const real = original<int(int)>("fsync");
  return failsNow("fsync") ? -1 : real(fd);
}

extern "C" int fstat(int fd, struct stat* status) noexcept {
  static auto* const real = original<int(int, struct stat*)>("fstat");
  return failsNow("fstat") ? -1 : real(fd, status);
}

extern "C" int open(const char* path, int flags, ...) {
  static auto* const real = original<int(const char*, int, ...)>("open");
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = openMode(flags, rest);
  va_end(rest);
  if (hasNoUnnamedFiles && (flags & O_TMPFILE) == O_TMPFILE) {
    errno = EOPNOTSUPP;
    return -1;
  }
  return real(path, flags, mode);
}

extern "C" int linkat(int fromFolder, const char* from, int toFolder, const char* to,
                      int flags) noexcept {
  static auto* const real = original<int(int, const char*, int, const char*, int)>("linkat");
  return failsNow("linkat") ? -1 : real(fromFolder, from, toFolder, to, flags);
}

extern "C" int close(int fd) {
  static auto* const real = original<int(int)>("close");
  const int result = real(fd);  // as on Linux, where the descriptor is gone in any case
  return failsNow("close") ? -1 : result;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace quibel::desktop {
namespace {

/// Copies with the call of that number failing; whether any failed.
bool copyFailingAt(int call, int error, const TemporaryFolder& folder,
                   platform::Result<void>& result) {
  failedCall = {};
  failure = error;
  callsUntilFailure = call;
  result = LocalFileManager().copyItem(folder.url("from"), folder.url("to"));
  callsUntilFailure = 0;
  return !failedCall.empty();
}

/// Has every call of a copy fail in its turn; their names.
std::string callsOfACopy() {
  const TemporaryFolder folder;
  folder.write("from", std::string(600'000, 'x'));
  platform::Result<void> result;
  int call = 1;
  std::string calls;
  for (; copyFailingAt(call, EIO, folder, result); ++call) {
    calls += std::string(failedCall) + ' ';
    // The copy is whole before the file that was only read is closed.
    if (result) break;
    EXPECT_EQ(result.error().localizedDescription(), "El disco ha fallado (Input/output error).");
    EXPECT_FALSE(std::filesystem::exists(folder.url("to").path())) << calls;
  }
  EXPECT_TRUE(result);
  return calls;
}

TEST(CopyFaults, WhicheverCallFailsTheCopyFailsAndLeavesNothing) {
  const int unnamed = ::open(TemporaryFolder().path().c_str(), O_WRONLY | O_TMPFILE, 0600);
  if (unnamed < 0) GTEST_SKIP() << "a file must have a name here from the beginning";
  ::close(unnamed);
  EXPECT_EQ(callsOfACopy(),
            "fstat read write read write read write read fsync fstat linkat close close ");
}

TEST(CopyFaults, SoItIsWhereAFileHasItsNameFromTheBeginning) {
  hasNoUnnamedFiles = true;
  EXPECT_EQ(callsOfACopy(), "fstat read write read write read write read fsync fstat close close ");
  hasNoUnnamedFiles = false;
}

TEST(CopyFaults, NeverReplaceWhatIsThere) {
  const TemporaryFolder folder;
  const auto from = folder.write("from", "nuevo");
  const auto to = folder.write("to", "viejo");
  hasNoUnnamedFiles = true;
  const auto result = LocalFileManager().copyItem(from, to);
  hasNoUnnamedFiles = false;
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().localizedDescription(), "Ya existe un archivo con ese nombre.");
  EXPECT_EQ(contentsOf(to), "viejo");
}

TEST(CopyFaults, AnInterruptedCallIsMadeAgain) {
  const TemporaryFolder folder;
  folder.write("from", std::string(600'000, 'x'));
  platform::Result<void> result;
  for (const int call : {2, 3, 4, 5}) {
    ASSERT_TRUE(copyFailingAt(call, EINTR, folder, result));
    EXPECT_TRUE(result) << failedCall;
    EXPECT_EQ(std::filesystem::file_size(folder.url("to").path()), 600'000U);
    std::filesystem::remove(folder.url("to").path());
  }
}

}  // namespace
}  // namespace quibel::desktop
