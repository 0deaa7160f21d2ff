#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>

#include "platform/Error.h"
#include "platform/FileURL.h"
#include "platform/ffmpeg/Pointers.h"

namespace quibel::ffmpeg {

/// What tells one state of one file from every other.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  std::int64_t size = 0;
  std::int64_t modified = 0;  ///< nanoseconds

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// A regular file, opened once: whoever reads through this reads the same file,
/// whatever happens to its name meanwhile. One thread at a time.
class Input {
 public:
  /// Fails for anything but a regular file that holds something.
  static platform::Result<std::shared_ptr<Input>> open(const platform::FileURL& url,
                                                       std::stop_token stop);

  Input(int descriptor, const FileIdentity& identity, std::stop_token stop)
      : descriptor_(descriptor), identity_(identity), stop_(std::move(stop)) {}
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input();

  /// The size when it was opened, in bytes.
  std::int64_t size() const { return identity_.size; }
  const FileIdentity& identity() const { return identity_; }
  bool stopRequested() const { return stop_.stop_requested(); }

  /// Reads from a byte position until `into` is full or the file ends. The
  /// number of bytes, or a negative code of FFmpeg, which failure() then explains.
  int readAt(std::int64_t position, std::span<std::uint8_t> into);

  /// Why reading failed or ended early: an I/O error, a stop request, or a file
  /// shorter than it was. Nothing if all is well.
  std::optional<platform::Error> failure() const;

 private:
  int descriptor_;
  FileIdentity identity_;
  std::stop_token stop_;
  int errorNumber_ = 0;
};

/// Why a use of the input failed: its own failure, or else a lack of memory,
/// the only other reason that FFmpeg has for giving up.
platform::Error failureOf(const Input& input);

/// FFmpeg's view of an input, with a position of its own.
class InputStream {
 public:
  /// Throws std::bad_alloc.
  explicit InputStream(std::shared_ptr<Input> input);
  InputStream(const InputStream&) = delete;
  InputStream& operator=(const InputStream&) = delete;

  AVIOContext* io() const { return io_.get(); }

 private:
  static int read(void* opaque, std::uint8_t* into, int size);
  static std::int64_t seek(void* opaque, std::int64_t offset, int whence);

  std::shared_ptr<Input> input_;
  std::int64_t position_ = 0;
  IOPointer io_;
};

}  // namespace quibel::ffmpeg
