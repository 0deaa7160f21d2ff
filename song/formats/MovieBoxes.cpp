#include "song/formats/MovieBoxes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace quibel::song {

namespace {

// More edits, tracks or boxes than any song has: a file that says so lies.
constexpr std::int64_t maximumEdits = 1024;
constexpr int maximumBoxes = 100'000;

class BoxReader {
 public:
  explicit BoxReader(Input& input) : input_(input) {}

  std::optional<MovieTimes> track(std::int64_t trackID) {
    MovieTimes times;
    std::optional<MovieTimes> found;
    forEachBox(0, input_.size(), [&](std::string_view type, Range moov) {
      if (type != "moov") return;
      forEachBox(moov.begin, moov.end, [&](std::string_view inner, Range box) {
        if (inner == "mvhd") times.movieTimescale = timescale(box);
        if (inner == "trak" && !found) found = readTrack(box, trackID);
      });
    });
    if (!found || times.movieTimescale <= 0 || found->mediaTimescale <= 0) return std::nullopt;
    found->movieTimescale = times.movieTimescale;
    return found;
  }

 private:
  struct Range {
    std::int64_t begin;
    std::int64_t end;
  };

  std::uint64_t number(std::int64_t position, std::size_t bytes) {
    std::array<std::uint8_t, 8> data{};
    if (input_.readAt(position, std::span(data).first(bytes)) != static_cast<int>(bytes)) return 0;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i) value = value << 8U | data[i];
    return value;
  }

  template <class Visit>
  void forEachBox(std::int64_t begin, std::int64_t end, Visit visit) {
    while (begin + 8 <= end && ++boxes_ <= maximumBoxes) {
      std::int64_t size = static_cast<std::int64_t>(number(begin, 4));
      std::int64_t header = 8;
      std::array<std::uint8_t, 4> type{};
      if (input_.readAt(begin + 4, type) != 4) return;
      if (size == 1) {
        const std::uint64_t large = number(begin + 8, 8);
        if (large > static_cast<std::uint64_t>(end - begin)) return;
        size = static_cast<std::int64_t>(large);
        header = 16;
      } else if (size == 0) {
        size = end - begin;
      }
      if (size < header) return;
      std::array<char, 4> name{};
      std::memcpy(name.data(), type.data(), name.size());
      visit(std::string_view(name.data(), name.size()),
            Range{begin + header, std::min(end, begin + size)});
      begin += size;
    }
  }

  // Of mvhd and mdhd: after version, flags, and two times.
  std::int64_t timescale(Range box) {
    const bool isLong = number(box.begin, 1) == 1;
    return static_cast<std::int32_t>(number(box.begin + (isLong ? 20 : 12), 4));
  }

  std::optional<MovieTimes> readTrack(Range track, std::int64_t trackID) {
    MovieTimes times;
    std::int64_t id = -1;
    forEachBox(track.begin, track.end, [&](std::string_view type, Range box) {
      if (type == "tkhd") {
        const bool isLong = number(box.begin, 1) == 1;
        id = static_cast<std::int64_t>(number(box.begin + (isLong ? 20 : 12), 4));
      } else if (type == "edts") {
        forEachBox(box.begin, box.end, [&](std::string_view inner, Range list) {
          if (inner == "elst") times.edits = edits(list);
        });
      } else if (type == "mdia") {
        forEachBox(box.begin, box.end, [&](std::string_view inner, Range header) {
          if (inner == "mdhd") times.mediaTimescale = timescale(header);
        });
      }
    });
    if (id != trackID) return std::nullopt;
    return times;
  }

  std::vector<Edit> edits(Range list) {
    const bool isLong = number(list.begin, 1) == 1;
    const std::int64_t entrySize = isLong ? 20 : 12;
    const auto stated = static_cast<std::int64_t>(number(list.begin + 4, 4));
    const std::int64_t count =
        std::min({stated, maximumEdits, (list.end - list.begin - 8) / entrySize});
    std::vector<Edit> found;
    for (std::int64_t i = 0; i < count; ++i) {
      const std::int64_t entry = list.begin + 8 + i * entrySize;
      Edit edit;
      if (isLong) {
        edit.duration = static_cast<std::int64_t>(number(entry, 8));
        edit.mediaTime = static_cast<std::int64_t>(number(entry + 8, 8));
      } else {
        edit.duration = static_cast<std::int64_t>(number(entry, 4));
        edit.mediaTime = static_cast<std::int32_t>(number(entry + 4, 4));
      }
      // Longer than any song can be, so that arithmetic with it stays in bounds.
      constexpr std::int64_t limit = std::int64_t{1} << 48;
      if (edit.duration < 0 || edit.duration > limit || edit.mediaTime > limit) return {};
      found.push_back(edit);
    }
    return found;
  }

  Input& input_;
  int boxes_ = 0;
};

}  // namespace

std::optional<MovieTimes> readMovieTimes(Input& input, std::int64_t trackID) {
  return BoxReader(input).track(trackID);
}

std::optional<GaplessInfo> parseGaplessInfo(std::string_view text) {
  std::array<std::uint64_t, 4> fields{};
  for (std::uint64_t& field : fields) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), field, 16);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  constexpr std::uint64_t longestDelay = 1 << 16;
  constexpr std::uint64_t longestSong = std::uint64_t{1} << 48;
  if (fields[1] > longestDelay || fields[3] == 0 || fields[3] > longestSong) return std::nullopt;
  return GaplessInfo{static_cast<std::int64_t>(fields[1]), static_cast<std::int64_t>(fields[3])};
}

}  // namespace quibel::song
