#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/TestAudio.h"

namespace quibel::test {

/// The boxes of an MPEG-4 file, read by nobody else's rules.
class Boxes {
 public:
  explicit Boxes(const std::filesystem::path& file) : bytes_(readBytes(file)) {}

  struct Box {
    std::string type;
    std::size_t begin = 0;  ///< of its contents
    std::size_t end = 0;
  };

  /// The boxes in a range of the file, in their order.
  std::vector<Box> children(std::size_t begin, std::size_t end) const;
  std::vector<Box> topLevel() const { return children(0, bytes_.size()); }

  /// The first box at a path such as "moov/trak/tkhd"; throws if there is none.
  Box at(const std::string& path) const;
  bool has(const std::string& path) const;

  /// Whether four letters stand anywhere within the index.
  bool indexMentions(const std::string& letters) const;

  std::uint64_t number(std::size_t position, std::size_t size) const;
  std::string text(std::size_t position, std::size_t size) const;

 private:
  std::optional<Box> find(const std::string& path) const;

  std::vector<std::uint8_t> bytes_;
};

/// What the tests ask of a ringtone.
struct Movie {
  explicit Movie(const Boxes& boxes);

  std::string brand;
  std::uint64_t movieTimescale = 0;
  std::uint64_t movieDuration = 0;
  std::uint64_t trackDuration = 0;
  std::uint64_t mediaTimescale = 0;
  std::uint64_t edits = 0;
  std::uint64_t editDuration = 0;
  std::uint64_t editMediaTime = 0;
};

}  // namespace quibel::test
