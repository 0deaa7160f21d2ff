#pragma once

#include "platform/Error.h"
#include "platform/FileURL.h"

namespace quibel::platform {

/// Files as whole things. Main thread; each call blocks until it is done.
class FileManager {
 public:
  FileManager() = default;
  FileManager(const FileManager&) = delete;
  FileManager& operator=(const FileManager&) = delete;
  virtual ~FileManager() = default;

  virtual FileURL temporaryDirectory() const = 0;

  /// Whether something, of whatever kind, has this name.
  virtual bool fileExists(const FileURL& url) const = 0;

  virtual Result<void> removeItem(const FileURL& url) = 0;

  /// Copies one file to a name that is free: all of it, or nothing. An error
  /// leaves no file behind at `to`.
  virtual Result<void> copyItem(const FileURL& from, const FileURL& to) = 0;

  /// Gives a file another name on the same disk, one that is free, in one step. An error
  /// leaves it where it was.
  virtual Result<void> moveItem(const FileURL& from, const FileURL& to) = 0;
};

}  // namespace quibel::platform
