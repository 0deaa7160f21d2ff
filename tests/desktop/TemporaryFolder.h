#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <stdlib.h>

#include "platform/FileURL.h"

namespace quibel::desktop {

/// A folder of the test's own, removed with all it holds.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "files-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder could be made");
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  platform::FileURL url(const std::string& name) const { return platform::FileURL(path_ / name); }

  platform::FileURL write(const std::string& name, const std::string& contents) const {
    std::ofstream(path_ / name, std::ios::binary) << contents;
    return url(name);
  }

 private:
  std::filesystem::path path_;
};

inline std::string contentsOf(const platform::FileURL& url) {
  std::ifstream file(url.path(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace quibel::desktop
