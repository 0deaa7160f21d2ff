#include <cmath>
#include <limits>

#include "platform/ExportSession.h"

namespace quibel::platform {

Time makeTime(double seconds, std::int32_t preferredTimescale) {
  const double units = std::trunc(seconds * preferredTimescale);
  if (std::isnan(units)) return {0, preferredTimescale};
  // 2^63 is the first double beyond the range; -2^63 is inside it.
  constexpr double limit = 9223372036854775808.0;
  if (units >= limit) return {std::numeric_limits<std::int64_t>::max(), preferredTimescale};
  if (units < -limit) return {std::numeric_limits<std::int64_t>::min(), preferredTimescale};
  return {static_cast<std::int64_t>(units), preferredTimescale};
}

}  // namespace quibel::platform
