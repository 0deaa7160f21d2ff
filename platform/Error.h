#pragma once

#include <expected>
#include <string>
#include <utility>

namespace quibel::platform {

/// A failure of the machine underneath: a file, a codec, the sound output.
/// Its description is a Spanish sentence a person can act on, ready to be shown.
class Error {
 public:
  explicit Error(std::string localizedDescription)
      : description_(std::move(localizedDescription)) {}

  const std::string& localizedDescription() const { return description_; }

  friend bool operator==(const Error&, const Error&) = default;

 private:
  std::string description_;
};

template <class T>
using Result = std::expected<T, Error>;

}  // namespace quibel::platform
