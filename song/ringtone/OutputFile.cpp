#include "song/ringtone/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <new>

#include <fcntl.h>
#include <unistd.h>

#include "song/file/Errors.h"

namespace quibel::song {

namespace {

constexpr int ioBufferSize = 64 * 1024;

// Read and write for all, less what the umask takes away.
constexpr mode_t permissions = 0666;

}  // namespace

platform::Result<std::unique_ptr<OutputFile>> OutputFile::create(const platform::FileURL& url) {
  const int descriptor =
      ::open(url.path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
  if (descriptor < 0) return std::unexpected(creatingError(errno));
  return std::make_unique<OutputFile>(descriptor);
}

OutputFile::OutputFile(int descriptor) : descriptor_(descriptor) {
  auto* buffer = static_cast<unsigned char*>(av_malloc(ioBufferSize));
  if (buffer != nullptr) {
    io_.reset(avio_alloc_context(buffer, ioBufferSize, 1, this, nullptr, &write, &seek));
  }
  if (!io_) {
    av_free(buffer);
    ::close(descriptor_);
    throw std::bad_alloc();
  }
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

platform::Result<void> OutputFile::close() {
  avio_flush(io_.get());
  const int code = io_->error;
  // The descriptor is gone whatever close() answers; some file systems tell
  // only now that there was no room.
  if (::close(std::exchange(descriptor_, -1)) != 0 && errorNumber_ == 0) errorNumber_ = errno;
  if (code < 0 || errorNumber_ != 0) return std::unexpected(failure(code));
  return {};
}

platform::Error OutputFile::failure(int code) const {
  return errorNumber_ != 0 ? writingError(errorNumber_) : codeError(code, Failure::writeError);
}

int OutputFile::write(void* opaque, WrittenBytes from, int size) {
  auto* self = static_cast<OutputFile*>(opaque);
  for (int done = 0; done < size;) {
    const ssize_t count = ::pwrite(self->descriptor_, from + done,
                                   static_cast<std::size_t>(size - done), self->position_);
    if (count >= 0) {
      done += static_cast<int>(count);
      self->position_ += count;
      self->size_ = std::max(self->size_, self->position_);
    } else if (errno != EINTR) {
      if (self->errorNumber_ == 0) self->errorNumber_ = errno;
      return AVERROR(errno);
    }
  }
  return size;
}

std::int64_t OutputFile::seek(void* opaque, std::int64_t offset, int whence) {
  auto* self = static_cast<OutputFile*>(opaque);
  switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
      return self->size_;
    case SEEK_SET:
      self->position_ = offset;
      return offset;
    case SEEK_CUR:
      self->position_ += offset;
      return self->position_;
    default:
      return AVERROR(EINVAL);
  }
}

}  // namespace quibel::song
