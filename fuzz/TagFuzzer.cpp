// Any bytes as what this program itself reads of a song's structure: headers, tags,
// boxes and pages.

#include <string_view>

#include "fuzz/MemoryInput.h"
#include "song/formats/Codecs.h"
#include "song/formats/MovieBoxes.h"
#include "song/formats/MpegFrames.h"
#include "song/formats/OggPages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quibel;
  if (size == 0) return 0;
  const std::span bytes(data, size);
  const auto input = fuzz::inputOf(bytes);

  // What comes back is of no matter here: the sanitizers watch how it is found.
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  static_cast<void>(song::parseGaplessInfo(text));
  static_cast<void>(song::opusPacketFrames(data, static_cast<int>(size)));

  static_cast<void>(song::parseMpegHeader(bytes));
  const auto tag = song::readMpegTag(*input);
  const auto header = song::readFirstMpegHeader(*input);
  const auto index = song::indexMpegPackets(*input, 0);
  if (header && index) {
    static_cast<void>(song::mpegRange(index->packets, header->frames, tag));
  }

  static_cast<void>(song::readOggLinks(*input));
  for (const int stream : {0, 1}) static_cast<void>(song::readOggGranules(*input, stream));

  if (const auto times = song::readMovieTimes(*input, 1)) {
    const song::SongRange totals{.length = 88'200};
    static_cast<void>(song::movieRange(
        totals, {times->movieTimescale, times->mediaTimescale, times->edits, std::nullopt},
        44'100));
  }
  return 0;
}
