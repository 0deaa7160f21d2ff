#pragma once

#include <array>
#include <mutex>
#include <optional>

#include "platform/ffmpeg/Extent.h"
#include "platform/ffmpeg/Input.h"

namespace quibel::ffmpeg {

/// The extents of the files measured last, so that playing and exporting a song
/// does not count it again. Any thread.
class ExtentCache {
 public:
  std::optional<Extent> find(const FileIdentity& file);
  void store(const FileIdentity& file, const Extent& extent);

 private:
  struct Entry {
    bool isUsed = false;
    FileIdentity file;
    Extent extent;
  };

  std::mutex mutex_;
  std::array<Entry, 8> entries_;
  std::size_t oldest_ = 0;
};

}  // namespace quibel::ffmpeg
