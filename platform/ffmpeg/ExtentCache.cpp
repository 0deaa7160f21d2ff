#include "platform/ffmpeg/ExtentCache.h"

namespace quibel::ffmpeg {

std::optional<Extent> ExtentCache::find(const FileIdentity& file) {
  const std::lock_guard lock(mutex_);
  for (const Entry& entry : entries_) {
    if (entry.isUsed && entry.file == file) return entry.extent;
  }
  return std::nullopt;
}

void ExtentCache::store(const FileIdentity& file, const Extent& extent) {
  const std::lock_guard lock(mutex_);
  entries_[oldest_] = {true, file, extent};
  oldest_ = (oldest_ + 1) % entries_.size();
}

}  // namespace quibel::ffmpeg
