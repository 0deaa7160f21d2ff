#pragma once

#include <string>

namespace quibel {

/// A time in seconds as "mm:ss.s", whatever the locale. Minutes have at least
/// two digits. The seconds are rounded to a tenth after the minutes were split
/// off and do not carry: 59.96 gives "00:60.0". Negative times keep their sign
/// in both fields; infinite times and NaN give "00:00.0".
std::string format(double seconds);

}  // namespace quibel
