#include "song/decoding/OpenSong.h"

#include <new>
#include <utility>
#include <vector>

#include "song/decoding/ChainedAudioFile.h"
#include "song/decoding/CodedAudioFile.h"
#include "song/decoding/PaddedWav.h"
#include "song/decoding/PcmAudioFile.h"
#include "song/file/Errors.h"
#include "song/file/FileCache.h"
#include "song/formats/OggPages.h"

namespace quibel::song {
namespace {

/// The links of an Ogg file, for which all of its pages are looked at.
std::vector<std::int64_t> oggLinks(Input& input) {
  static FileCache<std::vector<std::int64_t>> cache;
  if (auto known = cache.find(input.identity())) return *std::move(known);
  auto links = readOggLinks(input);
  if (!input.failure()) cache.store(input.identity(), links);
  return links;
}

/// A song among others in a file.
platform::Result<std::unique_ptr<platform::AudioFile>> openPart(std::shared_ptr<Input> part) {
  return openAudioFile(std::move(part));
}

}  // namespace

platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(const platform::FileURL& url,
                                                                     std::stop_token stop,
                                                                     Length length) try {
  auto input = Input::open(url, std::move(stop));
  if (!input) return std::unexpected(input.error());
  return openAudioFile(std::move(*input), length);
} catch (const std::bad_alloc&) {
  return std::unexpected(makeError(Failure::outOfMemory));
}

platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(std::shared_ptr<Input> input,
                                                                     Length length) {
  auto demuxer = Demuxer::open(input);
  if (!demuxer) return std::unexpected(demuxer.error());
  if (!input->isPart() && (*demuxer)->isOgg()) {
    const auto links = oggLinks(*input);
    if (links.size() > 1) return ChainedAudioFile::open(input, links, openPart);
  }
  if (const auto padded = readPaddedWav(*input)) {
    return std::make_unique<PcmAudioFile>(std::move(input), *padded);
  }
  if (PcmAudioFile::canRead(**demuxer)) return PcmAudioFile::open(std::move(input), **demuxer);
  return CodedAudioFile::open(std::move(input), std::move(*demuxer), length);
}

}  // namespace quibel::song
