#pragma once

#include <filesystem>

#include <sys/resource.h>

namespace quibel::test {

/// A file system of 64 KiB at a new folder, seen by this thread and those that it
/// starts only.
class SmallDisk {
 public:
  explicit SmallDisk(std::filesystem::path at);
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk();

  /// False where the machine lets nobody mount one; errno says why.
  bool isThere() const { return isThere_; }
  bool makeReadOnly() const;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  bool isThere_;
};

/// A limit for the size of files while it lives. SIGXFSZ is to be ignored.
class SizeLimit {
 public:
  explicit SizeLimit(rlim_t bytes);
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;
  ~SizeLimit();

 private:
  rlimit before_{};
};

}  // namespace quibel::test
