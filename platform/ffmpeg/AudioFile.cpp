#include "platform/ffmpeg/AudioFile.h"

#include <new>
#include <vector>

#include "platform/ffmpeg/ChainedAudioFile.h"
#include "platform/ffmpeg/CodedAudioFile.h"
#include "platform/ffmpeg/Errors.h"
#include "platform/ffmpeg/FileCache.h"
#include "platform/ffmpeg/OggPages.h"
#include "platform/ffmpeg/PaddedWav.h"
#include "platform/ffmpeg/PcmAudioFile.h"

namespace quibel::ffmpeg {
namespace {

/// The links of an Ogg file, for which all of its pages are looked at.
std::vector<std::int64_t> oggLinks(Input& input) {
  static FileCache<std::vector<std::int64_t>> cache;
  if (auto known = cache.find(input.identity())) return *std::move(known);
  auto links = readOggLinks(input);
  if (!input.failure()) cache.store(input.identity(), links);
  return links;
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
    if (links.size() > 1) return ChainedAudioFile::open(input, links);
  }
  if (const auto padded = readPaddedWav(*input)) {
    return std::make_unique<PcmAudioFile>(std::move(input), *padded);
  }
  if (PcmAudioFile::canRead(**demuxer)) return PcmAudioFile::open(std::move(input), **demuxer);
  return CodedAudioFile::open(std::move(input), std::move(*demuxer), length);
}

}  // namespace quibel::ffmpeg
