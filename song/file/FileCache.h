#pragma once

#include <array>
#include <cstddef>
#include <mutex>
#include <optional>
#include <utility>

#include "song/file/Input.h"

namespace quibel::song {

/// What took long to find out about the files opened last, so that playing and
/// exporting a song does not find it out again. Any thread.
template <class Value>
class FileCache {
 public:
  std::optional<Value> find(const FileIdentity& file) const {
    const std::lock_guard lock(mutex_);
    for (const Entry& entry : entries_)
      if (entry.value && entry.file == file) return entry.value;
    return std::nullopt;
  }

  void store(const FileIdentity& file, Value value) {
    const std::lock_guard lock(mutex_);
    entries_[oldest_] = {file, std::move(value)};
    oldest_ = (oldest_ + 1) % entries_.size();
  }

 private:
  struct Entry {
    FileIdentity file;
    std::optional<Value> value;
  };

  mutable std::mutex mutex_;
  std::array<Entry, 8> entries_;
  std::size_t oldest_ = 0;
};

}  // namespace quibel::song
