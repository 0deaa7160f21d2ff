#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>

#include <sys/types.h>

#include "platform/Error.h"
#include "platform/FileURL.h"
#include "song/file/Pointers.h"

namespace quibel::song {

/// Identifies one version of a file.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  std::int64_t size = 0;
  std::int64_t modified = 0;  ///< seconds
  std::int64_t fraction = 0;  ///< of a second, in nanoseconds
  std::int64_t begin = 0;     ///< of the part of it that is looked at, in bytes

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// A regular file, or a part of one, opened once: whoever reads through this reads the same file,
/// whatever happens to its name meanwhile. One thread at a time.
class Input {
 public:
  /// Fails for anything but a regular file that holds something.
  static platform::Result<std::shared_ptr<Input>> open(const platform::FileURL& url,
                                                       std::stop_token stop);

  /// Takes over a descriptor of a file of this identity.
  Input(int descriptor, const FileIdentity& identity, std::stop_token stop);

  /// A part of the same file, from byte `begin` to before byte `end`, as a file
  /// of its own.
  std::shared_ptr<Input> part(std::int64_t begin, std::int64_t end) const;

  /// The size when it was opened, in bytes.
  std::int64_t size() const { return identity_.size; }
  const FileIdentity& identity() const { return identity_; }
  bool isPart() const { return identity_.size != fileSize_; }
  bool stopRequested() const { return stop_.stop_requested(); }

  /// Reads from a byte position until `into` is full or the file ends. The
  /// number of bytes, or a negative code of FFmpeg, which failure() then explains.
  int readAt(std::int64_t position, std::span<std::uint8_t> into);

  /// Whether a read has failed, for good or not.
  bool hasReadError() const { return errorNumber_ != 0; }

  /// Why reading failed or ended early: an I/O error, a stop request, or a file
  /// shorter than it was. Nothing if all is well.
  std::optional<platform::Error> failure() const;

 private:
  /// Closes its descriptor at the end.
  struct Descriptor {
    explicit Descriptor(int value) : number(value) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    int number;
  };

  Input(std::shared_ptr<const Descriptor> descriptor, const FileIdentity& identity,
        std::int64_t fileSize, std::stop_token stop);

  std::shared_ptr<const Descriptor> descriptor_;
  FileIdentity identity_;
  std::int64_t fileSize_;  ///< of the whole file, when it was opened
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

}  // namespace quibel::song
