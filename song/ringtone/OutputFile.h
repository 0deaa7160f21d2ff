#pragma once

#include <cstdint>
#include <memory>

#include "platform/Error.h"
#include "platform/FileURL.h"
#include "song/file/Pointers.h"

namespace quibel::song {

/// A new file that FFmpeg writes to. Every system call's result counts.
class OutputFile {
 public:
  /// Fails where the name is taken.
  static platform::Result<std::unique_ptr<OutputFile>> create(const platform::FileURL& url);

  explicit OutputFile(int descriptor);  ///< throws std::bad_alloc
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  AVIOContext* io() const { return io_.get(); }

  /// Writes what is still buffered and closes. Fails if anything failed since
  /// the beginning: only then is the file whole.
  platform::Result<void> close();

  /// The first failed call's meaning, or, if none failed, what FFmpeg's `code` means.
  platform::Error failure(int code) const;

 private:
  static int write(void* opaque, WrittenBytes from, int size);
  static std::int64_t seek(void* opaque, std::int64_t offset, int whence);

  int descriptor_;
  std::int64_t position_ = 0;
  std::int64_t size_ = 0;
  int errorNumber_ = 0;
  IOPointer io_;
};

}  // namespace quibel::song
