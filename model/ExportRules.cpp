#include "model/ExportRules.h"

#include <algorithm>

namespace quibel {

std::string proposedFileName(const platform::FileURL& song) {
  return song.deletingPathExtension().lastPathComponent() + ".m4r";
}

std::string replacementName(const std::string& uuid) { return "Tono nuevo " + uuid + ".m4r"; }

platform::TimeRange exportTimeRange(double start, double end, double maximumDuration) {
  // 600 is the movie time scale that the common frame rates divide.
  constexpr std::int32_t timescale = 600;
  return {platform::makeTime(start, timescale),
          platform::makeTime(std::min(end - start, maximumDuration), timescale)};
}

}  // namespace quibel
