#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "song/file/Input.h"

namespace quibel::test {

/// Bytes of a file, put together piece by piece.
struct FileBytes : std::vector<std::uint8_t> {
  using vector::vector;

  FileBytes& text(std::string_view letters) {
    insert(end(), letters.begin(), letters.end());
    return *this;
  }
  FileBytes& big(std::int64_t value, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
      push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return *this;
  }
  FileBytes& little(std::int64_t value, int size) {
    for (int i = 0; i < size; ++i) push_back(static_cast<std::uint8_t>(value >> 8 * i));
    return *this;
  }
  FileBytes& zeros(std::size_t count) {
    resize(size() + count);
    return *this;
  }
  FileBytes& bytes(const std::vector<std::uint8_t>& more) {
    insert(end(), more.begin(), more.end());
    return *this;
  }
};

/// An open file of these bytes, without a name.
inline std::shared_ptr<song::Input> inputOf(const std::vector<std::uint8_t>& bytes) {
  const int descriptor = ::memfd_create("song", MFD_CLOEXEC);
  auto input = std::make_shared<song::Input>(
      descriptor, song::FileIdentity{.size = std::ssize(bytes)}, std::stop_token{});
  if (::write(descriptor, bytes.data(), bytes.size()) != std::ssize(bytes)) {
    throw std::runtime_error("no file in memory");
  }
  return input;
}

}  // namespace quibel::test
