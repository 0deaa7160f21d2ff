#include "tests/song/Boxes.h"

#include <algorithm>
#include <stdexcept>

namespace quibel::test {

std::uint64_t Boxes::number(std::size_t position, std::size_t size) const {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i) value = value << 8U | bytes_.at(position + i);
  return value;
}

std::string Boxes::text(std::size_t position, std::size_t size) const {
  const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(position);
  return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

std::vector<Boxes::Box> Boxes::children(std::size_t begin, std::size_t end) const {
  std::vector<Box> boxes;
  while (begin + 8 <= end) {
    const auto size = static_cast<std::size_t>(number(begin, 4));
    if (size < 8 || begin + size > end) throw std::runtime_error("a box of an impossible size");
    boxes.push_back({text(begin + 4, 4), begin + 8, begin + size});
    begin += size;
  }
  if (begin != end) throw std::runtime_error("bytes after the last box");
  return boxes;
}

std::optional<Boxes::Box> Boxes::find(const std::string& path) const {
  Box box{"", 0, bytes_.size()};
  std::size_t from = 0;
  while (from <= path.size()) {
    const std::size_t slash = std::min(path.find('/', from), path.size());
    const std::string type = path.substr(from, slash - from);
    const auto inner = children(box.begin, box.end);
    const auto found = std::ranges::find(inner, type, &Box::type);
    if (found == inner.end()) return std::nullopt;
    box = *found;
    from = slash + 1;
  }
  return box;
}

Boxes::Box Boxes::at(const std::string& path) const {
  const auto box = find(path);
  if (!box) throw std::runtime_error("no box " + path);
  return *box;
}

bool Boxes::has(const std::string& path) const { return find(path).has_value(); }

bool Boxes::indexMentions(const std::string& letters) const {
  const Box index = at("moov");
  return text(index.begin, index.end - index.begin).find(letters) != std::string::npos;
}

// Of version 0, after four bytes of version and flags: mvhd and mdhd have two
// times first, tkhd two times, the track's number and four bytes.
Movie::Movie(const Boxes& boxes) {
  brand = boxes.text(boxes.at("ftyp").begin, 4);
  const auto movie = boxes.at("moov/mvhd").begin;
  movieTimescale = boxes.number(movie + 12, 4);
  movieDuration = boxes.number(movie + 16, 4);
  trackDuration = boxes.number(boxes.at("moov/trak/tkhd").begin + 20, 4);
  mediaTimescale = boxes.number(boxes.at("moov/trak/mdia/mdhd").begin + 12, 4);
  const auto list = boxes.at("moov/trak/edts/elst").begin;
  edits = boxes.number(list + 4, 4);
  editDuration = boxes.number(list + 8, 4);
  editMediaTime = boxes.number(list + 12, 4);
}

}  // namespace quibel::test
