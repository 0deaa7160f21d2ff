#include "fuzz/MemoryInput.h"

#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

namespace quibel::fuzz {

std::shared_ptr<song::Input> inputOf(std::span<const std::uint8_t> bytes) {
  const int descriptor = memfd_create("song", MFD_CLOEXEC);
  const auto size = static_cast<std::int64_t>(bytes.size());
  if (descriptor < 0 || write(descriptor, bytes.data(), bytes.size()) != size) {
    std::perror("no file in memory");
    std::abort();
  }
  static std::int64_t files = 0;
  return std::make_shared<song::Input>(
      descriptor, song::FileIdentity{.size = size, .modified = ++files}, std::stop_token{});
}

}  // namespace quibel::fuzz
