#include "tests/export/Hardships.h"

#include <cerrno>
#include <stdexcept>
#include <utility>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace quibel::test {

namespace {

bool mountAt(const std::filesystem::path& folder) {
  const int spaces = ::geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER;
  std::filesystem::create_directory(folder);
  return ::unshare(spaces) == 0 &&
         ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
}

}  // namespace

SmallDisk::SmallDisk(std::filesystem::path at) : path_(std::move(at)), isThere_(mountAt(path_)) {}

SmallDisk::~SmallDisk() {
  if (isThere_) ::umount(path_.c_str());
}

bool SmallDisk::makeReadOnly() const {
  return ::mount(nullptr, path_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

SizeLimit::SizeLimit(rlim_t bytes) {
  if (::getrlimit(RLIMIT_FSIZE, &before_) != 0) throw std::runtime_error("no limits");
  rlimit less = before_;
  less.rlim_cur = bytes;
  if (::setrlimit(RLIMIT_FSIZE, &less) != 0) throw std::runtime_error("no lower limit");
}

SizeLimit::~SizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }

}  // namespace quibel::test
