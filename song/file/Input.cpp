#include "song/file/Input.h"

#include <algorithm>
#include <cerrno>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "song/file/Errors.h"

namespace quibel::song {

namespace {

// Large enough that system calls do not show in a profile, small enough that
// reading a file's tail costs nothing.
constexpr int ioBufferSize = 64 * 1024;

}  // namespace

platform::Result<std::shared_ptr<Input>> Input::open(const platform::FileURL& url,
                                                     std::stop_token stop) {
  // O_NONBLOCK so that a FIFO does not wait for its writer; regular files ignore it.
  const int number = ::open(url.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (number < 0) return std::unexpected(openingError(errno));
  auto descriptor = std::make_shared<const Descriptor>(number);

  struct stat status{};
  if (::fstat(number, &status) != 0) return std::unexpected(openingError(errno));
  if (S_ISDIR(status.st_mode)) return std::unexpected(makeError(Failure::folder));
  if (!S_ISREG(status.st_mode)) return std::unexpected(makeError(Failure::notRegular));
  if (status.st_size == 0) return std::unexpected(makeError(Failure::emptyFile));
  const FileIdentity identity{.device = status.st_dev,
                              .inode = status.st_ino,
                              .size = status.st_size,
                              .modified = status.st_mtim.tv_sec,
                              .fraction = status.st_mtim.tv_nsec};
  return std::shared_ptr<Input>(
      new Input(std::move(descriptor), identity, status.st_size, std::move(stop)));
}

Input::Descriptor::~Descriptor() { ::close(number); }

Input::Input(int descriptor, const FileIdentity& identity, std::stop_token stop)
    : Input(std::make_shared<const Descriptor>(descriptor), identity, identity.size,
            std::move(stop)) {}

Input::Input(std::shared_ptr<const Descriptor> descriptor, const FileIdentity& identity,
             std::int64_t fileSize, std::stop_token stop)
    : descriptor_(std::move(descriptor)),
      identity_(identity),
      fileSize_(fileSize),
      stop_(std::move(stop)) {}

std::shared_ptr<Input> Input::part(std::int64_t begin, std::int64_t end) const {
  FileIdentity identity = identity_;
  identity.begin += begin;
  identity.size = end - begin;
  return std::shared_ptr<Input>(new Input(descriptor_, identity, fileSize_, stop_));
}

int Input::readAt(std::int64_t position, std::span<std::uint8_t> into) {
  if (stopRequested()) return AVERROR_EXIT;
  const std::int64_t available = std::max<std::int64_t>(0, size() - position);
  if (std::ssize(into) > available) into = into.first(static_cast<std::size_t>(available));
  std::size_t done = 0;
  while (done < into.size()) {
    const ssize_t count = ::pread(descriptor_->number, into.data() + done, into.size() - done,
                                  identity_.begin + position + static_cast<std::int64_t>(done));
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    } else if (count == 0) {
      break;
    } else if (errno != EINTR) {
      errorNumber_ = errno;
      return AVERROR(errorNumber_);
    }
  }
  return static_cast<int>(done);
}

std::optional<platform::Error> Input::failure() const {
  if (stopRequested()) return makeError(Failure::cancelled);
  if (errorNumber_ != 0) return readingError(errorNumber_);
  struct stat status{};
  if (::fstat(descriptor_->number, &status) != 0) return readingError(errno);
  if (status.st_size < fileSize_) return makeError(Failure::cutWhileReading);
  return std::nullopt;
}

platform::Error failureOf(const Input& input) {
  const auto reason = input.failure();
  return reason ? *reason : makeError(Failure::outOfMemory);
}

InputStream::InputStream(std::shared_ptr<Input> input) : input_(std::move(input)) {
  auto* buffer = static_cast<unsigned char*>(av_malloc(ioBufferSize));
  if (buffer == nullptr) throw std::bad_alloc();
  io_.reset(avio_alloc_context(buffer, ioBufferSize, 0, this, &read, nullptr, &seek));
  if (!io_) {
    av_free(buffer);
    throw std::bad_alloc();
  }
}

int InputStream::read(void* opaque, std::uint8_t* into, int size) {
  auto* self = static_cast<InputStream*>(opaque);
  const int count =
      self->input_->readAt(self->position_, std::span(into, static_cast<std::size_t>(size)));
  if (count == 0) return AVERROR_EOF;
  if (count > 0) self->position_ += count;
  return count;
}

std::int64_t InputStream::seek(void* opaque, std::int64_t offset, int whence) {
  auto* self = static_cast<InputStream*>(opaque);
  const std::int64_t size = self->input_->size();
  std::int64_t target = 0;
  switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
      return size;
    case SEEK_SET:
      target = offset;
      break;
    case SEEK_CUR:
      target = self->position_ + offset;
      break;
    case SEEK_END:
      target = size + offset;
      break;
    default:
      return AVERROR(EINVAL);
  }
  if (target < 0) return AVERROR(EINVAL);
  self->position_ = target;
  return target;
}

}  // namespace quibel::song
