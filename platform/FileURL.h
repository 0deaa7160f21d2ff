#pragma once

#include <filesystem>
#include <string>
#include <utility>

namespace quibel::platform {

/// A file by its absolute path. The path is the file system's own bytes: they
/// need not be UTF-8, and they reach the system calls unchanged. A folder's
/// closing slash is dropped, so that it too has a last component.
class FileURL {
 public:
  explicit FileURL(std::filesystem::path path) : path_(std::move(path)) {
    if (!path_.has_filename() && path_.has_relative_path()) path_ = path_.parent_path();
  }

  const std::filesystem::path& path() const { return path_; }

  /// The file's name with its extension, without its folder.
  std::string lastPathComponent() const { return path_.filename().string(); }

  /// Without the last extension: a.b.wav gives a.b. A name's leading dot does
  /// not begin an extension: .wav stays as it is.
  FileURL deletingPathExtension() const { return FileURL(path_.parent_path() / path_.stem()); }

  FileURL appendingPathComponent(const std::string& component) const {
    return FileURL(path_ / component);
  }

  FileURL appendingPathExtension(const std::string& extension) const {
    auto path = path_;
    path += '.';
    path += extension;
    return FileURL(std::move(path));
  }

  friend bool operator==(const FileURL&, const FileURL&) = default;

 private:
  std::filesystem::path path_;
};

}  // namespace quibel::platform
