#pragma once

#include <QString>

namespace quibel {

/// A time in seconds as a person says it in Spanish, to a tenth: "19,5 segundos",
/// "1 minuto 5,3 segundos", "2 minutos".
QString spokenTime(double seconds);

/// What is heard of a handle that stands at `time`: that, the length of the
/// fragment, and how much of it a ringtone holds where that is not all.
QString spokenHandle(double time, double fragment);

}  // namespace quibel
