#include "song/formats/OggPages.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace quibel::song {

namespace {

constexpr std::int64_t headerSize = 27;
constexpr std::int64_t largestPage = headerSize + 255 + std::int64_t{255} * 255;
constexpr unsigned beginsStream = 2;
constexpr unsigned endsStream = 4;

// Comments with a picture can fill many pages before the first sound.
constexpr std::int64_t headersLimit = std::int64_t{64} << 20;
// Pages of other streams may follow the last one.
constexpr std::int64_t tailLimit = std::int64_t{1} << 20;
// More songs than anybody joins.
constexpr std::size_t maximumLinks = 10'000;

struct Page {
  std::int64_t size = 0;
  std::uint32_t serial = 0;
  std::int64_t granule = -1;
  unsigned flags = 0;
  int packetsEnded = 0;
};

std::uint64_t littleEndian(std::span<const std::uint8_t> bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) value = value << 8U | bytes[i];
  return value;
}

// The page at the beginning of `data`, which need hold no more than its header.
std::optional<Page> parsePage(std::span<const std::uint8_t> data) {
  constexpr std::string_view capture = "OggS";
  if (data.size() < static_cast<std::size_t>(headerSize) ||
      !std::equal(capture.begin(), capture.end(), data.begin()) || data[4] != 0) {
    return std::nullopt;
  }
  const std::size_t segments = data[26];
  if (data.size() < static_cast<std::size_t>(headerSize) + segments) return std::nullopt;
  Page page;
  page.flags = data[5];
  page.granule = static_cast<std::int64_t>(littleEndian(data.subspan(6, 8)));
  page.serial = static_cast<std::uint32_t>(littleEndian(data.subspan(14, 4)));
  page.size = headerSize + static_cast<std::int64_t>(segments);
  for (const std::uint8_t lace : data.subspan(static_cast<std::size_t>(headerSize), segments)) {
    page.size += lace;
    if (lace < 255) ++page.packetsEnded;
  }
  return page;
}

std::optional<Page> pageAt(Input& input, std::int64_t position) {
  std::array<std::uint8_t, static_cast<std::size_t>(headerSize) + 255> header{};
  const int count = input.readAt(position, header);
  if (count < 0) return std::nullopt;
  return parsePage(std::span(header).first(static_cast<std::size_t>(count)));
}

// The first page at or behind a position, where damage took away others.
std::optional<std::int64_t> findPage(Input& input, std::int64_t position) {
  // Mostly it is near, and there may be one gap after another.
  std::vector<std::uint8_t> block(512);
  while (position < input.size()) {
    const int count = input.readAt(position, block);
    if (count < headerSize) return std::nullopt;
    const auto data = std::span(block).first(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i + static_cast<std::size_t>(headerSize) <= data.size(); ++i) {
      if (parsePage(data.subspan(i))) return position + static_cast<std::int64_t>(i);
    }
    if (data.size() < block.size()) return std::nullopt;
    position += std::ssize(block) - headerSize;
    block.resize(std::min(2 * block.size(), static_cast<std::size_t>(largestPage)));
  }
  return std::nullopt;
}

// The granule position of a stream's last page that has one.
std::int64_t lastGranule(Input& input, std::uint32_t serial) {
  std::vector<std::uint8_t> block;
  std::int64_t found = -1;
  for (std::int64_t length = largestPage; found < 0 && length <= 2 * tailLimit; length *= 4) {
    const std::int64_t begin = std::max<std::int64_t>(0, input.size() - length);
    block.resize(static_cast<std::size_t>(input.size() - begin));
    const int count = input.readAt(begin, block);
    if (count < 0) break;
    const auto data = std::span(block).first(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i + static_cast<std::size_t>(headerSize) <= data.size();) {
      const auto page = parsePage(data.subspan(i));
      const bool isWhole = page && static_cast<std::size_t>(page->size) <= data.size() - i;
      if (isWhole && page->serial == serial && page->granule >= 0) found = page->granule;
      i += isWhole ? static_cast<std::size_t>(page->size) : 1;
    }
    if (begin == 0) break;
  }
  return found;
}

}  // namespace

std::vector<std::int64_t> readOggLinks(Input& input) {
  std::vector<std::int64_t> links;
  bool isAmongFirstPages = false;
  std::int64_t lastPage = 0;
  for (std::int64_t position = 0; position < input.size() && links.size() < maximumLinks;) {
    const auto page = pageAt(input, position);
    if (!page) {
      // The last page may be cut, and another song begin within what it should hold.
      const auto next = links.empty() ? std::nullopt : findPage(input, lastPage + 1);
      if (!next) break;
      position = *next;
      continue;
    }
    const bool begins = (page->flags & beginsStream) != 0;
    if (begins && !isAmongFirstPages) links.push_back(position);
    isAmongFirstPages = begins;
    lastPage = position;
    position += page->size;
  }
  return links;
}

std::optional<OggGranules> readOggGranules(Input& input, int index) {
  std::vector<std::uint32_t> serials;
  for (std::int64_t position = 0; position < std::min(input.size(), headersLimit);) {
    const auto page = pageAt(input, position);
    if (!page) return std::nullopt;
    position += page->size;
    if ((page->flags & beginsStream) != 0) {
      serials.push_back(page->serial);
      continue;
    }
    if (index < 0 || static_cast<std::size_t>(index) >= serials.size()) return std::nullopt;
    // Headers carry granule position 0; the first that is not 0 is sound.
    const std::uint32_t serial = serials[static_cast<std::size_t>(index)];
    if (page->serial != serial || page->granule <= 0) continue;
    const std::int64_t last = lastGranule(input, serial);
    if (last < 0) return std::nullopt;
    return OggGranules{.first = page->granule,
                       .packetsOnFirstPage = page->packetsEnded,
                       .isOnlyPage = (page->flags & endsStream) != 0,
                       .last = last};
  }
  return std::nullopt;
}

}  // namespace quibel::song
